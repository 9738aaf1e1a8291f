#include "bars.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <unordered_map>
#include <utility>

#include "csv.h"
#include "dates.h"
#include "errors.h"
#include "fields.h"
#include "text.h"

namespace quor_bars {
namespace {

/// What the columns of a file are. The date may stand beside a column with the time of day.
struct Layout {
  std::optional<size_t> date;
  std::optional<size_t> time;
  std::vector<std::pair<size_t, uint32_t>> fields;  ///< position and field id
  size_t width = 0;
};

[[noreturn]] void fail(const std::string& name, size_t line, const std::string& text) {
  throw ReadError(name + ":" + std::to_string(line) + ": " + text);
}

void set_once(std::optional<size_t>& place, size_t position, const std::string& name,
              const CsvRow& header) {
  if (place) {
    fail(name, header.line, "column '" + std::string(header.cells[position]) + "' stands twice");
  }
  place = position;
}

void add_field(Layout& layout, size_t position, uint32_t id, const std::string& name,
               const CsvRow& header) {
  const auto is_id = [id](const auto& field) { return field.second == id; };
  if (std::ranges::any_of(layout.fields, is_id)) {
    fail(name, header.line, "two columns are the field " + field_text(id));
  }
  layout.fields.emplace_back(position, id);
}

/// Columns that the caller names.
void place_named(Layout& layout, const CsvRow& header, const Naming& naming,
                 const std::string& name) {
  const auto place = [&](const std::string& column, const auto& take) {
    bool is_there = false;
    for (size_t position = 0; position < layout.width; ++position) {
      if (plain_name(header.cells[position]) != plain_name(column)) continue;
      take(position);
      is_there = true;
    }
    if (!is_there) fail(name, header.line, "the header names no '" + column + "' column");
  };
  if (naming.time) {
    place(*naming.time, [&](size_t at) { set_once(layout.date, at, name, header); });
  }
  for (const auto& [id, column] : naming.fields) {
    if (column) place(*column, [&](size_t at) { add_field(layout, at, id, name, header); });
  }
}

/// Columns under their usual words, where the caller names none.
void place_usual(Layout& layout, const CsvRow& header, const Naming& naming,
                 const std::string& name) {
  for (size_t position = 0; position < layout.width; ++position) {
    const std::string_view cell = header.cells[position];
    const auto id = field_id(cell);
    const bool is_clock = plain_name(cell) == "TIME";
    if (is_clock || id == field_time) {
      if (!naming.time) set_once(is_clock ? layout.time : layout.date, position, name, header);
    } else if (id && !naming.fields.contains(*id)) {
      add_field(layout, position, *id, name, header);
    }
  }
}

/// Whether two names differ by a letter too many, too few or another one.
bool differ_by_a_letter(std::string_view a, std::string_view b) {
  if (a.size() < b.size()) std::swap(a, b);
  if (a.size() > b.size() + 1) return false;
  const auto [first, second] = std::ranges::mismatch(a, b);
  const bool same_length = a.size() == b.size();
  return std::ranges::equal(
      std::string_view(first, a.end()).substr(first == a.end() ? 0 : 1),
      std::string_view(second, b.end()).substr(same_length && second != b.end() ? 1 : 0));
}

/// The names of a header, and the one that is near to a missing one: "Adj Close" to close.
std::string columns_there(const CsvRow& header, std::string_view missing) {
  std::string text = "it names ";
  std::string near;
  for (size_t i = 0; i < header.cells.size(); ++i) {
    text += (i == 0 ? "" : ", ") + std::string(header.cells[i]);
    const std::string cell = plain_name(header.cells[i]);
    const std::string wanted = plain_name(missing);
    const bool is_near = near.empty() && (cell.find(wanted) != std::string::npos ||
                                          differ_by_a_letter(cell, wanted));
    if (is_near) near = header.cells[i];
  }
  return near.empty() ? text : text + "; '" + near + "' is near";
}

Layout read_header(const CsvRow& header, const std::string& name, const Naming& naming) {
  Layout layout;
  layout.width = header.cells.size();
  place_named(layout, header, naming, name);
  place_usual(layout, header, naming, name);
  if (!layout.date) layout.date = std::exchange(layout.time, std::nullopt);
  if (!layout.date) {
    fail(name, header.line, "the header names no 'date' column; " + columns_there(header, "date"));
  }
  const auto is_close = [](const auto& field) { return field.second == field_close; };
  if (!naming.fields.contains(field_close) && std::ranges::none_of(layout.fields, is_close)) {
    fail(name, header.line,
         "the header names no 'close' column; " + columns_there(header, "close"));
  }
  return layout;
}

int64_t read_key(const CsvRow& row, const Layout& layout, const std::string& name) {
  std::string both;
  std::string_view text = row.cells[*layout.date];
  if (layout.time) {
    both.append(text).append(" ").append(row.cells[*layout.time]);
    text = both;
  }
  const auto key = parse_key(text);
  if (!key) fail(name, row.line, "'" + std::string(text) + "' is no date; " + date_fault(text));
  return *key;
}

double read_value(const CsvRow& row, size_t position, uint32_t field, const std::string& name) {
  const std::string_view text = row.cells[position];
  if (text.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto value = to_number(text);
  if (value) return *value;
  const bool has_comma = text.find(',') != std::string::npos;
  fail(name, row.line,
       "'" + std::string(text) + "' in the column of " + field_text(field) + " is no number" +
           (has_comma ? "; decimals stand behind a point, and nothing parts thousands" : ""));
}

/// Fields of which the first can't be below the second.
struct Order {
  uint32_t above;
  uint32_t below;
  std::string_view names[2];
};
constexpr Order orders[] = {
    {field_high, field_low, {"high", "low"}},     {field_high, field_open, {"high", "open"}},
    {field_high, field_close, {"high", "close"}}, {field_open, field_low, {"open", "low"}},
    {field_close, field_low, {"close", "low"}},
};

std::string short_text(double value) {
  std::string text = std::to_string(value);
  while (text.ends_with('0')) text.pop_back();
  if (text.ends_with('.')) text.pop_back();
  return text;
}

/// Where a row of a file stands in it: most stand in the line behind the row before.
class LinesOfRows {
 public:
  void add(size_t row, size_t line) {
    if (steps_.empty() || line != line_of(row)) steps_.emplace_back(row, line);
  }
  size_t line_of(size_t row) const {
    const auto behind = std::ranges::upper_bound(steps_, row, {}, &Step::first);
    const auto& [first, line] = *std::prev(behind);
    return line + (row - first);
  }

 private:
  using Step = std::pair<size_t, size_t>;
  std::vector<Step> steps_;
};

/// Refuses a key that has come before. Keys mostly go up or down all the way; the first that does
/// neither brings the index of all.
class KnownKeys {
 public:
  explicit KnownKeys(const std::string& name) : name_(name) {}

  void add(std::span<const int64_t> known, int64_t key, size_t line) {
    lines_.add(known.size(), line);
    if (index_.empty() && goes_on(known, key)) return;
    if (index_.empty()) {
      for (size_t i = 0; i < known.size(); ++i) index_.emplace(known[i], i);
    }
    const auto [other, is_new] = index_.emplace(key, known.size());
    if (is_new) return;
    fail(name_, line, "same date as in line " + std::to_string(lines_.line_of(other->second)));
  }

 private:
  static bool goes_on(std::span<const int64_t> known, int64_t key) {
    if (known.empty()) return true;
    const bool rises = known.front() <= known.back();
    const bool falls = known.front() >= known.back();
    return (rises && key > known.back()) || (falls && key < known.back());
  }

  const std::string& name_;
  LinesOfRows lines_;
  std::unordered_map<int64_t, size_t> index_;  ///< key to row; empty while the keys are in order
};

/// Makes bars of rows.
class Collector {
 public:
  Collector(const std::string& name, const Naming& naming)
      : name_(name),
        dates_repeat_(naming.dates_repeat),
        known_(name_),
        reader_(name_, naming, [this](const BarRow& row) { take(row); }) {}

  void feed(std::string_view bytes) { reader_.feed(bytes); }

  Bars bars() {
    reader_.finish();
    if (bars_.keys.empty()) throw ReadError(name_ + ": no bars");
    return std::move(bars_);
  }

 private:
  void take(const BarRow& row) {
    if (values_.empty()) begin();
    if (!dates_repeat_) known_.add(bars_.keys, row.key, row.line);
    bars_.keys.push_back(row.key);
    for (size_t i = 0; i < values_.size(); ++i) values_[i]->push_back(row.values[i]);
    for (std::string& doubt : doubts_->of(row)) bars_.doubts.push_back(std::move(doubt));
  }

  void begin() {
    for (const uint32_t id : reader_.fields()) values_.push_back(&bars_.columns[id]);
    doubts_.emplace(name_, reader_.fields());
  }

  std::string name_;
  bool dates_repeat_;
  KnownKeys known_;
  std::optional<Doubts> doubts_;
  Bars bars_;
  std::vector<std::vector<double>*> values_;  ///< of the reader's fields
  BarReader reader_;
};

}  // namespace

struct BarReader::Body {
  Body(std::string name_of_text, Naming given, std::function<void(const BarRow&)> take_bar)
      : name(std::move(name_of_text)),
        naming(std::move(given)),
        take(std::move(take_bar)),
        rows(name, naming.separator, [this](const CsvRow& row) { take_row(row); }) {}

