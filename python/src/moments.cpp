#include "moments.h"

#include <datetime.h>

#include <algorithm>
#include <string_view>

#include "bars/dates.h"

namespace quor_python {
namespace {

std::optional<int64_t> key_of_datetime(PyObject* time) {
  if (PyDateTime_DATE_GET_TZINFO(time) != Py_None) return std::nullopt;
  const int64_t day = int64_t{PyDateTime_GET_YEAR(time)} * 10000 +
                      int64_t{PyDateTime_GET_MONTH(time)} * 100 + PyDateTime_GET_DAY(time);
  const int64_t clock = int64_t{PyDateTime_DATE_GET_HOUR(time)} * 10000 +
                        int64_t{PyDateTime_DATE_GET_MINUTE(time)} * 100 +
                        PyDateTime_DATE_GET_SECOND(time);
  return day * 1000000 + clock;
}

/// "2024-01-31", perhaps with "09:35" or "09:35:00": a zone would make it longer.
bool has_usual_form(std::string_view text) {
  constexpr size_t sizes[] = {10, 16, 19};
  return std::ranges::find(sizes, text.size()) != std::end(sizes) && text[4] == '-' &&
         text[7] == '-' && text.find_first_of("+Zz") == std::string_view::npos;
}

}  // namespace

void prepare_moments() { PyDateTime_IMPORT; }

std::optional<int64_t> plain_key_of(pybind11::handle time) {
  // What stands for no time at all is a datetime without a year to some.
  if (PyDateTime_CheckExact(time.ptr())) return key_of_datetime(time.ptr());
  if (PyDateTime_Check(time.ptr()) &&
      PyObject_RichCompareBool(time.ptr(), time.ptr(), Py_EQ) == 1) {
    return key_of_datetime(time.ptr());
  }
  if (!PyUnicode_Check(time.ptr())) return std::nullopt;
  Py_ssize_t size = 0;
  const char* const text = PyUnicode_AsUTF8AndSize(time.ptr(), &size);
  if (text == nullptr) {
    PyErr_Clear();
    return std::nullopt;
  }
  const std::string_view whole(text, static_cast<size_t>(size));
  return has_usual_form(whole) ? quor_bars::parse_key(whole) : std::nullopt;
}

}  // namespace quor_python
