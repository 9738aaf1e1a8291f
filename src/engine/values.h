// What goes into a script and what comes out of it.
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
  /// By name, in place of PARAM_NAME. A script keeps six decimals of them.
  std::vector<std::pair<std::string, double>> parameters;
  std::string lines;  ///< the look of lines, JSON as in the C interface
  /// Fields beside the common ones: the word, in capitals, and the id of its column. A word is
  /// known to the whole process from then on.
  std::vector<std::pair<std::string, uint32_t>> fields;
  /// An expression over the script's lines, calculated as one more line that `lines()` leaves out;
  /// its column is `condition_column()`. Empty for none.
  std::string condition;
  /// Whether the marks of lines are calculated. Without them `Look::marks` is -1, and the columns
  /// that records name for them hold nothing of use.
  bool draws = true;
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

/// A drawing record by the keys of its JSON. Texts are the script's own bytes.
struct Record {
  std::vector<std::pair<std::string, std::string>> texts;
  std::vector<std::pair<std::string, double>> numbers;
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

}  // namespace quor::engine
