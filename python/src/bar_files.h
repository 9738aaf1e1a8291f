// Files of bars as arrays, and the dates and names of columns that they have in common with frames.
#pragma once

#include <pybind11/pybind11.h>

namespace quor_python {

/// Adds `read_bars`, `seconds_of_texts` and `field_words` to the module.
void add_bar_files(pybind11::module_& module);

}  // namespace quor_python
