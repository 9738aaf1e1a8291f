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

Layout read_header(const CsvRow& header, const std::string& name, const Naming& naming) {
  Layout layout;
  layout.width = header.cells.size();
  place_named(layout, header, naming, name);
  place_usual(layout, header, naming, name);
  if (!layout.date) layout.date = std::exchange(layout.time, std::nullopt);
  if (!layout.date) fail(name, header.line, "the header names no 'date' column");
  const auto is_close = [](const auto& field) { return field.second == field_close; };
  if (!naming.fields.contains(field_close) && std::ranges::none_of(layout.fields, is_close)) {
    fail(name, header.line, "the header names no 'close' column");
  }
  return layout;
}

int64_t read_key(const CsvRow& row, const Layout& layout, const std::string& name) {
  std::string text = row.cells[*layout.date];
  if (layout.time) text += ' ' + row.cells[*layout.time];
  const auto key = parse_key(text);
  if (!key) fail(name, row.line, "'" + text + "' is no date");
  return *key;
}

double read_value(const CsvRow& row, size_t position, const std::string& name) {
  const std::string& text = row.cells[position];
  if (text.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto value = to_number(text);
  if (!value) fail(name, row.line, "'" + text + "' is no number");
  return *value;
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
      values_[i]->push_back(read_value(row, layout_->fields[i].first, name_));
    }
  }

  Bars bars() {
    if (!layout_) throw ReadError(name_ + ": no line with the names of the columns");
    if (bars_.keys.empty()) throw ReadError(name_ + ": no bars");
    return std::move(bars_);
  }

 private:
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
