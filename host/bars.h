// Bars from a file, and the row text that the library takes.
#pragma once

#include <string>
#include <vector>

#include "bars/bars.h"
#include "bars/dates.h"

namespace quor_host {

using quor_bars::Bars;
using quor_bars::key_text;
using quor_bars::parse_bars;

/// Reads bars from a file, or from the standard input for "-", as `parse_bars` does, and tells the
/// user of what is doubtful in them. `columns` are the user's, such as "close=Adj Close".
Bars read_bars(const std::string& path, const std::vector<std::string>& columns = {});

/// The bars as the text of `set_row_data`, with the given fields only.
std::string rows_json(const Bars& bars, const std::vector<uint32_t>& fields);

}  // namespace quor_host
