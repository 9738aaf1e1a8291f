// The engine as a Python class. Arrays go in without a copy where they have the right type already,
// and the interpreter is free while bars are taken in and calculated.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

#include "advice/advice.h"
#include "arrays.h"
#include "bar_files.h"
#include "engine/engine.h"
#include "row_keys.h"

namespace py = pybind11;

namespace quor_python {
namespace {

using quor::engine::Field;
using quor::engine::Script;

using Stamps = py::array_t<int64_t, py::array::c_style | py::array::forcecast>;
using Values = py::array_t<double, py::array::c_style | py::array::forcecast>;
using FieldList = std::vector<std::pair<uint32_t, Values>>;
using Numbers = std::vector<std::pair<std::string, double>>;
/// A security's name and its bars: times, ticks per second, fields.
using Security = std::tuple<std::string, Stamps, int64_t, FieldList>;

std::span<const int64_t> span_of(const Stamps& stamps) {
  if (stamps.ndim() != 1) throw py::value_error("times must have one dimension");
  return {stamps.data(), static_cast<size_t>(stamps.size())};
}

std::vector<Field> fields_of(const FieldList& list) {
  std::vector<Field> fields;
  for (const auto& [id, values] : list) {
    if (values.ndim() != 1) throw py::value_error("a field must have one dimension");
    fields.push_back({id, {values.data(), static_cast<size_t>(values.size())}});
  }
  return fields;
}

/// Where an infinity stands: the field and the bar, in the order in which they came.
using Place = std::pair<uint32_t, size_t>;

std::optional<Place> find_infinity(std::span<const Field> fields) {
  for (const auto& [id, values] : fields) {
    const auto found = std::ranges::find_if(values, [](double value) { return std::isinf(value); });
    if (found != values.end()) return Place{id, static_cast<size_t>(found - values.begin())};
  }
  return std::nullopt;
}

py::tuple tuple_of(const quor_advice::Finding& finding) {
  const bool is_error = finding.severity == quor_advice::Severity::error;
  return py::make_tuple(is_error ? "error" : "warning", finding.code, finding.sentence,
                        finding.suggestion, finding.line, finding.column, finding.length);
}

/// A script with the bars of one security. A lock makes calls of several threads wait for each
/// other; nobody waits for the interpreter while holding it.
class Engine {
 public:
  Engine(std::string source, Numbers parameters, std::string condition, uint32_t period,
         std::string security, std::string market)
      : subject_(subject_of(period, std::move(security), std::move(market))),
        script_(std::move(source),
                {subject_, std::move(parameters), {}, {}, std::move(condition)}) {}

  /// Bars in place of those before, and all lines over them. False for a failure.
  bool run(const Stamps& stamps, int64_t ticks, const FieldList& list, bool with_events) {
    return work(stamps, list, [&](std::span<const int64_t> times, std::span<const Field> fields) {
      return run_anew(subject_, times, ticks, fields, with_events);
    });
  }

  /// Bars beside those before, and all lines from the first of them on.
  bool update(const Stamps& stamps, int64_t ticks, const FieldList& list, bool with_events) {
    return work(stamps, list, [&](std::span<const int64_t> times, std::span<const Field> fields) {
      set_keys(times, ticks);
      take_in(fields);
      if (keys_.empty()) return true;
      const auto first = script_.row_of(*std::ranges::min_element(keys_));
      return calculate(first.value_or(0), with_events);
    });
  }

  /// As `run` for one security after the other. Of their last bars those at which the condition
  /// holds count. Gives for each security how many of these it has, the rows of all its bars, what
  /// failed: nothing, a text or a finding, and the place of an infinity; then the keys of the bars
  /// that count, and the lines there, a row for each bar.
  py::tuple scan(const std::vector<Security>& securities, size_t last) {
    std::vector<Outcome> outcomes(securities.size());
    Found found;
    size_t width = 0;
    {
      const py::gil_scoped_release release;
      const std::lock_guard guard(lock_);
      for (size_t i = 0; i < securities.size(); ++i) {
        outcomes[i] = scan_one(securities[i], last, found);
      }
      width = script_.lines().size();
    }
    py::list list;
    for (const Outcome& outcome : outcomes) {
      list.append(
          py::make_tuple(outcome.found, outcome.rows, failure_of(outcome), outcome.infinity));
    }
    const auto rows = static_cast<py::ssize_t>(found.keys.size());
    const auto columns = static_cast<py::ssize_t>(width);
    return py::make_tuple(list, array_of(std::move(found.keys)),
                          array_of(std::move(found.cells)).reshape({rows, columns}));
  }

  /// The cells of all lines, a row for each line.
  py::array_t<double> values(uint32_t first) {
    const std::lock_guard guard(lock_);
    const uint32_t count = script_.row_count();
    first = std::min(first, count);
    py::array_t<double> cells({script_.lines().size(), size_t{count} - first});
    double* out = cells.mutable_data();
    for (const auto& line : script_.lines()) {
      out = std::ranges::copy(script_.column(line.column).subspan(first), out).out;
    }
    return cells;
  }

