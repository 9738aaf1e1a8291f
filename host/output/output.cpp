#include "output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <ostream>
#include <utility>

#include "../input/bars.h"
#include "../input/fields.h"
#include "../input/json_files.h"
#include "../input/references.h"
#include "../text.h"

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

std::string join(const std::vector<std::string>& texts) {
  if (texts.empty()) return "none";
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
  return joined;
}

std::string reference_texts(const quor::engine::Report& report,
                            quor::engine::Reference::Kind kind) {
  std::vector<std::string> texts;
  for (const auto& reference : report.references) {
    if (reference.kind != kind) continue;
    texts.push_back(reference_text(reference) + " into column " + std::to_string(reference.column));
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

/// Writes what has gathered once it is worth a call.
void write_some(std::ostream& out, std::string& text) {
  constexpr size_t enough = 1 << 16;
  if (text.size() < enough) return;
  out << text;
  text.clear();
}

/// Texts of the library are not escaped; one that is no JSON for that reason goes out as a string.
std::string as_json(const std::string& text) { return is_json(text) ? text : json_string(text); }

std::string shapes_json(const std::vector<std::string>& shapes) {
  std::string text = "[";
  for (const std::string& shape : shapes) text += (text.size() > 1 ? "," : "") + shape;
  return as_json(text + ']');
}

std::string events_json(const std::vector<quor::engine::Event>& events, bool with_time) {
  std::string text = "[";
  for (const auto& event : events) {
    text += (text.size() > 1 ? ",\n" : "\n") + event_json(event, with_time);
  }
  return text + ']';
}

}  // namespace

std::vector<ShownLine> drawn_lines(const quor::engine::Script& script, bool all) {
  const bool draws_some =
      std::ranges::any_of(script.lines(), [](const auto& line) { return line.look.has_value(); });
  std::vector<ShownLine> drawn;
  for (const auto& line : script.lines()) {
    if (all || !draws_some || line.look) drawn.push_back({line.name, line.column});
  }
  return drawn;
}

void print_findings(std::ostream& out, const std::string& report, const std::string& findings) {
  out << "{\"report\":" << as_json(report) << ",\n\"findings\":" << findings << "}\n";
}

void print_report(std::ostream& out, const quor::engine::Script& script, bool is_sound) {
  using Kind = quor::engine::Reference::Kind;
  const quor::engine::Report& report = script.report();
  std::vector<std::string> fields;
  for (const uint32_t id : report.fields) fields.push_back(field_text(id));
  std::vector<std::string> columns;
  for (const auto& line : script.lines())
    columns.push_back(line.name + " (" + std::to_string(line.column) + ')');
  std::vector<std::string> drawings;
  for (const auto& record : script.records()) {
    for (const auto& [key, text] : record.texts) {
      if (key == "ShapeName") drawings.push_back(text);
    }
  }
  out << (is_sound ? "The script is sound.\n" : "The script compiles, with warnings.\n");
  print_item(out, "lines", join(columns));
  print_item(out, "functions", join(script.words()));
  print_item(out, "drawings", counted(drawings));
  print_item(out, "look-back",
             std::to_string(report.look_back) + (report.look_back == 1 ? " bar" : " bars"));
  print_item(out, "fields", join(fields));
  print_item(out, "other securities", reference_texts(report, Kind::security));
  print_item(out, "other periods", reference_texts(report, Kind::period));
  print_item(out, "quotes", reference_texts(report, Kind::quote));
  print_item(out, "market constants", report.needs_market_constants ? "needed" : "none");
  print_item(out, "calendar", report.needs_calendar ? "needed" : "none");
  print_item(out, "notices", report.has_notices ? "raised" : "none");
}

std::string with_width(const std::string& text, size_t width, bool to_the_right) {
  const std::string blanks(width - std::min(width, width_of(text)), ' ');
  return to_the_right ? blanks + text : text + blanks;
}

bool have_times(std::span<const int64_t> keys) {
  constexpr int64_t day = 1000000;
  return std::ranges::any_of(keys, [](int64_t key) { return key % day != 0; });
}

int decimals_to_show(std::span<const double> values) {
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

std::string number_cell(double value, int decimals) {
  if (std::isnan(value)) return "null";
  std::array<char, 400> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, decimals);
  return {digits.data(), end.ptr};
}

Cells number_cells(const std::string& name, std::span<const double> values) {
  Cells cells{name};
  const int decimals = decimals_to_show(values);
  for (const double value : values) cells.push_back(number_cell(value, decimals));
  return cells;
}

Cells key_cells(std::span<const int64_t> keys) {
  const bool with_time = have_times(keys);
  Cells cells{"date"};
  for (const int64_t key : keys) cells.push_back(key_text(key, with_time));
  return cells;
}

void print_table(std::ostream& out, const Table& table) {
  std::vector<Cells> columns{key_cells(table.keys)};
  for (const ShownValues& line : table.lines) {
    columns.push_back(number_cells(line.name, line.values));
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

void print_csv(std::ostream& out, const Table& table) {
  const bool with_time = have_times(table.keys);
  std::string text = "date";
  for (const ShownValues& line : table.lines) text += ',' + csv_cell(line.name);
  text += '\n';
  for (size_t row = 0; row < table.keys.size(); ++row) {
    text += key_text(table.keys[row], with_time);
    for (const ShownValues& line : table.lines) {
      text += ',';
      append_csv_number(text, line.values[row]);
    }
    text += '\n';
    write_some(out, text);
  }
  out << text;
}

void print_json(std::ostream& out, const Table& table, const RunTexts& texts) {
  const bool with_time = have_times(table.keys);
  std::string text = "{\"report\":" + as_json(texts.report) + ",\n\"findings\":" + texts.findings;
  text += ",\n\"dates\":[";
  for (size_t row = 0; row < table.keys.size(); ++row) {
    text += (row == 0 ? "\"" : ",\"") + key_text(table.keys[row], with_time) + '"';
    write_some(out, text);
  }
  text += "],\n\"lines\":{";
  for (const ShownValues& line : table.lines) {
    text += (&line == &table.lines.front() ? "\n" : ",\n") + json_string(line.name) + ":[";
    for (size_t row = 0; row < line.values.size(); ++row) {
      if (row > 0) text += ',';
      append_json_number(text, line.values[row]);
      write_some(out, text);
    }
    text += ']';
  }
  out << text << "},\n\"shapes\":" << shapes_json(texts.shapes);
  if (texts.events != nullptr) out << ",\n\"events\":" << events_json(*texts.events, with_time);
  out << "}\n";
}

std::string event_text(const quor::engine::Event& event, bool with_time) {
  const bool is_notice = event.word == "NOTICE";
  std::string text = is_notice ? "notice  " : "signal  ";
  text += key_text(event.key, with_time) + "  row " + std::to_string(event.row) + "  " +
          (is_notice ? event.name : event.word);
  if (event.quantity >= 0) text += ' ' + std::to_string(event.quantity);
  return text;
}

std::string event_json(const quor::engine::Event& event, bool with_time) {
  std::string text =
      "{\"date\":\"" + key_text(event.key, with_time) + "\",\"event\":" + json_string(event.word);
  if (event.word == "NOTICE") text += ",\"name\":" + json_string(event.name);
  if (event.quantity >= 0) text += ",\"quantity\":" + std::to_string(event.quantity);
  return text + '}';
}

}  // namespace quor_host
