// Vectors as arrays of numpy.
#pragma once

#include <pybind11/numpy.h>

#include <memory>
#include <utility>
#include <vector>

namespace quor_python {

/// Takes the numbers over without a copy.
template <typename Number>
pybind11::array_t<Number> array_of(std::vector<Number> values) {
  auto kept = std::make_unique<std::vector<Number>>(std::move(values));
  const auto size = static_cast<pybind11::ssize_t>(kept->size());
  const Number* const data = kept->data();
  const pybind11::capsule owner(
      kept.get(), [](void* vector) { delete static_cast<std::vector<Number>*>(vector); });
  kept.release();
  return pybind11::array_t<Number>(size, data, owner);
}

/// The same of bare memory.
template <typename Number, typename Free>
pybind11::array_t<Number> array_of(std::unique_ptr<Number[], Free> values, size_t size) {
  const Number* const data = values.get();
  const pybind11::capsule owner(values.get(),
                                [](void* numbers) { Free()(static_cast<Number*>(numbers)); });
  values.release();
  return pybind11::array_t<Number>(static_cast<pybind11::ssize_t>(size), data, owner);
}

}  // namespace quor_python
