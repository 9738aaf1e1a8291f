#include "bars.h"

#include <algorithm>
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
  if (place) fail(name, header.line, "column '" + header.cells[position] + "' stands twice");
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
    const std::string& cell = header.cells[position];
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
    text += (i == 0 ? "" : ", ") + header.cells[i];
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
  std::string text = row.cells[*layout.date];
  if (layout.time) text += ' ' + row.cells[*layout.time];
  const auto key = parse_key(text);
  if (!key) fail(name, row.line, "'" + text + "' is no date; " + date_fault(text));
  return *key;
}

double read_value(const CsvRow& row, size_t position, uint32_t field, const std::string& name) {
  const std::string& text = row.cells[position];
  if (text.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto value = to_number(text);
  if (value) return *value;
  const bool has_comma = text.find(',') != std::string::npos;
  fail(name, row.line,
       "'" + text + "' in the column of " + field_text(field) + " is no number" +
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

/// Reads the rows of one file into its bars.
class BarReader {
 public:
  BarReader(const std::string& name, const Naming& naming) : name_(name), naming_(naming) {}

  void take(const CsvRow& row) {
    if (!layout_) {
      layout_ = read_header(row, name_, naming_);
      for (const auto& [position, id] : layout_->fields) values_.push_back(&bars_.columns[id]);
      return;
    }
    if (row.cells.size() != layout_->width) {
      fail(
          name_, row.line,
          std::to_string(row.cells.size()) + " cells instead of " + std::to_string(layout_->width));
    }
    const int64_t key = read_key(row, *layout_, name_);
    if (!naming_.dates_repeat) refuse_known(key, row);
    bars_.keys.push_back(key);
    lines_.push_back(row.line);
    for (size_t i = 0; i < values_.size(); ++i) {
      const auto& [position, id] = layout_->fields[i];
      values_[i]->push_back(read_value(row, position, id, name_));
    }
  }

  Bars bars() {
    if (!layout_) throw ReadError(name_ + ": no line with the names of the columns");
    if (bars_.keys.empty()) throw ReadError(name_ + ": no bars");
    for (const Order& order : orders) note_doubt(order);
    return std::move(bars_);
  }

 private:
  void note_doubt(const Order& order) {
    const auto above = bars_.columns.find(order.above);
    const auto below = bars_.columns.find(order.below);
    if (above == bars_.columns.end() || below == bars_.columns.end()) return;
    for (size_t i = 0; i < bars_.keys.size(); ++i) {
      const double high = above->second[i];
      const double low = below->second[i];
      if (!(high < low)) continue;
      bars_.doubts.push_back(name_ + ":" + std::to_string(lines_[i]) + ": the " +
                             std::string(order.names[0]) + " " + short_text(high) +
                             " is below the " + std::string(order.names[1]) + " " +
                             short_text(low));
      return;
    }
  }

  /// Keys mostly ascend; the first that doesn't brings the index of all.
  void refuse_known(int64_t key, const CsvRow& row) {
    if (index_.empty()) {
      if (bars_.keys.empty() || key > bars_.keys.back()) return;
      for (size_t i = 0; i < lines_.size(); ++i) index_.emplace(bars_.keys[i], lines_[i]);
    }
    const auto [other, is_new] = index_.emplace(key, row.line);
    if (!is_new) fail(name_, row.line, "same date as in line " + std::to_string(other->second));
  }

  const std::string& name_;
  const Naming& naming_;
  std::optional<Layout> layout_;
  Bars bars_;
  std::vector<std::vector<double>*> values_;   ///< of the layout's fields
  std::vector<size_t> lines_;                  ///< of the keys
  std::unordered_map<int64_t, size_t> index_;  ///< key to line; empty while the keys ascend
};

}  // namespace

Bars parse_bars(std::string_view text, const std::string& name, const Naming& naming) {
  BarReader reader(name, naming);
  read_csv(text, name, [&reader](const CsvRow& row) { reader.take(row); });
  return reader.bars();
}

}  // namespace quor_bars
