#include "bar_files.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bars/bars.h"
#include "bars/dates.h"
#include "bars/errors.h"
#include "bars/fields.h"
#include "bars/text.h"
#include "row_keys.h"

namespace py = pybind11;

namespace quor_python {
namespace {

/// Texts of files may be no UTF-8, and messages quote them.
py::str text_of(std::string_view bytes) {
  PyObject* const text =
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "replace");
  if (text == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(text);
}

[[noreturn]] void raise_value_error(std::string_view text) {
  PyErr_SetObject(PyExc_ValueError, text_of(text).ptr());
  throw py::error_already_set();
}

/// The bars of a file, and their times as seconds since 1970.
struct Read {
  quor_bars::Bars bars;
  std::vector<int64_t> seconds;
};

Read read(const std::string& path, const quor_bars::Naming& naming) {
  try {
    const py::gil_scoped_release release;
    Read read{quor_bars::parse_bars(quor_bars::read_file(path), path, naming), {}};
    read.seconds = seconds_of_keys(read.bars.keys);
    return read;
  } catch (const quor_bars::ReadError& error) {
    raise_value_error(error.what());
  }
}

py::tuple read_bars(const std::string& path, std::optional<std::string> time,
                    std::map<uint32_t, std::optional<std::string>> fields, bool dates_repeat) {
  Read file = read(path, {std::move(time), std::move(fields), dates_repeat, {}});
  py::dict columns;
  for (auto& [id, values] : file.bars.columns) {
    columns[py::int_(id)] = array_of(std::move(values));
  }
  py::list doubts;
  for (const std::string& doubt : file.bars.doubts) doubts.append(text_of(doubt));
  return py::make_tuple(array_of(std::move(file.seconds)), columns, doubts);
}

py::array_t<int64_t> seconds_of_texts(const std::vector<std::string>& texts) {
  std::vector<int64_t> keys;
  keys.reserve(texts.size());
  for (const std::string& text : texts) {
    const auto key = quor_bars::parse_key(text);
    if (!key) {
      raise_value_error("bar " + std::to_string(keys.size()) + " (the first is 0): '" + text +
                        "' is no date; write it as 2024-01-31 or 2024-01-31 09:35:00");
    }
    keys.push_back(*key);
  }
  return array_of(seconds_of_keys(keys));
}

/// All words of each field, the first one first.
std::map<uint32_t, std::vector<std::string>> field_words() {
  std::map<uint32_t, std::vector<std::string>> words;
  for (const auto& [word, id] : quor_bars::field_words()) words[id].emplace_back(word);
  return words;
}

}  // namespace

void add_bar_files(py::module_& module) {
  module.def("read_bars", &read_bars);
  module.def("seconds_of_texts", &seconds_of_texts);
  module.def("field_words", &field_words);
}

}  // namespace quor_python
