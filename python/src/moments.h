// Single times of Python as row keys.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>

namespace quor_python {

/// To be called once before `plain_key_of`.
void prepare_moments();

/// The row key of a datetime without a zone, or of a text in a usual form that tells no zone;
/// nothing for whatever needs a second look.
std::optional<int64_t> plain_key_of(pybind11::handle time);

}  // namespace quor_python