  void take_row(const CsvRow& row) {
    if (!layout) return take_header(row);
    // Files behind one another bring their first lines along.
    if (row.cells.size() == layout->width && row.cells[*layout->date] == date_name) return;
    if (row.cells.size() != layout->width) {
      fail(name, row.line,
           std::to_string(row.cells.size()) + " cells instead of " + std::to_string(layout->width));
    }
    const int64_t key = read_key(row, *layout, name);
    for (size_t i = 0; i < values.size(); ++i) {
      const auto& [position, id] = layout->fields[i];
      values[i] = read_value(row, position, id, name);
    }
    take({row.line, key, values});
  }

  void take_header(const CsvRow& row) {
    layout = read_header(row, name, naming);
    for (const auto& [position, id] : layout->fields) fields.push_back(id);
    values.resize(fields.size());
    date_name = row.cells[*layout->date];
  }

  std::string name;
  Naming naming;
  std::function<void(const BarRow&)> take;
  std::optional<Layout> layout;
  std::string date_name;
  std::vector<uint32_t> fields;
  std::vector<double> values;  ///< of the row under way
  CsvReader rows;
};

BarReader::BarReader(std::string name, Naming naming, std::function<void(const BarRow&)> take)
    : body_(std::make_unique<Body>(std::move(name), std::move(naming), std::move(take))) {}
BarReader::~BarReader() = default;

void BarReader::feed(std::string_view bytes) { body_->rows.feed(bytes); }

void BarReader::finish() {
  body_->rows.finish();
  if (!body_->layout) throw ReadError(body_->name + ": no line with the names of the columns");
}

std::span<const uint32_t> BarReader::fields() const { return body_->fields; }

Doubts::Doubts(std::string name, std::span<const uint32_t> fields) : name_(std::move(name)) {
  for (const Order& order : orders) {
    const auto above = std::ranges::find(fields, order.above);
    const auto below = std::ranges::find(fields, order.below);
    if (above == fields.end() || below == fields.end()) continue;
    pairs_.push_back({static_cast<size_t>(above - fields.begin()),
                      static_cast<size_t>(below - fields.begin()),
                      {order.names[0], order.names[1]}});
  }
}

std::vector<std::string> Doubts::of(const BarRow& row) {
  std::vector<std::string> texts;
  std::erase_if(pairs_, [&](const Pair& pair) {
    const double high = row.values[pair.above];
    const double low = row.values[pair.below];
    if (!(high < low)) return false;
    texts.push_back(name_ + ":" + std::to_string(row.line) + ": the " + std::string(pair.names[0]) +
                    " " + short_text(high) + " is below the " + std::string(pair.names[1]) + " " +
                    short_text(low));
    return true;
  });
  return texts;
}

Bars parse_bars(std::string_view text, const std::string& name, const Naming& naming) {
  Collector collector(name, naming);
  collector.feed(text);
  return collector.bars();
}

Bars parse_bars(std::istream& stream, const std::string& name, const Naming& naming) {
  Collector collector(name, naming);
  std::vector<char> piece(size_t{1} << 18U);
  while (stream) {
    stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    collector.feed({piece.data(), static_cast<size_t>(stream.gcount())});
  }
  if (stream.bad()) throw ReadError(name + ": can't be read");
  return collector.bars();
}

}  // namespace quor_bars
