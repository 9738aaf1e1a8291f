/// The engine for C++ that links it: scripts over arrays, without texts in between.
///
/// A `Script` is one script over the bars of one security, as an instance of the C interface is,
/// and gives the same values to the last bit. Order of calls:
///   1. the constructor compiles; `report()` says which fields the script needs, or what is wrong
///   2. `set_rows`: the bars, as one array of row keys and one array of values per field
///   3. `calculate` from the first row whose values may differ; 0 at the start
///   4. `column`, `events` and the other reading members
///   5. for a new or changed bar 2 to 4 again; for another security `restart` first
///
/// Numbers: a row is an index, 0 the oldest bar. A row key is a positive date-time written as an
/// integer, YYYYMMDDhhmmss. A column id is the id of a field or of a column of the script,
/// whose columns count from 20000 up; 1 is the column of row keys. A null is any NaN.
///
/// Errors of a script are values (`Failure`). Misuse of a member is an exception (`Misuse`); beside
/// it only std::bad_alloc comes out, and what was in the script before then stands.
///
/// Threads: one thread at a time works with a script, reading members included; different scripts
/// are free of each other.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/values.h"

namespace quor::engine {

/// Frees the cells of a column that `Script::take_columns` has given away.
struct FreeColumn {
  void operator()(double* cells) const;
};
using TakenColumn = std::unique_ptr<double[], FreeColumn>;

class Script {
 public:
  /// Compiles. A script with an error makes an object, too, whose report holds it.
  explicit Script(std::string source, Settings settings = {});
  ~Script();
  Script(Script&&) noexcept;
  Script& operator=(Script&&) noexcept;

  const Report& report() const;
  /// What advice about the script is made from, beside the report's text: the script with the
  /// condition as its last statement, the parameters as JSON, and the answer of the last
  /// calculation as the C interface gives it, empty before the first.
  const std::string& source() const;
  const std::string& parameters() const;
  const std::string& answer() const;

  /// Takes bars: keys in any order, ascending ones soonest. Of equal keys the last bar wins whole,
  /// keys below 1 are passed over, a known key replaces the needed fields of its bar. Fields that
  /// the script doesn't need are passed over, needed ones that aren't there are null, and so are
  /// 4294967295 and 2147483648. Misuse: another number of values than of keys, a field twice, a
  /// script with an error.
  void set_rows(std::span<const int64_t> keys, std::span<const Field> fields);
  /// As `set_rows`, and reads ascending bars where they are if it can: until `take_columns`,
  /// `clear_rows` or `restart` they must stay as they are. Column 1 has the keys then only if the
  /// script may see it.
  void lend_rows(std::span<const int64_t> keys, std::span<const Field> fields);
  /// Drops all bars. The script stays, with what it has remembered of them.
  void clear_rows();
  /// As new for another subject: no bars and nothing remembered. Cheaper than a new object.
  void restart(const Subject& subject);
  /// As new with other parameters: no bars. Its memory for bars serves again.
  void restart_with(std::vector<std::pair<std::string, double>> parameters);

  /// Calculates all statements from `first_row` to the last bar. With `with_events` notices and
  /// signals go into `events()`. A failure stops the run; what was written stays. Misuse: a script
  /// with an error, a calendar that is none.
  Failure calculate(uint32_t first_row = 0, bool with_events = false);

  /// Whether another bar may change values at bars before, as a look ahead or the number of bars
  /// does: a bar that comes or changes then gives the values of a run over all bars only if all are
  /// set and calculated again, behind a restart. Else it is enough to calculate from the bar
  /// before.
  bool follows_later_bars() const;

  uint32_t row_count() const;
  /// Misuse: a row that isn't there.
  int64_t key_of(uint32_t row) const;
  /// The row of a key, or nothing.
  std::optional<uint32_t> row_of(int64_t key) const;

  /// All cells of a column in place, oldest bar first, until rows or columns come or go: the next
  /// member that isn't const. Misuse: a column that isn't there.
  std::span<const double> column(uint32_t id) const;
  /// Gives the cells of columns away, `row_count()` each, and drops all bars. A column that comes
  /// twice and one that is a field are copied. Misuse: a column that isn't there.
  std::vector<TakenColumn> take_columns(std::span<const uint32_t> ids);
  /// The named lines in the order of the script.
  const std::vector<Line>& lines() const;
  bool has_condition() const;
  /// The column of `Settings::condition`. Misuse: a script without one.
  uint32_t condition_column() const;

  /// What the script draws: the records of the C interface, one JSON object each. Titles stand in
  /// them as the script has them, without escaping.
  std::vector<std::string> shapes() const;
  /// The same as values.
  std::vector<Record> records() const;
  /// The notices and signals of the last calculation, in the order in which they came; to be asked
  /// for before rows come or go.
  const std::vector<Event>& events() const;
  /// The words that the script calls, by bytes.
  std::vector<std::string> words() const;

 private:
  struct Body;
  std::unique_ptr<Body> body_;
};

}  // namespace quor::engine
