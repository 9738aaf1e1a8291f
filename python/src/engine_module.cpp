// What the package's Python sees of the engine.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "arrays.h"
#include "arrow.h"
#include "bar_files.h"
#include "bars/period.h"
#include "engine.h"
#include "moments.h"
#include "row_keys.h"
#include "script_names.h"

namespace py = pybind11;

namespace quor_python {
namespace {

/// What is wrong with parameters of these names, in capitals: the name, whether it is idle for a
/// declaration of its own, and the finding.
py::list parameter_faults(const std::string& source, const std::vector<std::string>& names) {
  py::list list;
  for (const auto& fault : quor_advice::parameter_faults(source, names)) {
    list.append(py::make_tuple(fault.name, tuple_of(fault.finding)));
  }
  return list;
}

/// The lines, constants and words of a script.
py::tuple names_in(const std::string& source) {
  const auto names = quor_advice::names_in(source);
  return py::make_tuple(names.lines, names.constants, names.words);
}

py::array_t<int64_t> seconds_of(const Stamps& keys) {
  return array_of(seconds_of_keys(span_of(keys)));
}

}  // namespace
}  // namespace quor_python

PYBIND11_MODULE(_engine, module) {
  using quor_python::Engine;
  module.doc() = "The engine of the package. Use the package.";
  module.attr("version") = QUOR_VERSION;
  quor_python::prepare_moments();
  py::register_exception<quor::engine::Misuse>(module, "Misuse", PyExc_ValueError);
  py::class_<Engine>(module, "Engine")
      .def(py::init<std::string, quor_python::Numbers, std::string, quor_python::Context>())
      .def("restart", &Engine::restart)
      .def("run", &Engine::run)
      .def("run_once", &Engine::run_once)
      .def("take", &Engine::take)
      .def("run_as", &Engine::run_as)
      .def("update", &Engine::update)
      .def("follow", &Engine::follow)
      .def("step", &Engine::step)
      .def("scan", &Engine::scan)
      .def("scan_into", &Engine::scan_into, py::arg("securities"), py::arg("last"),
           py::arg("lines"), py::arg("starts"), py::arg("seconds").noconvert(),
           py::arg("cells").noconvert())
      .def("fill", &Engine::fill, py::arg("cells").noconvert(), py::arg("lines"),
           py::arg("first_line"))
      .def("values", &Engine::values)
      .def("rows_of_bars", &Engine::rows_of_bars)
      .def("infinity", &Engine::infinity)
      .def("row_count", &Engine::row_count)
      .def("keys", &Engine::keys)
      .def("bars", &Engine::bars)
      .def("events", &Engine::events)
      .def("report", &Engine::report)
      .def("lines", &Engine::lines)
      .def("shapes", &Engine::shapes)
      .def("findings", &Engine::findings)
      .def("errors", &Engine::errors)
      .def("error", &Engine::error);
  module.def("parameter_faults", &quor_python::parameter_faults);
  module.def("names_in", &quor_python::names_in);
  module.def("drawn_lines", &quor_python::drawn_lines);
  module.def("places_of_word", &quor_python::places_of_word);
  module.def("read_arrow", &quor_python::read_arrow);
  module.def("parse_period", &quor_bars::parse_period);
  module.def("seconds_of_keys", &quor_python::seconds_of);
  quor_python::add_bar_files(module);
}
