// The engine as a Python class. Arrays go in without a copy where they have the right type already,
// and the interpreter is free while bars are taken in and calculated.
#pragma once

#include <pybind11/numpy.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "advice/advice.h"
#include "engine/engine.h"

namespace quor_python {

using Stamps = pybind11::array_t<int64_t, pybind11::array::c_style | pybind11::array::forcecast>;
using Values = pybind11::array_t<double, pybind11::array::c_style | pybind11::array::forcecast>;
/// Results go into arrays of the caller, which no copy may stand for.
using Cells = pybind11::array_t<double, pybind11::array::c_style>;
using Seconds = pybind11::array_t<int64_t, pybind11::array::c_style>;
using FieldList = std::vector<std::pair<uint32_t, Values>>;
using Numbers = std::vector<std::pair<std::string, double>>;
/// What bars are about: period, code, market, calendar, and the market constants MINPRICE, UNIT and
/// SHARECOUNTPERUNIT.
using Context = std::tuple<uint32_t, std::string, std::string, std::string, std::array<double, 3>>;
/// A security's name and its bars: times, ticks per second, fields.
using Security = std::tuple<std::string, Stamps, int64_t, FieldList>;
/// Where an infinity stands: the field and the bar, in the order in which they came.
using Place = std::pair<uint32_t, size_t>;

/// A script with the bars of one security. A lock makes calls of several threads wait for each
/// other; nobody waits for the interpreter while holding it.
class Engine {
 public:
  Engine(std::string source, Numbers parameters, std::string condition, Context context);

  /// Other parameters, and no bars. The memory of the bars serves again.
  void restart(Numbers parameters);

  /// Bars in place of those before, and all lines over them. False for a failure.
  bool run(const Stamps& stamps, int64_t ticks, const FieldList& list, bool with_events);
  /// As `run` with events, for bars that are many: reads the arrays in place and keeps nothing that
  /// is of use to a further run only. `take` must follow, or the end of this object.
  bool run_once(const Stamps& stamps, int64_t ticks, const FieldList& list);
  /// The cells of the lines of these numbers, which go away with all bars.
  pybind11::list take(const std::vector<size_t>& lines);
  /// As `run` with events, for the security of this code.
  bool run_as(std::string code, const Stamps& stamps, int64_t ticks, const FieldList& list);
  /// Bars beside those before, and all lines from the first of them on.
  bool update(const Stamps& stamps, int64_t ticks, const FieldList& list, bool with_events);

  /// The names of the fields of `step`, with their ids, and the lines that it gives.
  void follow(const pybind11::tuple& names, std::vector<uint32_t> ids,
              const std::vector<size_t>& lines);
  /// As `update` with one bar whose time has no zone, and then lines at the last bar by name.
  /// None, with nothing done, unless the fields are those of `follow` in their order, and time and
  /// values need no second look. False for a failure.
  pybind11::object step(const pybind11::object& time, const pybind11::dict& fields);

  /// As `run` for one security after the other. Of their last bars those at which the condition
  /// holds count. Gives for each security how many of these it has, the rows of all its bars, what
  /// failed: nothing, a text or a finding, and the place of an infinity; then the times of the bars
  /// that count, in seconds, and the cells of the lines of these numbers there, a row for each
  /// line.
  pybind11::tuple scan(const std::vector<Security>& securities, size_t last,
                       const std::vector<size_t>& lines);
  /// The same into columns of `seconds` and `cells`, from `starts` on for each security; without a
  /// condition only. Gives the list alone.
  pybind11::list scan_into(const std::vector<Security>& securities, size_t last,
                           const std::vector<size_t>& lines, const std::vector<size_t>& starts,
                           Seconds seconds, Cells cells);

  /// The cells of the lines of these numbers, a row for each, into rows of `cells`.
  void fill(Cells cells, const std::vector<size_t>& lines, size_t first_line);
  /// The cells of all lines from a row on, a row for each line.
  pybind11::array_t<double> values(uint32_t first);

