#include "output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <ostream>
#include <utility>

#include "bars.h"
#include "fields.h"
#include "text.h"

namespace quor_host {
namespace {

/// Places on the screen: one for each character, two for the wide ones of East Asia.
size_t width_of(std::string_view text) {
  size_t width = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0xE3 && byte <= 0xF4) {
      width += 2;
    } else if (byte < 0x80 || byte >= 0xC0) {
      width += 1;
    }
  }
  return width;
}

std::string with_width(const std::string& text, size_t width, bool to_the_right) {
  const std::string blanks(width - std::min(width, width_of(text)), ' ');
  return to_the_right ? blanks + text : text + blanks;
}

/// Enough decimals for the size of the numbers; whole numbers need none.
int decimals_of(std::span<const double> values) {
  double largest = 0.0;
  bool whole = true;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    largest = std::max(largest, std::abs(value));
    whole = whole && value == std::trunc(value);
  }
  if (whole) return 0;
  return largest < 10.0 ? 6 : 3;
}

std::string number_text(double value, int decimals) {
  if (std::isnan(value)) return "null";
  std::array<char, 400> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, decimals);
  return {digits.data(), end.ptr};
}

std::string join(const std::vector<std::string>& texts) {
  if (texts.empty()) return "none";
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

std::string reference_texts(const std::vector<Reference>& references) {
  std::vector<std::string> texts;
  for (const Reference& reference : references) {
    texts.push_back(reference.source + ' ' + field_text(reference.field) + " into column " +
                    std::to_string(reference.column));
  }
  return join(texts);
}

/// "POLYLINE x 3" for words that come more than once.
std::string counted(const std::vector<std::string>& words) {
  std::map<std::string, size_t> counts;
  for (const std::string& word : words) ++counts[word];
  std::vector<std::string> texts;
  for (const auto& [word, count] : counts) {
    texts.push_back(count == 1 ? word : word + " x " + std::to_string(count));
  }
  return join(texts);
}

void print_item(std::ostream& out, const std::string& title, const std::string& text) {
  out << "  " << with_width(title, 18, false) << text << '\n';
}

template <typename List, typename Write>
void print_array(std::ostream& out, const List& list, const Write& write) {
  out << '[';
  bool first = true;
  for (const auto& entry : list) {
    if (!std::exchange(first, false)) out << ',';
    out << write(entry);
  }
  out << ']';
}

size_t first_of_last(const Results& results, size_t count) {
  return results.keys.size() - std::min(results.keys.size(), count);
}

/// A cell as the readers of comma-separated values expect it.
std::string csv_cell(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}

std::string csv_number(double value) {
  if (std::isnan(value)) return {};
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  return json_number(value);
}

/// Texts of the library are not escaped; one that is no JSON for that reason goes out as a string.
std::string as_json(const std::string& text) { return is_json(text) ? text : json_string(text); }

}  // namespace

void print_findings(std::ostream& out, const std::string& report, const std::string& findings) {
  out << "{\"report\":" << as_json(report) << ",\n\"findings\":" << findings << "}\n";
}

void print_report(std::ostream& out, const Report& report, bool is_sound,
                  const std::vector<Line>& lines, const std::vector<std::string>& functions,
                  const std::vector<std::string>& drawings) {
  std::vector<std::string> fields;
  for (const uint32_t id : report.fields) fields.push_back(field_text(id));
  std::vector<std::string> columns;
  for (const Line& line : lines)
    columns.push_back(line.name + " (" + std::to_string(line.column) + ')');
  out << (is_sound ? "The script is sound.\n" : "The script compiles, with warnings.\n");
  print_item(out, "lines", join(columns));
  print_item(out, "functions", join(functions));
  print_item(out, "drawings", counted(drawings));
  print_item(out, "look-back", std::to_string(report.look_back) + " bars");
  print_item(out, "fields", join(fields));
  print_item(out, "other securities", reference_texts(report.securities));
  print_item(out, "other periods", reference_texts(report.periods));
  print_item(out, "quotes", reference_texts(report.quotes));
  print_item(out, "market constants", report.needs_market_constants ? "needed" : "none");
  print_item(out, "calendar", report.needs_calendar ? "needed" : "none");
  print_item(out, "notices", report.has_notices ? "raised" : "none");
}

Cells number_cells(const std::string& name, std::span<const double> values) {
  Cells cells{name};
  const int decimals = decimals_of(values);
  for (const double value : values) cells.push_back(number_text(value, decimals));
  return cells;
}

Cells key_cells(std::span<const int64_t> keys) {
  constexpr int64_t day = 1000000;
  const bool with_time = std::ranges::any_of(keys, [](int64_t key) { return key % day != 0; });
  Cells cells{"date"};
  for (const int64_t key : keys) cells.push_back(key_text(key, with_time));
  return cells;
}

void print_table(std::ostream& out, const Results& results, size_t count) {
  count = std::min(count, results.keys.size());
  std::vector<Cells> columns{key_cells(std::span(results.keys).last(count))};
  for (const Line& line : results.lines) {
    const std::span values(line.values);
    columns.push_back(number_cells(line.name, values.last(std::min(count, values.size()))));
  }
  print_cells(out, columns, 1);
}

void print_cells(std::ostream& out, const std::vector<Cells>& columns, size_t left_columns) {
  std::vector<size_t> widths;
  for (const Cells& cells : columns) {
    widths.push_back(width_of(*std::ranges::max_element(cells, {}, width_of)));
  }
  for (size_t row = 0; row < columns.front().size(); ++row) {
    for (size_t column = 0; column < columns.size(); ++column) {
      out << (column == 0 ? "" : "  ")
          << with_width(columns[column][row], widths[column], column >= left_columns);
    }
    out << '\n';
  }
}

void print_csv(std::ostream& out, const Results& results, size_t count) {
  const size_t first = first_of_last(results, count);
  const Cells keys = key_cells(std::span(results.keys).subspan(first));
  out << keys[0];
  for (const Line& line : results.lines) out << ',' << csv_cell(line.name);
  out << '\n';
  for (size_t row = first; row < results.keys.size(); ++row) {
    out << keys[row - first + 1];
    for (const Line& line : results.lines) out << ',' << csv_number(line.values[row]);
    out << '\n';
  }
}

void print_json(std::ostream& out, const Results& results) {
  out << "{\"report\":" << as_json(results.report) << ",\n\"findings\":" << results.findings
      << ",\n\"keys\":";
  print_array(out, results.keys, [](int64_t key) { return std::to_string(key); });
  out << ",\n\"lines\":{";
  bool first = true;
  for (const Line& line : results.lines) {
    out << (std::exchange(first, false) ? "\n" : ",\n") << json_string(line.name) << ':';
    print_array(out, line.values, json_number);
  }
  out << "},\n\"shapes\":" << as_json(results.shapes) << "}\n";
}

}  // namespace quor_host
