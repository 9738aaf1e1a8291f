// quor_parser.hpp - the parser for hosts in C++17 or later. Header only, over the calls of
// quor_parser.h, whose rules on order, threads, fields and results hold here, too. It needs
// quor_values.hpp beside it, and nothing else to read JSON.
//
//   quor::Parser parser;
//   parser.on_notice([](const quor::Notice& notice) { std::cout << notice.cells << '\n'; });
//   const quor::Report report = parser.compile("AVG:MA(C,2);");
//   if (!report) std::cerr << report.message << " in statement " << report.statement << '\n';
//   parser.feed({{20240102000000, {{quor::close_column, 12.0}}}});
//   parser.calculate(0);
//   for (const quor::Line& line : report.lines())
//     std::cout << line.name << ' ' << parser.values(line.column).back() << '\n';
//
// Nothing here throws but what the standard library throws when memory runs out. A text of 4 GiB or
// more counts as a bad call.
#ifndef QUOR_PARSER_HPP
#define QUOR_PARSER_HPP

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quor_parser.h"
#include "quor_values.hpp"

namespace quor {

/// Columns that bars come with. A script asks for others by their ids in its report.
inline constexpr uint32_t key_column = 1;
inline constexpr uint32_t open_column = 7;
inline constexpr uint32_t high_column = 8;
inline constexpr uint32_t low_column = 9;
inline constexpr uint32_t close_column = 11;
inline constexpr uint32_t volume_column = 13;

/// Period codes; a minute code takes the number of minutes on top.
inline constexpr uint32_t period_minutes = 0x3000;
inline constexpr uint32_t period_day = 0x4000;

/// A cell of a bar; a NaN is a null.
struct Cell {
  uint32_t column = 0;
  double value = 0;
};

/// A bar: its key YYYYMMDDhhmmss and its cells.
struct Row {
  uint64_t key = 0;
  std::vector<Cell> cells;
};

/// What handlers hear. The texts live as long as the call.
struct LogLine {
  uint8_t level = 0;
  std::string_view text;
  uint64_t tag = 0;
};
struct Notice {
  int64_t time = 0;  ///< the wall clock in seconds since 1970
  uint32_t column = 0;
  uint64_t tag = 0;
  std::string_view cells;  ///< the bar as JSON
};
struct Signal {
  int64_t time = 0;  ///< the wall clock in seconds since 1970
  int64_t key = 0;   ///< of the bar
  uint32_t row = 0;
  uint64_t tag = 0;
  uint32_t column = 0;
  uint32_t action = 0;    ///< 0 BK, 1 BP, 2 SK, 3 SP, 4 BPK, 5 SPK, 6 CLOSEOUT
  int64_t quantity = -1;  ///< -1 if the script gives none
};
/// Which calendar is asked for; dates are YYYYMMDD.
struct CalendarRequest {
  std::string_view market;
  std::string_view security;
  std::string_view first_date;
  std::string_view last_date;
};

using NoticeHandler = std::function<void(const Notice&)>;
using SignalHandler = std::function<void(const Signal&)>;
/// Gives the calendar as JSON, or an empty text for none.
using CalendarSource = std::function<std::string(const CalendarRequest&)>;
/// Gives the market constant `key` of a security, or a NaN while there is none.
using ConstantSource =
    std::function<double(std::string_view key, std::string_view market, std::string_view security)>;
/// Whether a security trades at `time`, in seconds since 1970.
using TradingSource =
    std::function<bool(int64_t time, std::string_view market, std::string_view security)>;
using LogHandler = std::function<void(const LogLine&)>;

namespace detail {

/// A text as the calls want it: a null pointer, which they refuse, if it is too long for them.
struct Text {
  explicit Text(std::string_view text) {
    if (text.size() > std::numeric_limits<uint32_t>::max()) return;
    data = text.data() == nullptr ? "" : text.data();
    size = static_cast<uint32_t>(text.size());
  }

  const char* data = nullptr;
  uint32_t size = 0;
};

inline std::string_view view(const char* text) { return text == nullptr ? "" : text; }

/// Takes a buffer of the library over and gives it back.
inline std::string take(char* buffer, uint32_t length) {
  const std::unique_ptr<char, decltype(&release_ptr_val)> owner(buffer, &release_ptr_val);
  return owner == nullptr ? std::string() : std::string(buffer, length);
}

inline void write_number(std::string& out, double value) {
  char digits[32];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
  out.append(std::isfinite(value) ? std::string_view(digits, static_cast<size_t>(end - digits))
                                  : "null");
}

/// The handlers of one parser.
struct Handlers {
  NoticeHandler notice;
  SignalHandler signal;
  CalendarSource calendar;
  ConstantSource constant;
  TradingSource trading;
  std::string calendar_text;  ///< keeps the last calendar while the library copies it
};

/// Whose call runs on this thread. The library calls back on the thread of the call, and its
/// callbacks carry no pointer of the host.
inline Handlers*& current() {
  thread_local Handlers* handlers = nullptr;
  return handlers;
}

class Entered {
 public:
  explicit Entered(Handlers* handlers) : before_(std::exchange(current(), handlers)) {}
  ~Entered() { current() = before_; }
  Entered(const Entered&) = delete;
  Entered& operator=(const Entered&) = delete;

