#include "engine.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "arrays.h"
#include "moments.h"
#include "row_keys.h"

namespace py = pybind11;

namespace quor_python {
namespace {

using quor::engine::Field;

std::vector<Field> fields_of(const FieldList& list) {
  std::vector<Field> fields;
  for (const auto& [id, values] : list) {
    if (values.ndim() != 1) throw py::value_error("a field must have one dimension");
    fields.push_back({id, {values.data(), static_cast<size_t>(values.size())}});
  }
  return fields;
}

/// Whether any is an infinity or null: only these don't make 0 of 0. Sums side by side don't wait
/// for each other.
bool has_special(std::span<const double> values) {
  std::array<double, 8> sums{};
  size_t i = 0;
  for (; i + sums.size() <= values.size(); i += sums.size()) {
    for (size_t lane = 0; lane < sums.size(); ++lane) sums[lane] += values[i + lane] * 0.0;
  }
  for (; i < values.size(); ++i) sums[0] += values[i] * 0.0;
  return std::ranges::any_of(sums, [](double sum) { return sum != 0.0; });
}

/// Whether there is one that is no number and no null.
bool has_infinity(std::span<const double> values) {
  constexpr size_t at_once = 512;
  while (!values.empty()) {
    const auto some = values.first(std::min(at_once, values.size()));
    values = values.subspan(some.size());
    if (has_special(some) &&
        std::ranges::any_of(some, [](double value) { return std::isinf(value); }))
      return true;
  }
  return false;
}

std::optional<Place> find_infinity(std::span<const Field> fields) {
  for (const auto& [id, values] : fields) {
    if (!has_infinity(values)) continue;
    const auto found = std::ranges::find_if(values, [](double value) { return std::isinf(value); });
    return Place{id, static_cast<size_t>(found - values.begin())};
  }
  return std::nullopt;
}

quor::engine::Subject subject_of(Context context) {
  quor::engine::Subject subject;
  auto& [period, code, market, calendar, constants] = context;
  subject.period = period;
  subject.security = std::move(code);
  subject.market = std::move(market);
  subject.calendar = std::move(calendar);
  subject.min_price = constants[0];
  subject.unit = constants[1];
  subject.share_count_per_unit = constants[2];
  return subject;
}

py::dict look_of(const quor::engine::Look& look) {
  py::dict dict;
  dict["shape"] = look.shape;
  dict["style"] = look.style;
  dict["colour"] = look.colour;
  dict["width"] = look.width;
  dict["dash"] = look.dash;
  return dict;
}

/// A plain number or None, which is null; nothing for what needs a second look.
std::optional<double> plain_number(PyObject* value) {
  if (PyFloat_Check(value)) {
    const double number = PyFloat_AS_DOUBLE(value);
    return std::isinf(number) ? std::nullopt : std::optional(number);
  }
  if (value == Py_None) return std::numeric_limits<double>::quiet_NaN();
  if (!PyLong_CheckExact(value)) return std::nullopt;
  const double number = PyLong_AsDouble(value);
  if (number != -1.0 || PyErr_Occurred() == nullptr) return number;
  PyErr_Clear();
  return std::nullopt;
}

/// Names of arguments are mostly kept once.
bool is_same(PyObject* name, PyObject* other) {
  return name == other || PyUnicode_Compare(name, other) == 0;
}

/// Drops rows while those who have lent them are still there.
struct LentRows {
  quor::engine::Script& script;
  ~LentRows() { script.clear_rows(); }
};

constexpr const char* kind_words[] = {"security", "period", "quote"};

}  // namespace

std::span<const int64_t> span_of(const Stamps& stamps) {
  if (stamps.ndim() != 1) throw py::value_error("times must have one dimension");
  return {stamps.data(), static_cast<size_t>(stamps.size())};
}

py::tuple tuple_of(const quor_advice::Finding& finding) {
  const bool is_error = finding.severity == quor_advice::Severity::error;
  return py::make_tuple(is_error ? "error" : "warning", finding.code, finding.sentence,
                        finding.suggestion, finding.line, finding.column, finding.length);
}

Engine::Engine(std::string source, Numbers parameters, std::string condition, Context context)
    : subject_(subject_of(std::move(context))),
      parameters_(std::move(parameters)),
      script_(std::move(source), {subject_, parameters_, {}, {}, std::move(condition), false}) {}

void Engine::restart(Numbers parameters) {
  const py::gil_scoped_release release;
  const std::lock_guard guard(lock_);
  parameters_ = std::move(parameters);
  script_.restart_with(parameters_);
  run_failed_ = false;
}

bool Engine::run(const Stamps& stamps, int64_t ticks, const FieldList& list, bool with_events) {
  return work(stamps, list, [&](std::span<const int64_t> times, std::span<const Field> fields) {
    return run_anew(subject_, times, ticks, fields, with_events);
  });
}

bool Engine::run_once(const Stamps& stamps, int64_t ticks, const FieldList& list) {
  {
    const std::lock_guard guard(lock_);
    lent_ = list;
  }
  return work(stamps, list, [&](std::span<const int64_t> times, std::span<const Field> fields) {
    forget_times();
    fill_keys(times, ticks, keys_);
    script_.restart(subject_);
    infinity_ = find_infinity(fields);
    script_.lend_rows(keys_, fields);
    rows_are_bars_ = keys_are_rows();
    if (rows_are_bars_) keys_ = {};
    return calculate(0, true);
  });
}

py::list Engine::take(const std::vector<size_t>& lines) {
  const std::lock_guard guard(lock_);
  const uint32_t count = script_.row_count();
  std::vector<uint32_t> ids;
  for (const size_t line : lines) ids.push_back(script_.lines().at(line).column);
  py::list arrays;
  for (auto& cells : script_.take_columns(ids)) arrays.append(array_of(std::move(cells), count));
  lent_.clear();
  return arrays;
}

bool Engine::run_as(std::string code, const Stamps& stamps, int64_t ticks, const FieldList& list) {
  quor::engine::Subject subject = subject_;
  subject.security = std::move(code);
  return work(stamps, list, [&](std::span<const int64_t> times, std::span<const Field> fields) {
    return run_anew(subject, times, ticks, fields, true);
  });
}

bool Engine::update(const Stamps& stamps, int64_t ticks, const FieldList& list, bool with_events) {
  return work(stamps, list, [&](std::span<const int64_t> times, std::span<const Field> fields) {
    set_keys(times, ticks);
    take_in(fields);
    return calculate_from_first_key(with_events);
  });
}

bool Engine::calculate_from_first_key(bool with_events) {
  if (keys_.empty()) return true;
  const auto first = script_.row_of(*std::ranges::min_element(keys_));
  return calculate(first.value_or(0), with_events);
}

void Engine::follow(const py::tuple& names, std::vector<uint32_t> ids,
                    const std::vector<size_t>& lines) {
  const std::lock_guard guard(lock_);
  names_ = names;
  ids_ = std::move(ids);
  bar_.assign(ids_.size(), 0.0);
  shown_.clear();
  for (const size_t number : lines) {
    const auto& line = script_.lines().at(number);
    shown_.emplace_back(line.name, line.column);
  }
}

py::object Engine::step(const py::object& time, const py::dict& fields) {
  const std::lock_guard guard(lock_);
  const auto key = plain_key_of(time);
  if (!key || !names_ || fields.size() != ids_.size()) return py::none();
  size_t at = 0;
  Py_ssize_t place = 0;
  PyObject* name = nullptr;
  PyObject* value = nullptr;
  while (PyDict_Next(fields.ptr(), &place, &name, &value) != 0) {
    const auto number = plain_number(value);
    if (!number || !is_same(name, PyTuple_GET_ITEM(names_->ptr(), static_cast<Py_ssize_t>(at)))) {
      return py::none();
    }
    bar_[at++] = *number;
  }
  std::array<Field, 32> list;
  if (ids_.size() > list.size()) return py::none();
  for (size_t i = 0; i < ids_.size(); ++i) list[i] = {ids_[i], {&bar_[i], 1}};
  keys_.assign(1, *key);
  forget_times();
  infinity_.reset();
  script_.set_rows(keys_, std::span(list).first(ids_.size()));
  if (!calculate_from_first_key(true)) return py::bool_(false);
  return last_values();
}

py::dict Engine::last_values() {
  py::dict values;
  const uint32_t last = script_.row_count() - 1;
  for (const auto& [name, column] : shown_) {
    const py::float_ value(script_.column(column)[last]);
    if (PyDict_SetItem(values.ptr(), name.ptr(), value.ptr()) != 0) throw py::error_already_set();
  }
  return values;
}

py::tuple Engine::scan(const std::vector<Security>& securities, size_t last,
                       const std::vector<size_t>& lines) {
  std::vector<int64_t> seconds;
  std::vector<std::vector<double>> cells(lines.size());
  const auto outcomes = scan_each(securities, [&](size_t) {
    const Chosen chosen = last_rows(last);
    const size_t count = chosen.some.empty() ? chosen.end - chosen.first : chosen.some.size();
    const size_t before = seconds.size();
    seconds.resize(before + count);
    seconds_of_rows(chosen, seconds.data() + before);
    for (size_t i = 0; i < lines.size(); ++i) {
      cells[i].resize(before + count);
      cells_of_line(lines[i], chosen, cells[i].data() + before);
    }
    return count;
  });
  py::array_t<double> values({lines.size(), seconds.size()});
  double* out = values.mutable_data();
  for (const auto& line : cells) out = std::ranges::copy(line, out).out;
  return py::make_tuple(list_of(outcomes), array_of(std::move(seconds)), values);
}

py::list Engine::scan_into(const std::vector<Security>& securities, size_t last,
                           const std::vector<size_t>& lines, const std::vector<size_t>& starts,
                           Seconds seconds, Cells cells) {
  if (cells.ndim() != 2 || static_cast<size_t>(cells.shape(0)) != lines.size() ||
      seconds.ndim() != 1 || seconds.size() != cells.shape(1) ||
      starts.size() != securities.size()) {
    throw py::value_error("results need a row for each line and a column for each bar");
  }
  const auto width = static_cast<size_t>(cells.shape(1));
  int64_t* const times = seconds.mutable_data();
  double* const out = cells.mutable_data();
  const auto outcomes = scan_each(securities, [&](size_t number) -> size_t {
    const Chosen chosen = last_rows(last);
    const size_t count = chosen.end - chosen.first;
    const size_t start = starts[number];
    if (start > width || count > width - start) throw std::logic_error("results need more room");
    seconds_of_rows(chosen, times + start);
    for (size_t i = 0; i < lines.size(); ++i) {
      cells_of_line(lines[i], chosen, out + i * width + start);
    }
    return count;
  });
  return list_of(outcomes);
}

void Engine::fill(Cells cells, const std::vector<size_t>& lines, size_t first_line) {
  const auto width = static_cast<size_t>(cells.shape(1));
  if (first_line + lines.size() > static_cast<size_t>(cells.shape(0))) {
    throw py::value_error("results need a row for each line");
  }
  double* out = cells.mutable_data() + first_line * width;
  const py::gil_scoped_release release;
  const std::lock_guard guard(lock_);
  for (const size_t line : lines) {
    const auto column = script_.column(script_.lines().at(line).column);
    if (column.size() != width) throw std::logic_error("results need a cell for each row");
    out = std::ranges::copy(column, out).out;
  }
}

py::array_t<double> Engine::values(uint32_t first) {
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

std::optional<py::array_t<int64_t>> Engine::rows_of_bars() {
  const std::lock_guard guard(lock_);
  if (rows_are_bars_ || keys_are_rows()) return std::nullopt;
  std::vector<int64_t> rows;
  rows.reserve(keys_.size());
  for (const int64_t key : keys_) rows.push_back(script_.row_of(key).value_or(0));
  return array_of(std::move(rows));
}

std::optional<Place> Engine::infinity() {
  const std::lock_guard guard(lock_);
  return infinity_;
}

uint32_t Engine::row_count() {
  const std::lock_guard guard(lock_);
  return script_.row_count();
}

py::array_t<int64_t> Engine::keys(uint32_t first) {
  const std::lock_guard guard(lock_);
  std::vector<int64_t> keys;
  for (uint32_t row = first; row < script_.row_count(); ++row) keys.push_back(script_.key_of(row));
  return array_of(std::move(keys));
}

py::object Engine::events() {
  const std::lock_guard guard(lock_);
  const auto& events = script_.events();
  if (events.empty()) return py::none();
  std::vector<int64_t> rows;
  std::vector<int64_t> keys;
  std::vector<int64_t> quantities;
  std::vector<int64_t> statements;
  std::vector<int64_t> numbers;
  std::vector<std::pair<std::string, std::string>> kinds;
  for (const auto& event : events) {
    const std::pair kind(event.word, event.name);
    const auto known = std::ranges::find(kinds, kind);
    numbers.push_back(known - kinds.begin());
    if (known == kinds.end()) kinds.push_back(kind);
    rows.push_back(event.row);
    keys.push_back(event.key);
    quantities.push_back(event.quantity);
    statements.push_back(event.statement);
  }
  return py::make_tuple(array_of(std::move(rows)), array_of(std::move(keys)),
                        array_of(std::move(quantities)), array_of(std::move(statements)),
                        array_of(std::move(numbers)), kinds);
}

py::tuple Engine::bars(const std::vector<uint32_t>& columns) {
  const std::lock_guard guard(lock_);
  std::vector<int64_t> keys;
  for (uint32_t row = 0; row < script_.row_count(); ++row) keys.push_back(script_.key_of(row));
  py::list fields;
  for (const uint32_t id : columns) {
    const auto cells = script_.column(id);
    fields.append(py::make_tuple(id, array_of(std::vector(cells.begin(), cells.end()))));
  }
  return py::make_tuple(array_of(std::move(keys)), fields);
}

py::dict Engine::report() {
  const std::lock_guard guard(lock_);
  const auto& report = script_.report();
  py::list references;
  for (const auto& reference : report.references) {
    references.append(py::make_tuple(reference.source, reference.column,
                                     kind_words[static_cast<size_t>(reference.kind)]));
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

py::list Engine::lines() {
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

std::vector<std::string> Engine::shapes() {
  const std::lock_guard guard(lock_);
  return script_.shapes();
}

py::list Engine::findings() {
  const std::lock_guard guard(lock_);
  py::list list;
  for (const auto& finding : advise()) list.append(tuple_of(finding));
  return list;
}

py::list Engine::errors() {
  const std::lock_guard guard(lock_);
  py::list list;
  if (!first_error()) return list;
  for (Finding& finding : advise()) {
    if (finding.severity != quor_advice::Severity::error) continue;
    if (script_.report().failure.in_condition) finding.line = finding.column = 0;
    list.append(tuple_of(finding));
  }
  return list;
}

std::optional<py::tuple> Engine::error() {
  const std::lock_guard guard(lock_);
  const auto finding = first_error();
  if (!finding) return std::nullopt;
  return tuple_of(*finding);
}

py::object Engine::failure_of(const Outcome& outcome) {
  if (outcome.finding) return tuple_of(*outcome.finding);
  if (!outcome.fault.empty()) return py::str(outcome.fault);
  return py::none();
}

py::list Engine::list_of(const std::vector<Outcome>& outcomes) {
  py::list list;
  for (const Outcome& outcome : outcomes) {
    list.append(py::make_tuple(outcome.found, outcome.rows, failure_of(outcome), outcome.infinity));
  }
  return list;
}

template <typename Task>
bool Engine::work(const Stamps& stamps, const FieldList& list, const Task& task) {
  const std::span<const int64_t> times = span_of(stamps);
  const std::vector<Field> fields = fields_of(list);
  const py::gil_scoped_release release;
  const std::lock_guard guard(lock_);
  return task(times, fields);
}

template <typename Take>
std::vector<Engine::Outcome> Engine::scan_each(const std::vector<Security>& securities,
                                               const Take& take) {
  std::vector<Outcome> outcomes;
  outcomes.reserve(securities.size());
  const py::gil_scoped_release release;
  const std::lock_guard guard(lock_);
  for (const Security& security : securities) {
    outcomes.push_back(scan_one(security, [&] { return take(outcomes.size()); }));
  }
  return outcomes;
}

/// One security's fault is not the others'.
template <typename Take>
Engine::Outcome Engine::scan_one(const Security& security, const Take& take) {
  Outcome outcome;
  const LentRows rows{script_};
  try {
    const auto& [name, stamps, ticks, list] = security;
    quor::engine::Subject subject = subject_;
    subject.security = name;
    const std::vector<Field> fields = fields_of(list);
    set_keys(span_of(stamps), ticks);
    script_.restart(subject);
    infinity_ = find_infinity(fields);
    script_.lend_rows(keys_, fields);
    if (calculate(0, false)) {
      outcome.found = take();
      outcome.rows = script_.row_count();
      outcome.infinity = infinity_;
    } else {
      outcome.finding = first_error();
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    outcome.fault = error.what();
  }
  return outcome;
}

bool Engine::run_anew(const quor::engine::Subject& subject, std::span<const int64_t> times,
                      int64_t ticks, std::span<const Field> fields, bool with_events) {
  set_keys(times, ticks);
  script_.restart(subject);
  take_in(fields);
  return calculate(0, with_events);
}

bool Engine::keys_are_rows() const {
  return keys_.size() == script_.row_count() && std::ranges::is_sorted(keys_);
}

bool Engine::calculate(uint32_t first, bool with_events) {
  run_failed_ = static_cast<bool>(script_.calculate(first, with_events));
  return !run_failed_;
}

void Engine::take_in(std::span<const Field> fields) {
  infinity_ = find_infinity(fields);
  script_.set_rows(keys_, fields);
}

/// Securities of one market mostly have the same times, so that the keys are there already.
void Engine::set_keys(std::span<const int64_t> times, int64_t ticks) {
  if (ticks == ticks_ && std::ranges::equal(times, times_)) return;
  forget_times();
  fill_keys(times, ticks, keys_);
  times_.assign(times.begin(), times.end());
  ticks_ = ticks;
}

void Engine::forget_times() {
  ticks_ = 0;
  times_.clear();
  seconds_.clear();
  rows_are_bars_ = false;
}

bool Engine::holds(uint32_t row) const {
  const double value = script_.column(script_.condition_column())[row];
  return value == value && value != 0.0;
}

Engine::Chosen Engine::last_rows(size_t last) const {
  Chosen chosen;
  chosen.end = script_.row_count();
  chosen.first = static_cast<uint32_t>(chosen.end - std::min<size_t>(chosen.end, last));
  if (!script_.has_condition()) return chosen;
  for (uint32_t row = chosen.first; row < chosen.end; ++row) {
    if (holds(row)) chosen.some.push_back(row);
  }
  if (chosen.some.empty()) chosen.end = chosen.first;
  return chosen;
}

void Engine::seconds_of_rows(const Chosen& chosen, int64_t* out) {
  const uint32_t count = script_.row_count();
  const bool rows_are_bars = keys_.size() == count && (seconds_.size() == count || keys_are_rows());
  if (!chosen.some.empty() || !rows_are_bars) {
    const auto put = [&](uint32_t row) { *out++ = seconds_of_key(script_.key_of(row)); };
    std::ranges::for_each(chosen.some, put);
    if (!chosen.some.empty()) return;
    for (uint32_t row = chosen.first; row < chosen.end; ++row) put(row);
    return;
  }
  if (seconds_.size() != count) seconds_ = seconds_of_keys(keys_);
  std::copy(seconds_.begin() + chosen.first, seconds_.begin() + chosen.end, out);
}

void Engine::cells_of_line(size_t line, const Chosen& chosen, double* out) const {
  const auto column = script_.column(script_.lines().at(line).column);
  if (chosen.some.empty()) {
    std::ranges::copy(column.subspan(chosen.first, chosen.end - chosen.first), out);
    return;
  }
  for (const uint32_t row : chosen.some) *out++ = column[row];
}

std::optional<Engine::Finding> Engine::first_error() const {
  if (!script_.report().failure && !run_failed_) return std::nullopt;
  for (Finding& finding : advise()) {
    if (finding.severity != quor_advice::Severity::error) continue;
    if (script_.report().failure.in_condition) finding.line = finding.column = 0;
    return finding;
  }
  return std::nullopt;
}

std::vector<Engine::Finding> Engine::advise() const {
  quor_advice::Supply supply;
  supply.has_calendar = !subject_.calendar.empty();
  const std::pair<const char*, double> constants[] = {
      {"MINPRICE", subject_.min_price},
      {"UNIT", subject_.unit},
      {"SHARECOUNTPERUNIT", subject_.share_count_per_unit}};
  for (const auto& [name, value] : constants) {
    if (!std::isnan(value)) supply.constants.emplace_back(name);
  }
  supply.calendar_advice = "give it with calendar=";
  supply.constant_advice = "give it with constants=";
  quor_advice::Input input;
  input.script = script_.source();
  input.parameters = script_.parameters();
  input.report = script_.report().text;
  input.answer = script_.answer();
  input.period = static_cast<int32_t>(subject_.period);
  input.supply = std::move(supply);
  input.compile = [this](std::string_view script) {
    return quor::engine::Script(std::string(script), {subject_, parameters_, {}, {}, {}})
        .report()
        .text;
  };
  return quor_advice::advise(input);
}

}  // namespace quor_python