  /// For each bar of the last `run` its row; nothing if they are the rows in their order.
  std::optional<py::array_t<int64_t>> rows_of_bars() {
    const std::lock_guard guard(lock_);
    if (keys_.size() == script_.row_count() && std::ranges::is_sorted(keys_)) return std::nullopt;
    std::vector<int64_t> rows;
    for (const int64_t key : keys_) rows.push_back(script_.row_of(key).value_or(0));
    return array_of(std::move(rows));
  }

  /// Of the bars last taken in.
  std::optional<Place> infinity() {
    const std::lock_guard guard(lock_);
    return infinity_;
  }

  uint32_t row_count() {
    const std::lock_guard guard(lock_);
    return script_.row_count();
  }

  py::array_t<int64_t> keys(uint32_t first) {
    const std::lock_guard guard(lock_);
    std::vector<int64_t> keys;
    for (uint32_t row = first; row < script_.row_count(); ++row)
      keys.push_back(script_.key_of(row));
    return array_of(std::move(keys));
  }

  py::list events() {
    const std::lock_guard guard(lock_);
    py::list list;
    for (const auto& event : script_.events()) {
      list.append(py::make_tuple(event.row, event.key, event.word, event.name, event.quantity,
                                 event.statement));
    }
    return list;
  }

  py::dict report() {
    const std::lock_guard guard(lock_);
    const auto& report = script_.report();
    py::list references;
    for (const auto& reference : report.references) {
      references.append(py::make_tuple(reference.source, reference.column));
    }
    py::dict dict;
    dict["look_back"] = report.look_back;
    dict["fields"] = report.fields;
    dict["references"] = references;
    dict["needs_market_constants"] = report.needs_market_constants;
    dict["needs_calendar"] = report.needs_calendar;
    dict["has_notices"] = report.has_notices;
    dict["words"] = script_.words();
    return dict;
  }

  py::list lines() {
    const std::lock_guard guard(lock_);
    py::list list;
    for (const auto& line : script_.lines()) {
      py::dict dict;
      dict["name"] = line.name;
      dict["statement"] = line.statement;
      dict["look"] = line.look ? look_of(*line.look) : py::object(py::none());
      list.append(dict);
    }
    return list;
  }

  std::vector<std::string> shapes() {
    const std::lock_guard guard(lock_);
    return script_.shapes();
  }

  /// What the advice says about the last compile and the last calculation.
  py::list findings() {
    const std::lock_guard guard(lock_);
    py::list list;
    for (const auto& finding : advise()) list.append(tuple_of(finding));
    return list;
  }

  /// The failure of the last compile or calculation, as a finding; nothing without one. That of a
  /// condition has no place in the script.
  std::optional<py::tuple> error() {
    const std::lock_guard guard(lock_);
    const auto finding = first_error();
    if (!finding) return std::nullopt;
    return tuple_of(*finding);
  }

 private:
  using Finding = quor_advice::Finding;

  /// What a scan comes to for one security.
  struct Outcome {
    size_t found = 0;
    uint32_t rows = 0;
    std::string fault;  ///< of the bars
    std::optional<Finding> finding;
    std::optional<Place> infinity;
  };

  /// The bars that count, of all securities.
  struct Found {
    std::vector<int64_t> keys;
    std::vector<double> cells;
  };

  static py::object failure_of(const Outcome& outcome) {
    if (outcome.finding) return tuple_of(*outcome.finding);
    if (!outcome.fault.empty()) return py::str(outcome.fault);
    return py::none();
  }

  static quor::engine::Subject subject_of(uint32_t period, std::string security,
                                          std::string market) {
    quor::engine::Subject subject;
    subject.period = period;
    subject.security = std::move(security);
    subject.market = std::move(market);
    return subject;
  }

  /// Runs with the arrays of the caller, without the interpreter.
  template <typename Task>
  bool work(const Stamps& stamps, const FieldList& list, const Task& task) {
    const std::span<const int64_t> times = span_of(stamps);
    const std::vector<Field> fields = fields_of(list);
    const py::gil_scoped_release release;
    const std::lock_guard guard(lock_);
    return task(times, fields);
  }

  bool run_anew(const quor::engine::Subject& subject, std::span<const int64_t> times, int64_t ticks,
                std::span<const Field> fields, bool with_events) {
    set_keys(times, ticks);
    script_.restart(subject);
    take_in(fields);
    return calculate(0, with_events);
  }

  void take_in(std::span<const Field> fields) {
    infinity_ = find_infinity(fields);
    script_.set_rows(keys_, fields);
  }

  /// Securities of one market mostly have the same times, so that the keys are there already.
  void set_keys(std::span<const int64_t> times, int64_t ticks) {
    if (ticks == ticks_ && std::ranges::equal(times, times_)) return;
    ticks_ = 0;
    fill_keys(times, ticks, keys_);
    times_.assign(times.begin(), times.end());
    ticks_ = ticks;
  }

