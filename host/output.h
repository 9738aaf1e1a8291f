// What the user sees.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "report.h"

namespace quor_host {

/// A named line of a script with its values.
struct Line {
  std::string name;
  uint32_t column = 0;
  std::vector<double> values;  ///< oldest bar first
};

/// Everything that a run gave.
struct Results {
  std::vector<int64_t> keys;
  std::vector<Line> lines;
  std::string report;  ///< the library's own JSON texts
  std::string shapes;
  std::string findings;  ///< a JSON array
};

/// The report and what there is to say about the script, as one JSON object.
void print_findings(std::ostream& out, const std::string& report, const std::string& findings);

/// What a script that compiles needs and gives; `is_sound` if there is nothing to say against it.
void print_report(std::ostream& out, const Report& report, bool is_sound,
                  const std::vector<Line>& lines, const std::vector<std::string>& functions,
                  const std::vector<std::string>& drawings);

/// The cells of one column of a table, its title first.
using Cells = std::vector<std::string>;

/// Numbers with as many decimals as their size asks for, and dates.
Cells number_cells(const std::string& name, std::span<const double> values);
Cells key_cells(std::span<const int64_t> keys);

/// Columns of one length beside each other, the first `left_columns` to the left.
void print_cells(std::ostream& out, const std::vector<Cells>& columns, size_t left_columns);

/// The last `count` bars of every line, one bar in a row.
void print_table(std::ostream& out, const Results& results, size_t count);

/// The last `count` bars of every line as comma-separated values that read back to the same bits;
/// a null is an empty cell.
void print_csv(std::ostream& out, const Results& results, size_t count);

/// All bars of every line with the report, the findings and the drawing records, as one JSON
/// object.
void print_json(std::ostream& out, const Results& results);

}  // namespace quor_host
