#include "scan_output.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "../input/bars.h"
#include "../output/output.h"
#include "../text.h"

namespace quor_host {
namespace {

/// Whether any bar is of a time of day, so that all dates are shown with it.
bool any_has_time(const std::vector<ScanRow>& rows) {
  return std::ranges::any_of(rows, [](const ScanRow& row) { return have_times({&row.key, 1}); });
}

}  // namespace

void print_scan_table(std::ostream& out, const std::vector<std::string>& lines,
                      const std::vector<ScanRow>& rows) {
  Cells securities{"security"};
  std::vector<int64_t> keys;
  std::vector<std::vector<double>> values(lines.size());
  for (const ScanRow& row : rows) {
    securities.push_back(row.security);
    keys.push_back(row.key);
    for (size_t i = 0; i < lines.size(); ++i) values[i].push_back(row.values[i]);
  }
  std::vector<Cells> columns{std::move(securities), key_cells(keys)};
  for (size_t i = 0; i < lines.size(); ++i) columns.push_back(number_cells(lines[i], values[i]));
  print_cells(out, columns, 2);
}

void print_scan_csv(std::ostream& out, const std::vector<std::string>& lines,
                    const std::vector<ScanRow>& rows) {
  out << "security,date";
  for (const std::string& line : lines) out << ',' << csv_cell(line);
  out << '\n';
  const bool with_time = any_has_time(rows);
  for (const ScanRow& row : rows) {
    std::string text = csv_cell(row.security) + ',' + key_text(row.key, with_time);
    for (const double value : row.values) {
      text += ',';
      append_csv_number(text, value);
    }
    out << text << '\n';
  }
}

void print_scan_json(std::ostream& out, const std::vector<std::string>& lines,
                     const ScanResult& result) {
  out << "{\"rows\":[";
  const bool with_time = any_has_time(result.rows);
  bool first = true;
  for (const ScanRow& row : result.rows) {
    out << (std::exchange(first, false) ? "\n" : ",\n")
        << "{\"security\":" << json_string(row.security) << ",\"date\":\""
        << key_text(row.key, with_time) << '"';
    for (size_t i = 0; i < lines.size(); ++i) {
      std::string text = ',' + json_string(lines[i]) + ':';
      append_json_number(text, row.values[i]);
      out << text;
    }
    out << '}';
  }
  out << "],\n\"failures\":[";
  first = true;
  for (const ScanFailure& failure : result.failures) {
    out << (std::exchange(first, false) ? "\n" : ",\n") << "{\"file\":" << json_string(failure.path)
        << ",\"reason\":" << json_string(failure.reason) << '}';
  }
  out << "]}\n";
}

}  // namespace quor_host