 private:
  Handlers* before_;
};

/// What `use` makes of the handler in a slot; `otherwise` without one and for an exception, which
/// must not reach the library.
template <typename Handler, typename Result, typename Use>
Result ask(Handler Handlers::*slot, Result otherwise, const Use& use) noexcept {
  const Handlers* const handlers = current();
  if (handlers == nullptr || !(handlers->*slot)) return otherwise;
  try {
    return use(handlers->*slot);
  } catch (...) {
    return otherwise;
  }
}

inline void hear_notice(int64_t time, uint32_t column, uint64_t tag, const char* cells) {
  ask(&Handlers::notice, true, [&](const NoticeHandler& handler) {
    handler({time, column, tag, view(cells)});
    return true;
  });
}

inline void hear_signal(int64_t time, int64_t key, uint32_t row, uint64_t tag, uint32_t column,
                        uint32_t action, int64_t quantity) {
  ask(&Handlers::signal, true, [&](const SignalHandler& handler) {
    handler({time, key, row, tag, column, action, quantity});
    return true;
  });
}

inline const char* give_calendar(const char* market, const char* security, const char* first_date,
                                 const char* last_date, int32_t* /*length*/) {
  return ask(&Handlers::calendar, static_cast<const char*>(nullptr),
             [&](const CalendarSource& source) {
               std::string& text = current()->calendar_text;
               text = source({view(market), view(security), view(first_date), view(last_date)});
               return text.c_str();
             });
}

inline double give_constant(const char* key, const char* market, const char* security) {
  return ask(&Handlers::constant, std::numeric_limits<double>::quiet_NaN(),
             [&](const ConstantSource& source) {
               return source(view(key), view(market), view(security));
             });
}

inline int32_t give_trading(int64_t time, const char* market, const char* security) {
  return ask(&Handlers::trading, int32_t{0}, [&](const TradingSource& source) {
    return source(time, view(market), view(security)) ? int32_t{1} : int32_t{0};
  });
}

/// The log handler of the process. A line that is on its way keeps the handler alive.
struct LogSlot {
  std::mutex lock;  ///< guards `handler`
  std::shared_ptr<const LogHandler> handler;

  std::shared_ptr<const LogHandler> exchange(std::shared_ptr<const LogHandler> other) {
    const std::lock_guard<std::mutex> guard(lock);
    return std::exchange(handler, std::move(other));
  }
  std::shared_ptr<const LogHandler> get() {
    const std::lock_guard<std::mutex> guard(lock);
    return handler;
  }
};

inline LogSlot& log_slot() {
  static LogSlot slot;
  return slot;
}

inline void hear_log_line(uint8_t level, const char* text, uint64_t tag) noexcept {
  try {
    const std::shared_ptr<const LogHandler> handler = log_slot().get();
    if (handler != nullptr) (*handler)({level, view(text), tag});
  } catch (...) {  // the library goes on
  }
}

}  // namespace detail

inline constexpr uint8_t log_times = 0;      ///< a bar's time can't be mapped, too
inline constexpr uint8_t log_calendars = 1;  ///< from the intake of calendars on
inline constexpr uint8_t log_errors = 2;
inline constexpr uint8_t log_unknown_errors = 3;

/// Hears the log of the whole process as long as it lives, in place of the one before. The handler
/// is called by any thread.
class Log {
 public:
  explicit Log(LogHandler handler, uint8_t minimum_level = log_errors)
      : handler_(std::make_shared<const LogHandler>(std::move(handler))) {
    detail::log_slot().exchange(handler_);
    set_logger_handler(&detail::hear_log_line, minimum_level);
  }
  ~Log() {
    detail::LogSlot& slot = detail::log_slot();
    const std::lock_guard<std::mutex> guard(slot.lock);
    if (slot.handler == handler_) slot.handler = nullptr;
  }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