  /// One security's fault is not the others'.
  Outcome scan_one(const Security& security, size_t last, Found& found) {
    Outcome outcome;
    const size_t keys = found.keys.size();
    const size_t cells = found.cells.size();
    try {
      const auto& [name, stamps, ticks, list] = security;
      quor::engine::Subject subject = subject_;
      subject.security = name;
      if (run_anew(subject, span_of(stamps), ticks, fields_of(list), false)) {
        outcome.found = take_last(last, found);
        outcome.rows = script_.row_count();
        outcome.infinity = infinity_;
      } else {
        outcome.finding = first_error();
      }
    } catch (const std::exception& error) {
      outcome.fault = error.what();
      found.keys.resize(keys);
      found.cells.resize(cells);
    }
    return outcome;
  }

  std::optional<Finding> first_error() const {
    if (!script_.report().failure && !run_failed_) return std::nullopt;
    for (Finding& finding : advise()) {
      if (finding.severity != quor_advice::Severity::error) continue;
      if (script_.report().failure.in_condition) finding.line = finding.column = 0;
      return finding;
    }
    return std::nullopt;
  }

  bool calculate(uint32_t first, bool with_events) {
    run_failed_ = static_cast<bool>(script_.calculate(first, with_events));
    return !run_failed_;
  }

  bool holds(uint32_t row) const {
    const double value = script_.column(script_.condition_column())[row];
    return value == value && value != 0.0;
  }

  /// Gives how many of the last bars count.
  size_t take_last(size_t last, Found& found) const {
    const size_t before = found.keys.size();
    const uint32_t count = script_.row_count();
    const auto first = static_cast<uint32_t>(count - std::min<size_t>(count, last));
    for (uint32_t row = first; row < count; ++row) {
      if (script_.has_condition() && !holds(row)) continue;
      found.keys.push_back(script_.key_of(row));
      for (const auto& line : script_.lines()) {
        found.cells.push_back(script_.column(line.column)[row]);
      }
    }
    return found.keys.size() - before;
  }

  std::vector<Finding> advise() const {
    quor_advice::Input input;
    input.script = script_.source();
    input.parameters = script_.parameters();
    input.report = script_.report().text;
    input.answer = script_.answer();
    input.period = static_cast<int32_t>(subject_.period);
    input.supply = quor_advice::Supply{
        false, {}, "the package has none", "write the number, or a parameter, in its place"};
    return quor_advice::advise(input);
  }

  static py::dict look_of(const quor::engine::Look& look) {
    py::dict dict;
    dict["shape"] = look.shape;
    dict["style"] = look.style;
    dict["colour"] = look.colour;
    dict["width"] = look.width;
    dict["dash"] = look.dash;
    return dict;
  }

  std::mutex lock_;  ///< guards all below
  const quor::engine::Subject subject_;
  Script script_;
  bool run_failed_ = false;
  std::vector<int64_t> keys_;   ///< of the last bars taken in, in their order
  std::vector<int64_t> times_;  ///< that the keys come from
  int64_t ticks_ = 0;           ///< of these times; 0 if the keys come from none
  std::optional<Place> infinity_;
};

/// What is wrong with parameters of these names, in capitals.
py::list parameter_faults(const std::string& source, const std::vector<std::string>& names) {
  py::list list;
  for (const auto& fault : quor_advice::parameter_faults(source, names)) {
    list.append(py::make_tuple(fault.name, tuple_of(fault.finding)));
  }
  return list;
}

py::array_t<int64_t> seconds_of(const Stamps& keys) {
  return array_of(seconds_of_keys(span_of(keys)));
}

}  // namespace
}  // namespace quor_python

PYBIND11_MODULE(_engine, module) {
  using quor_python::Engine;
  module.doc() = "The engine of the package. Use the package.";
  py::register_exception<quor::engine::Misuse>(module, "Misuse", PyExc_ValueError);
  py::class_<Engine>(module, "Engine")
      .def(py::init<std::string, quor_python::Numbers, std::string, uint32_t, std::string,
                    std::string>(),
           py::arg("source"), py::arg("parameters"), py::arg("condition"), py::arg("period"),
           py::arg("security"), py::arg("market"))
      .def("run", &Engine::run)
      .def("update", &Engine::update)
      .def("scan", &Engine::scan)
      .def("values", &Engine::values)
      .def("rows_of_bars", &Engine::rows_of_bars)
      .def("infinity", &Engine::infinity)
      .def("row_count", &Engine::row_count)
      .def("keys", &Engine::keys)
      .def("events", &Engine::events)
      .def("report", &Engine::report)
      .def("lines", &Engine::lines)
      .def("shapes", &Engine::shapes)
      .def("findings", &Engine::findings)
      .def("error", &Engine::error);
  module.def("parameter_faults", &quor_python::parameter_faults);
  module.def("seconds_of_keys", &quor_python::seconds_of);
  quor_python::add_bar_files(module);
}
