// Data of other securities and periods, from files of bars.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bars.h"
#include "report.h"

namespace quor_host {

/// A column that a file fills, in the order of the bars; NaN where the file has no value.
struct FilledColumn {
  std::string text;  ///< that names the file
  uint32_t column = 0;
  std::vector<double> values;
};

/// Reads the files of texts "SOURCE|FIELD=FILE.csv" or "SOURCE|FIELD|COLUMN=FILE.csv" and finds the
/// values for the references of the report. A bar of another security counts under the same key,
/// one of another period up to the next. Takes what it serves out of the report. Throws HostError
/// for a text of another form, a reference that the script doesn't make, and a file without the
/// field.
std::vector<FilledColumn> read_references(const std::vector<std::string>& texts, Report& report,
                                          const std::vector<int64_t>& keys);

}  // namespace quor_host