 private:
  std::shared_ptr<const LogHandler> handler_;
};

/// One script over the bars of one security. Owns the instance of the library and its handlers.
///
/// Handlers run on the thread of the call that raises them, and must not call this parser. Set them
/// before other threads use it, an empty one for none. An exception that leaves a handler is
/// dropped; one that leaves a source counts as no answer. The calls for notices, signals and
/// calendars take the handlers of the process over from a host that has set them in C.
class Parser {
 public:
  Parser() : handlers_(std::make_unique<detail::Handlers>()), handle_(create_instance()) {}
  /// Waits for calls that work on it.
  ~Parser() { delete_instance(handle_); }
  Parser(Parser&& other) noexcept
      : handlers_(std::move(other.handlers_)), handle_(std::exchange(other.handle_, 0)) {}
  Parser& operator=(Parser&& other) noexcept {
    Parser taken(std::move(other));
    std::swap(handlers_, taken.handlers_);
    std::swap(handle_, taken.handle_);
    return *this;
  }

  /// False when there was no memory for an instance, and once it has been moved from: all calls
  /// then give their results for a bad handle.
  explicit operator bool() const { return handle_ != 0; }
  /// For calls of quor_parser.h; stays owned here.
  int64_t handle() const { return handle_; }

  // ---- Setup, before the compile ----

  /// The host's mark of the instance, which log lines, notices and signals carry.
  void set_tag(uint64_t tag) { set_parser_instance_uuid(handle_, tag); }

  void set_subject(uint32_t period, std::string_view security, std::string_view market,
                   std::string_view time_zone = "UTC+08:00", std::string_view text = {}) {
    const detail::Text texts[] = {detail::Text(security), detail::Text(market), detail::Text(text),
                                  detail::Text(time_zone)};
    set_indicator_extra_info(handle_, period, texts[0].data, texts[1].data, texts[2].data,
                             texts[3].data, texts[0].size, texts[1].size, texts[2].size,
                             texts[3].size);
  }

  /// Makes `name`, in capitals, a field of bars for this parser and all later ones of the process.
  void add_field(std::string_view name, uint32_t column) {
    const detail::Text text(name);
    create_reserved_field(handle_, text.data, column, text.size);
  }

  void on_notice(NoticeHandler handler) {
    if (set(&detail::Handlers::notice, std::move(handler))) {
      set_parser_notice_callback_handler(&detail::hear_notice);
    }
  }

  void on_signal(SignalHandler handler) {
    if (set(&detail::Handlers::signal, std::move(handler))) {
      set_trade_callback(&detail::hear_signal);
    }
  }

  /// The library keeps a calendar for the life of the process, for every parser.
  void on_calendar(CalendarSource source) {
    if (set(&detail::Handlers::calendar, std::move(source))) {
      set_get_trade_dates_callback(&detail::give_calendar);
    }
  }

  void on_constant(ConstantSource source) {
    const bool is_set = set(&detail::Handlers::constant, std::move(source));
    set_get_extra_data_callback(handle_, is_set ? &detail::give_constant : nullptr);
  }

  void on_trading(TradingSource source) {
    const bool is_set = set(&detail::Handlers::trading, std::move(source));
    set_get_trade_time_callback(handle_, is_set ? &detail::give_trading : nullptr);
  }

  // ---- Compile ----

  /// Compiles a script, and drops all bars. `parameters` and `lines` are JSON.
  Report compile(std::string_view script, std::string_view parameters = {},
                 std::string_view lines = {}) {
    const detail::Text texts[] = {detail::Text(script), detail::Text(parameters),
                                  detail::Text(lines)};
    Report report = detail::read_report(answer_text([&](uint32_t* length) {
      return get_pre_parse_res(handle_, texts[0].data, texts[1].data, texts[2].data, texts[0].size,
                               texts[1].size, texts[2].size, length);
    }));
    if (report) report.drawn_lines = drawn_lines();
    return report;
  }

  /// The words of the functions that the script calls.
  std::vector<std::string> functions() const {
    return detail::read_list(text(&get_invoke_functions));
  }
  /// The ids of the fields that it reads and of the columns that it declares.
  std::vector<uint32_t> fields() const {
    return detail::read_ids(text(&get_parser_variable_fields));
  }
  /// What it draws, and the same as the library gives it, JSON.
  std::vector<Shape> shapes() const { return detail::read_shapes(shapes_json()); }
  std::string shapes_json() const { return text(&get_shapes); }

  // ---- Bars ----

