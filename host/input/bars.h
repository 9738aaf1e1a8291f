// Bars from a file.
#pragma once

#include <string>
#include <vector>

#include "bars/bars.h"
#include "bars/dates.h"

namespace quor_host {

using quor_bars::Bars;
using quor_bars::key_text;
using quor_bars::parse_bars;

/// What the user says of files of bars that differ from the usual.
struct BarForm {
  std::vector<std::string> columns;  ///< "close=Adj Close"
  std::string delimiter;             ///< a character or its name; empty if the file tells it
};

/// Throws UsageError for a text of another form.
quor_bars::Naming naming_of(const BarForm& form);

/// Reads bars from a file, or from the standard input for "-", as `parse_bars` does.
Bars read_bars(const std::string& path, const quor_bars::Naming& naming = {});

}  // namespace quor_host
