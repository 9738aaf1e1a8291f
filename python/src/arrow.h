// Frames that other libraries hand over by Arrow's interface of C.
#pragma once

#include <pybind11/pybind11.h>

namespace quor_python {

/// Name and array of each column of a stream, which is a capsule "arrow_array_stream": numbers as
/// float64 with NaN for nulls, times as datetime64, texts as objects. ValueError for a stream that
/// fails. Columns of other types come as None.
pybind11::list read_arrow(const pybind11::capsule& stream);

}  // namespace quor_python