  /// Takes new bars, and others in place of those with the same key. One call for many bars is
  /// quicker than many calls.
  void feed(const std::vector<Row>& rows) {
    std::string json;
    for (const Row& row : rows) {
      json += json.empty() ? "[{\"1\":" : ",{\"1\":";
      json += std::to_string(row.key);
      for (const Cell& cell : row.cells) {
        json += ",\"" + std::to_string(cell.column) + "\":";
        detail::write_number(json, cell.value);
      }
      json += '}';
    }
    if (!rows.empty()) feed_json(json + ']');
  }

  /// The same from an array of objects in JSON.
  void feed_json(std::string_view rows) {
    const detail::Text text(rows);
    set_row_data(handle_, text.data, text.size);
  }

  /// Sets one cell of a bar that is there.
  void set_cell(uint64_t key, uint32_t column, double value) {
    set_column_data(handle_, key, column, value);
  }

  /// Drops all bars, keeps the script.
  void clear() { clear_data(handle_); }

  // ---- Calculate ----

  /// Calculates from a row on. Notices and signals are for what happens now: history goes without.
  Answer calculate(uint32_t first_row, bool with_signals = false) {
    return detail::read_answer(answer_text([&](uint32_t* length) {
      return exec_parser_cal(handle_, first_row, with_signals ? 1 : 0, length);
    }));
  }

  // ---- Read ----

  uint32_t row_count() const { return get_row_num(handle_); }
  uint32_t column_count() const { return get_column_num(handle_); }

  std::optional<uint32_t> row_of(uint64_t key) const {
    const uint32_t row = get_current_row_index(handle_, key);
    return row == std::numeric_limits<uint32_t>::max() ? std::nullopt : std::optional(row);
  }

  /// The column of a line, by its name in capitals.
  std::optional<uint32_t> column_of(std::string_view name) const {
    const detail::Text text(name);
    const int32_t column = get_field_id_by_param_name(handle_, text.data, text.size);
    return column < 0 ? std::nullopt : std::optional(static_cast<uint32_t>(column));
  }

  /// A cell, a NaN for a null. Rows that can't be told in 31 bits are null.
  double value(uint32_t row, uint32_t column) const {
    return get_data_by_col_row(handle_, signed_row(row), column);
  }

  /// The same by a field; a negative one names an argument of a call.
  double field_value(uint32_t row, int32_t field) const {
    const detail::Entered entered(handlers_.get());
    return get_field_val_by_index(handle_, field, signed_row(row));
  }

  /// A column from a row on, to the last bit, a NaN for a null.
  std::vector<double> values(uint32_t column, uint32_t first_row = 0) const {
    std::vector<double> cells;
    const uint32_t end = row_count();
    if (first_row < end) cells.reserve(end - first_row);
    for (uint32_t row = first_row; row < end; ++row) cells.push_back(value(row, column));
    return cells;
  }

  /// The same of a line; nothing for an unknown name.
  std::vector<double> values(std::string_view name, uint32_t first_row = 0) const {
    const std::optional<uint32_t> column = column_of(name);
    return column ? values(*column, first_row) : std::vector<double>();
  }

  /// The last `count` cells up to a row as JSON, with six decimals.
  std::string values_json(uint32_t column, uint32_t last_row, int32_t count) const {
    uint32_t length = 0;
    char* const buffer = get_data_arr(handle_, column, last_row, count, &length);
    return detail::take(buffer, length);
  }

 private:
  template <typename Handler>
  bool set(Handler detail::Handlers::*slot, Handler handler) {
    if (handlers_ == nullptr) return false;
    (*handlers_).*slot = std::move(handler);
    return static_cast<bool>((*handlers_).*slot);
  }

  static int32_t signed_row(uint32_t row) {
    constexpr uint32_t last = std::numeric_limits<int32_t>::max();
    return row > last ? -1 : static_cast<int32_t>(row);
  }

  template <typename Call>
  std::string answer_text(const Call& call) {
    const detail::Entered entered(handlers_.get());
    uint32_t length = 0;
    char* const buffer = call(&length);
    return detail::take(buffer, length);
  }

  /// A record whose title is the name of its column draws a line; others have titles made for them.
  std::vector<Line> drawn_lines() const {
    std::vector<Line> lines;
    for (const Shape& shape : shapes()) {
      const bool is_line =
          shape.title_visible && shape.column && column_of(shape.title) == shape.column;
      if (is_line) lines.push_back(detail::line_of(shape));
    }
    return lines;
  }

  std::string text(char* (*call)(int64_t, uint32_t*)) const {
    uint32_t length = 0;
    char* const buffer = call(handle_, &length);
    return detail::take(buffer, length);
  }

  std::unique_ptr<detail::Handlers> handlers_;
  int64_t handle_ = 0;
};

}  // namespace quor

#endif
