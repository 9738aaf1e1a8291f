#include "bars.h"

#include <algorithm>
#include <limits>
#include <span>
#include <unordered_map>
#include <utility>

#include "csv.h"
#include "errors.h"
#include "fields.h"
#include "text.h"

namespace quor_host {
namespace {

constexpr std::string_view key_patterns[] = {
    "####-##-##",          "####/##/##",        "########",         "####-##-## ##:##:##",
    "####/##/## ##:##:##", "######## ##:##:##", "####-##-## ##:##", "####/##/## ##:##",
    "######## ##:##",      "######## ######",   "##############",   "############",
    "######## ####"};

constexpr std::string_view zone_patterns[] = {"##", "####", "##:##"};
constexpr std::string_view zone_words[] = {"Z", "z", "UTC", "GMT"};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool matches(std::string_view text, std::string_view pattern) {
  return std::ranges::equal(
      text, pattern, [](char c, char place) { return place == '#' ? is_digit(c) : c == place; });
}

bool matches_one(std::string_view text, std::span<const std::string_view> patterns) {
  return std::ranges::any_of(patterns,
                             [text](std::string_view pattern) { return matches(text, pattern); });
}

/// The text in front of a zone such as Z, +08:00 or -0500.
std::string_view without_zone(std::string_view text) {
  for (const std::string_view word : zone_words) {
    if (text.ends_with(word)) return text.substr(0, text.size() - word.size());
  }
  constexpr size_t least_date_and_time = 12;  // signs further in front belong to the date
  const size_t sign = text.find_last_of("+-");
  const bool is_zone = sign != std::string_view::npos && sign >= least_date_and_time &&
                       matches_one(text.substr(sign + 1), zone_patterns);
  return is_zone ? text.substr(0, sign) : text;
}

/// The text in front of a fraction of the second.
std::string_view without_fraction(std::string_view text) {
  constexpr size_t least_with_seconds = 14;
  const size_t point = text.find_last_of(".,");
  if (point == std::string_view::npos || point < least_with_seconds) return text;
  const std::string_view digits = text.substr(point + 1);
  return !digits.empty() && std::ranges::all_of(digits, is_digit) ? text.substr(0, point) : text;
}

/// Date and time alone, with a blank between them.
std::string plain_date(std::string_view text) {
  text = without_zone(text);
  while (text.ends_with(' ')) text.remove_suffix(1);
  std::string plain(without_fraction(text));
  const size_t mark = plain.find_first_of("Tt");
  if (mark != std::string::npos) plain[mark] = ' ';
  return plain;
}

bool is_date_and_time(int64_t key) {
  const auto part = [key](int64_t unit) { return key / unit % 100; };
  return key >= 10000000000 && part(100000000) >= 1 && part(100000000) <= 12 &&
         part(1000000) >= 1 && part(1000000) <= 31 && part(10000) < 24 && part(100) < 60 &&
         part(1) < 60;
}

/// What the columns of a file are. The date may stand beside a column with the time of day.
struct Layout {
  std::optional<size_t> date;
  std::optional<size_t> time;
  std::vector<std::pair<size_t, uint32_t>> fields;  ///< position and field id
  size_t width = 0;
};

[[noreturn]] void fail(const std::string& name, size_t line, const std::string& text) {
  throw HostError(name + ":" + std::to_string(line) + ": " + text);
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

Layout read_header(const CsvRow& header, const std::string& name) {
  Layout layout;
  layout.width = header.cells.size();
  for (size_t position = 0; position < layout.width; ++position) {
    const std::string& cell = header.cells[position];
    const auto id = field_id(cell);
    if (to_upper(cell) == "TIME") {
      set_once(layout.time, position, name, header);
    } else if (id == field_time) {
      set_once(layout.date, position, name, header);
    } else if (id) {
      add_field(layout, position, *id, name, header);
    }
  }
  if (!layout.date) layout.date = std::exchange(layout.time, std::nullopt);
  if (!layout.date) fail(name, header.line, "the header names no 'date' column");
  const auto is_close = [](const auto& field) { return field.second == field_close; };
  if (std::ranges::none_of(layout.fields, is_close)) {
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
  explicit BarReader(const std::string& name) : name_(name) {}

  void take(const CsvRow& row) {
    if (!layout_) {
      layout_ = read_header(row, name_);
      for (const auto& [position, id] : layout_->fields) values_.push_back(&bars_.columns[id]);
      return;
    }
    if (row.cells.size() != layout_->width) {
      fail(
          name_, row.line,
          std::to_string(row.cells.size()) + " cells instead of " + std::to_string(layout_->width));
    }
    const int64_t key = read_key(row, *layout_, name_);
    refuse_known(key, row);
    bars_.keys.push_back(key);
    lines_.push_back(row.line);
    for (size_t i = 0; i < values_.size(); ++i) {
      values_[i]->push_back(read_value(row, layout_->fields[i].first, name_));
    }
  }

  Bars bars() {
    if (!layout_) throw HostError(name_ + ": no line with the names of the columns");
    if (bars_.keys.empty()) throw HostError(name_ + ": no bars");
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
  std::optional<Layout> layout_;
  Bars bars_;
  std::vector<std::vector<double>*> values_;   ///< of the layout's fields
  std::vector<size_t> lines_;                  ///< of the keys
  std::unordered_map<int64_t, size_t> index_;  ///< key to line; empty while the keys ascend
};

/// The key that the digits of a date make in its plain form.
std::optional<int64_t> key_of_plain(std::string_view plain) {
  if (!matches_one(plain, key_patterns)) return std::nullopt;
  int64_t key = 0;
  int digits = 0;
  for (const char c : plain) {
    if (!is_digit(c)) continue;
    key = key * 10 + (c - '0');
    ++digits;
  }
  for (; digits < 14; ++digits) key *= 10;
  if (!is_date_and_time(key)) return std::nullopt;
  return key;
}

}  // namespace

std::optional<int64_t> parse_key(std::string_view text) {
  const auto key = key_of_plain(text);
  return key ? key : key_of_plain(plain_date(text));
}

std::string key_text(int64_t key, bool with_time) {
  std::string digits = std::to_string(key);
  if (digits.size() != 14) return digits;
  const auto part = [&digits](size_t at) { return digits.substr(at, 2); };
  std::string text = digits.substr(0, 4) + '-' + part(4) + '-' + part(6);
  if (with_time) text += ' ' + part(8) + ':' + part(10) + ':' + part(12);
  return text;
}

Bars read_bars(const std::string& path) { return parse_bars(read_input(path), input_name(path)); }

Bars parse_bars(std::string_view text, const std::string& name) {
  BarReader reader(name);
  read_csv(text, name, [&reader](const CsvRow& row) { reader.take(row); });
  return reader.bars();
}

std::string rows_json(const Bars& bars, const std::vector<uint32_t>& fields) {
  std::vector<std::pair<std::string, const std::vector<double>*>> columns;
  for (const uint32_t id : fields) {
    const auto column = bars.columns.find(id);
    if (column == bars.columns.end()) continue;
    columns.emplace_back(",\"" + std::to_string(id) + "\":", &column->second);
  }
  std::string json = "[";
  for (size_t row = 0; row < bars.keys.size(); ++row) {
    if (row > 0) json += ',';
    json += "{\"1\":" + std::to_string(bars.keys[row]);
    for (const auto& [key, values] : columns) json += key + json_number((*values)[row]);
    json += '}';
  }
  json += ']';
  return json;
}

}  // namespace quor_host
