#include "scan_output.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include "bars.h"
#include "output.h"
#include "text.h"

namespace quor_host {
namespace {

/// A cell of comma-separated values, in quotes if it needs them.
std::string csv_text(const std::string& text) {
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

std::string date_text(int64_t key) {
  constexpr int64_t day = 1000000;
  return key_text(key, key % day != 0);
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
  for (const std::string& line : lines) out << ',' << csv_text(line);
  out << '\n';
  for (const ScanRow& row : rows) {
    out << csv_text(row.security) << ',' << date_text(row.key);
    for (const double value : row.values) out << ',' << csv_number(value);
    out << '\n';
  }
}

void print_scan_json(std::ostream& out, const std::vector<std::string>& lines,
                     const ScanResult& result) {
  out << "{\"rows\":[";
  bool first = true;
  for (const ScanRow& row : result.rows) {
    out << (std::exchange(first, false) ? "\n" : ",\n")
        << "{\"security\":" << json_string(row.security) << ",\"key\":" << row.key;
    for (size_t i = 0; i < lines.size(); ++i) {
      out << ',' << json_string(lines[i]) << ':' << json_number(row.values[i]);
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
