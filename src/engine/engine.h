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
/// integer, YYYYMMDDhhmmss. A column id is the id of a field, or from 20000 up a column of the
/// script; 1 is the column of row keys. A null is any NaN.
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

namespace quor::engine {

/// A call that can't be served: the caller's fault, not the script's.
class Misuse : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// What is wrong with a script; code 0 is nothing.
struct Failure {
  int32_t code = 0;           ///< the ErrCode of the C interface
  std::string text;           ///< its ExtraMsg, or the text of an exception
  int32_t statement = -1;     ///< counted from 0; -1 if the failure has no place
  bool in_condition = false;  ///< the fault lies in `Settings::condition`, not in the script

  explicit operator bool() const { return code != 0; }
};

/// What a script is about. The market constants are NaN where they aren't known.
struct Subject {
  uint32_t period = 0x4000;  ///< 0x4000 one day, 0x3005 five minutes, ...
  std::string security;
  std::string market;
  std::string time_zone = "UTC+08:00";
  double min_price = std::numeric_limits<double>::quiet_NaN();
  double unit = std::numeric_limits<double>::quiet_NaN();
  double share_count_per_unit = std::numeric_limits<double>::quiet_NaN();
  bool is_trading = false;
  /// The trading calendar as JSON, in the form of the C interface. The process keeps it under
  /// security and market.
  std::string calendar;
};

struct Settings {
  Subject subject;
  std::vector<std::pair<std::string, double>> parameters;  ///< by name, in place of PARAM_NAME
  std::string lines;  ///< the look of lines, JSON as in the C interface
  /// Fields beside the common ones: the word, in capitals, and the id of its column. A word is
  /// known to the whole process from then on.
  std::vector<std::pair<std::string, uint32_t>> fields;
  /// An expression over the script's lines, calculated as one more line that `lines()` leaves out;
  /// its column is `condition_column()`. Empty for none.
  std::string condition;
};

/// Data of another security or period, or a quote, that the script reads from a column of its own.
struct Reference {
  enum class Kind : uint8_t { security, period, quote };
  Kind kind;
  std::string source;  ///< source and field, "600000|11"
  uint32_t column;
};

/// What a script needs.
struct Report {
  Failure failure;               ///< with one the rest is empty
  int32_t look_back = 0;         ///< how many bars the script looks back
  std::vector<uint32_t> fields;  ///< column ids of the fields, ascending; 1 is the row key
  std::vector<Reference> references;
  bool needs_market_constants = false;
  bool needs_calendar = false;
  bool has_notices = false;
  std::string text;  ///< the JSON of the C interface
};

/// How a line is drawn: its drawing record in short.
struct Look {
  std::string shape;    ///< "PolylineShape" and the like
  std::string style;    ///< "Polyline", "Line", "TextShape" and the like
  std::string colour;   ///< a key that the host resolves, or empty
  float width = -1.0F;  ///< -1 leaves it to the host
  std::string dash;     ///< "SOLIDLINE" and the like; empty for what is no line
  int32_t marks = -1;   ///< the column of marks: 1 where it shows; -1 for none
};

/// A named line of the script.
struct Line {
  std::string name;
  uint32_t column = 0;
  int32_t statement = 0;     ///< counted from 0
  std::optional<Look> look;  ///< nothing for a line that is only calculated
};

/// A notice or a trade signal.
struct Event {
  int64_t key = 0;  ///< the row key of its bar
  uint32_t row = 0;
  std::string word;       ///< "NOTICE", "BK", "BP", "SK", "SP", "BPK", "SPK" or "CLOSEOUT"
  std::string name;       ///< of a notice, as the script gives it
  int64_t quantity = -1;  ///< of a signal; -1 if the script gives none
  int32_t statement = 0;  ///< counted from 0
  uint32_t column = 0;    ///< the column of its condition
};

/// The values of one field, one per row key.
struct Field {
  uint32_t column = 0;
  std::span<const double> values;
};

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
  /// Drops all bars. The script stays, with what it has remembered of them.
  void clear_rows();
  /// As new for another subject: no bars and nothing remembered. Cheaper than a new object.
  void restart(const Subject& subject);

  /// Calculates all statements from `first_row` to the last bar. With `with_events` notices and
  /// signals go into `events()`. A failure stops the run; what was written stays. Misuse: a script
  /// with an error.
  Failure calculate(uint32_t first_row = 0, bool with_events = false);

  uint32_t row_count() const;
  /// Misuse: a row that isn't there.
  int64_t key_of(uint32_t row) const;
  /// The row of a key, or nothing.
  std::optional<uint32_t> row_of(int64_t key) const;

  /// All cells of a column in place, oldest bar first, until rows or columns come or go: the next
  /// member that isn't const. Misuse: a column that isn't there.
  std::span<const double> column(uint32_t id) const;
  /// The named lines in the order of the script.
  const std::vector<Line>& lines() const;
  bool has_condition() const;
  /// The column of `Settings::condition`. Misuse: a script without one.
  uint32_t condition_column() const;

  /// What the script draws: the records of the C interface, one JSON object each. Titles stand in
  /// them as the script has them, without escaping.
  std::vector<std::string> shapes() const;
  /// The notices and signals of the last calculation, in the order in which they came.
  const std::vector<Event>& events() const;
  /// The words that the script calls, by bytes.
  std::vector<std::string> words() const;

 private:
  struct Body;
  std::unique_ptr<Body> body_;
};

}  // namespace quor::engine