  /// For each bar of the last `run` its row; nothing if they are the rows in their order.
  std::optional<pybind11::array_t<int64_t>> rows_of_bars();
  /// Of the bars last taken in.
  std::optional<Place> infinity();
  uint32_t row_count();
  pybind11::array_t<int64_t> keys(uint32_t first);

  /// Of the events of the last calculation rows, keys, quantities and statements, for each the
  /// number of its kind, and the kinds, which are a word and a name. None without events.
  pybind11::object events();
  /// Keys and the values of columns of all bars.
  pybind11::tuple bars(const std::vector<uint32_t>& columns);
  pybind11::dict report();
  pybind11::list lines();
  std::vector<std::string> shapes();
  /// What the advice says about the last compile and the last calculation.
  pybind11::list findings();
  /// All errors if the last compile or calculation failed.
  pybind11::list errors();
  /// The failure of the last compile or calculation, as a finding; nothing without one. That of a
  /// condition has no place in the script.
  std::optional<pybind11::tuple> error();

 private:
  using Finding = quor_advice::Finding;
  using Fields = std::vector<quor::engine::Field>;

  /// What a scan comes to for one security.
  struct Outcome {
    size_t found = 0;
    uint32_t rows = 0;
    std::string fault;  ///< of the bars
    std::optional<Finding> finding;
    std::optional<Place> infinity;
  };

  /// Bars that count: their rows, in the order of the rows.
  struct Chosen {
    uint32_t first = 0;
    uint32_t end = 0;
    std::vector<uint32_t> some;  ///< with a condition, in place of all from first to end
  };

  static pybind11::object failure_of(const Outcome& outcome);
  static pybind11::list list_of(const std::vector<Outcome>& outcomes);

  /// Runs with the arrays of the caller, without the interpreter.
  template <typename Task>
  bool work(const Stamps& stamps, const FieldList& list, const Task& task);
  template <typename Take>
  std::vector<Outcome> scan_each(const std::vector<Security>& securities, const Take& take);
  template <typename Take>
  Outcome scan_one(const Security& security, const Take& take);

  bool run_anew(const quor::engine::Subject& subject, std::span<const int64_t> times, int64_t ticks,
                std::span<const quor::engine::Field> fields, bool with_events);
  bool calculate(uint32_t first, bool with_events);
  bool calculate_from_first_key(bool with_events);
  void take_in(std::span<const quor::engine::Field> fields);
  void set_keys(std::span<const int64_t> times, int64_t ticks);
  void forget_times();
  bool keys_are_rows() const;
  bool holds(uint32_t row) const;
  Chosen last_rows(size_t last) const;
  void seconds_of_rows(const Chosen& chosen, int64_t* out);
  void cells_of_line(size_t line, const Chosen& chosen, double* out) const;
  pybind11::dict last_values();
  std::optional<Finding> first_error() const;
  std::vector<Finding> advise() const;

  std::mutex lock_;  ///< guards all below
  const quor::engine::Subject subject_;
  Numbers parameters_;
  quor::engine::Script script_;
  bool run_failed_ = false;
  std::vector<int64_t> keys_;     ///< of the last bars taken in, in their order
  std::vector<int64_t> times_;    ///< that the keys come from
  int64_t ticks_ = 0;             ///< of these times; 0 if the keys come from none
  std::vector<int64_t> seconds_;  ///< of the keys, once asked for, if these ascend
  bool rows_are_bars_ = false;    ///< so that their keys aren't kept
  FieldList lent_;                ///< whose values the script reads in place
  std::optional<Place> infinity_;
  std::optional<pybind11::tuple> names_;                   ///< of the fields of `step`
  std::vector<uint32_t> ids_;                              ///< of the same
  std::vector<double> bar_;                                ///< that `step` takes in
  std::vector<std::pair<pybind11::str, uint32_t>> shown_;  ///< the lines of `step`
};

/// A finding as the tuple of its parts.
pybind11::tuple tuple_of(const quor_advice::Finding& finding);

/// Times of an array of one dimension.
std::span<const int64_t> span_of(const Stamps& stamps);

}  // namespace quor_python
