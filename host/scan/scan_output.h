// What a scan prints.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "scan_console.h"

namespace quor_host {

/// Each gets the names of the lines beside the rows of their values.
void print_scan_table(std::ostream& out, const std::vector<std::string>& lines,
                      const std::vector<ScanRow>& rows);
void print_scan_csv(std::ostream& out, const std::vector<std::string>& lines,
                    const std::vector<ScanRow>& rows);
/// With the failures, so that a program finds all in one text.
void print_scan_json(std::ostream& out, const std::vector<std::string>& lines,
                     const ScanResult& result);

}  // namespace quor_host
