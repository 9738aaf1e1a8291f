// quor_values.hpp - what the parser says, as values: reports, lines, drawing records. Part of
// quor_parser.hpp, which includes it.
//
// The texts of the library are JSON in a fixed form, in which texts of the script aren't escaped.
// The reader here takes a text to end where the next key begins, so that quotes in it do no harm.
#ifndef QUOR_VALUES_HPP
#define QUOR_VALUES_HPP

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace quor {

/// The answer of a run, by value: true if it went well.
struct Answer {
  int code = -1;        ///< 0 for success, -1 if the library gave no answer
  std::string message;  ///< what the error is about, mostly the word at fault; may be empty
  int statement = -1;   ///< at which statement, 0 the first one; -1 if none is told
  std::string text;     ///< the whole as the library gives it, JSON

  explicit operator bool() const { return code == 0; }
};

/// A drawing record. Its keys are those of the draw list; the ones that all records have are
/// members, the others are asked for by name.
struct Shape {
  std::string name;                ///< "PolylineShape" and the like
  std::string title;               ///< of a line its name
  bool title_visible = false;      ///< title and value are meant for the legend
  int digits = -1;                 ///< decimals of the value; -1 leaves them to the host
  int layer = -1;                  ///< greater ones in front
  std::optional<uint32_t> column;  ///< the first column of values
  std::optional<uint32_t> marks;   ///< the first column of marks: 1 where the record shows
  std::vector<std::pair<std::string, std::string>> texts;
  std::vector<std::pair<std::string, double>> numbers;

  /// The text of a key, such as "LineColor"; empty for a key that the record hasn't.
  std::string_view text(std::string_view key) const {
    for (const auto& [name_of, value] : texts) {
      if (name_of == key) return value;
    }
    return {};
  }
  /// The number of a key, such as "LineWidth".
  double number(std::string_view key, double otherwise = -1) const {
    for (const auto& [name_of, value] : numbers) {
      if (name_of == key) return value;
    }
    return otherwise;
  }
  /// The column that a key names, such as "Field2Id"; nothing if there is none.
  std::optional<uint32_t> column_of(std::string_view key) const {
    const double id = number(key);
    const bool is_column = id >= 0 && id <= std::numeric_limits<uint32_t>::max();
    return is_column ? std::optional(static_cast<uint32_t>(id)) : std::nullopt;
  }
};

/// A line that a script draws, by its drawing record.
struct Line {
  std::string name;
  uint32_t column = 0;
  std::optional<uint32_t> marks;  ///< the column of marks: 1 where it shows
  std::string form;               ///< "Polyline", "Line" (sticks), "TextShape" (dots) and the like
  std::string colour;             ///< a key, such as "TempBrushKey.#CC3030"
  double width = -1;              ///< -1 leaves it to the host
  std::string dash;               ///< "SOLIDLINE" and the like; empty for what is no line
  int digits = -1;                ///< decimals of the value; -1 leaves them to the host
};

/// Data of another security or of a longer period, or a figure of a quote, that the host fills a
/// column with.
struct Reference {
  enum class Kind { security, period, quote };
  Kind kind = Kind::security;
  std::string source;   ///< the code of the security, or the period, such as "MIN15"
  std::string field;    ///< the id of a bar field, or the figure of the quote
  uint32_t column = 0;  ///< where to put it
};

/// The report of a compile: true if it went well, else all but the answer is empty.
struct Report : Answer {
  int look_back = 0;             ///< the longest period that the script names
  std::vector<uint32_t> fields;  ///< the bar fields that it reads
  std::vector<Reference> references;
  bool needs_market_constants = false;
  bool needs_calendar = false;
  bool has_notices = false;

  /// The lines that it draws, in the order of its records.
  const std::vector<Line>& lines() const { return drawn_lines; }

  std::vector<Line> drawn_lines;
};

namespace detail {

inline int number_at(std::string_view text, size_t place, int otherwise) {
  int number = otherwise;
  std::from_chars(text.data() + place, text.data() + text.size(), number);
  return number;
}

/// A whole text as a number; nothing for any other text.
template <typename Number>
std::optional<Number> number_of(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_whole = error == std::errc() && end == text.data() + text.size();
  return is_whole ? std::optional(number) : std::nullopt;
}

inline constexpr int named_signal = 8;  ///< codes whose place isn't known
inline constexpr int exception = 4000;

/// Takes the value of ErrLine: the number of a statement, in a run's answer in quotes, or the text
/// of an exception in the place of both. A report has 0 where an error has no place.
inline void take_line(Answer& answer, std::string_view value) {
  const bool is_text = value.substr(0, 1) == "\"";
  if (!is_text && (answer.code == named_signal || answer.code == exception)) return;
  if (is_text) value.remove_prefix(1);
  value = value.substr(0, value.rfind(is_text ? '"' : '}'));
  if (const auto statement = number_of<int>(value)) {
    answer.statement = *statement;
  } else if (answer.message.empty()) {
    answer.message = value;
  }
}

/// Reads code, message and statement. Texts aren't escaped, so the message ends at the last place
/// where the key behind it can stand.
inline Answer read_answer(std::string text) {
  constexpr std::string_view code = "\"ErrCode\":";
  constexpr std::string_view message = "\"ExtraMsg\":\"";
  constexpr std::string_view statement = "\"ErrLine\":";
  Answer answer;
  const size_t code_at = text.find(code);
  const size_t message_at = text.find(message, code_at);
  const size_t statement_at = text.rfind(statement);
  if (message_at != std::string::npos && statement_at != std::string::npos) {
    answer.code = number_at(text, code_at + code.size(), -1);
    const size_t begin = message_at + message.size();
    size_t end = text.rfind("\",\"IsNeedRequestTradeDay\":");
    if (end == std::string::npos) end = text.rfind("\",\"ErrLine\":");
    answer.message = text.substr(begin, end - begin);
    if (answer.code != 0)
      take_line(answer, std::string_view(text).substr(statement_at + statement.size()));
  }
  answer.text = std::move(text);
  return answer;
}

/// The items of an array of texts or of numbers, without their quotes. An item holds none.
inline std::vector<std::string> read_list(std::string_view text) {
  std::vector<std::string> items;
  const size_t end = text.find(']');
  if (text.empty() || text[0] != '[' || end == std::string_view::npos) return items;
  text = text.substr(1, end - 1);
  while (!text.empty()) {
    const size_t comma = text.find(',');
    std::string_view item = text.substr(0, comma);
    if (item.size() >= 2 && item.front() == '"') item = item.substr(1, item.size() - 2);
    items.emplace_back(item);
    text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  }
  return items;
}

inline std::vector<uint32_t> read_ids(std::string_view text) {
  std::vector<uint32_t> ids;
  for (const std::string& item : read_list(text)) {
    if (const auto id = number_of<uint32_t>(item)) ids.push_back(*id);
  }
  return ids;
}

/// What stands behind the first `"key":` of a text; empty where there is none.
inline std::string_view value_of(std::string_view text, std::string_view key) {
  const std::string mark = '"' + std::string(key) + "\":";
  const size_t found = text.find(mark);
  return found == std::string_view::npos ? std::string_view() : text.substr(found + mark.size());
}

/// "600000|11|20005": source, field, column.
inline void read_references(Report& report, std::string_view key, Reference::Kind kind) {
  for (const std::string& item : read_list(value_of(report.text, key))) {
    const size_t second = item.rfind('|');
    const size_t first = item.rfind('|', second == 0 ? 0 : second - 1);
    if (second == std::string::npos || first == std::string::npos || first == second) continue;
    const auto column = number_of<uint32_t>(std::string_view(item).substr(second + 1));
    if (!column) continue;
    report.references.push_back(
        {kind, item.substr(0, first), item.substr(first + 1, second - first - 1), *column});
  }
}

inline Report read_report(std::string text) {
  Report report;
  static_cast<Answer&>(report) = read_answer(std::move(text));
  if (!report) return report;
  const auto is_set = [&report](std::string_view flag) {
    return value_of(report.text, flag).substr(0, 6) == "\"true\"";
  };
  const std::string_view look_back = value_of(report.text, "MaxPeriodCount");
  report.look_back = number_at(look_back, 0, 0);
  report.fields = read_ids(value_of(report.text, "ExtraKLineFieldList"));
  read_references(report, "CrossSecurityList", Reference::Kind::security);
  read_references(report, "CrossPeriodList", Reference::Kind::period);
  read_references(report, "RealtimeFieldList", Reference::Kind::quote);
  report.needs_market_constants = is_set("IsNeedRequestExtraData");
  report.needs_calendar = is_set("IsNeedRequestTradeDay");
  report.has_notices = is_set("IsContainsNoticeFunction");
  return report;
}

/// Reads a draw list from its start on.
class ShapeReader {
 public:
  explicit ShapeReader(std::string_view text) : text_(text) {}

  std::vector<Shape> run() {
    std::vector<Shape> shapes;
    if (!take("[")) return shapes;
    while (take("{")) {
      Shape& shape = shapes.emplace_back();
      while (take_pair(shape) && take(",")) {
      }
      if (!take("}")) return shapes;
      take(",");
    }
    return shapes;
  }

 private:
  bool take(std::string_view sign) {
    if (at_ > text_.size() || text_.substr(at_, sign.size()) != sign) return false;
    at_ += sign.size();
    return true;
  }

  bool take_pair(Shape& shape) {
    const size_t end = at_ < text_.size() ? end_of_key(at_) : 0;
    if (end == 0) return false;
    const std::string_view key = text_.substr(at_ + 1, end - at_ - 3);
    at_ = end;
    if (take("\"")) {
      const size_t close = closing_quote();
      put(shape, key, text_.substr(at_, close - at_));
      at_ = close + 1;
      return true;
    }
    const size_t stop = text_.find_first_of(",}", at_);
    if (stop == std::string_view::npos) return false;
    put(shape, key, number_of<double>(text_.substr(at_, stop - at_)).value_or(-1));
    at_ = stop;
    return true;
  }

  /// Behind the `"key":` that begins at a place; 0 if none does.
  size_t end_of_key(size_t at) const {
    if (text_.substr(at, 1) != "\"") return 0;
    const size_t end = text_.find_first_not_of(
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_", at + 1);
    if (end == std::string_view::npos || end == at + 1) return 0;
    return text_.substr(end, 2) == "\":" ? end + 2 : 0;
  }

  /// The next quote behind which a key, the next record or the end comes.
  size_t closing_quote() const {
    for (size_t quote = text_.find('"', at_); quote != std::string_view::npos;
         quote = text_.find('"', quote + 1)) {
      const std::string_view behind = text_.substr(quote + 1);
      if (behind.substr(0, 1) == "," && end_of_key(quote + 2) != 0) return quote;
      if (behind == "}]" || (behind.substr(0, 3) == "},{" && end_of_key(quote + 4) != 0))
        return quote;
    }
    return text_.size();
  }

  static void put(Shape& shape, std::string_view key, std::string_view text) {
    if (key == "ShapeName") shape.name = text;
    if (key == "Field1Text") shape.title = text;
    shape.texts.emplace_back(key, text);
  }

  static void put(Shape& shape, std::string_view key, double number) {
    shape.numbers.emplace_back(key, number);
    if (key == "TitleVisible") shape.title_visible = number != 0;
    if (key == "Digit") shape.digits = static_cast<int>(number);
    if (key == "ZIndex") shape.layer = static_cast<int>(number);
    if (key == "Field1Id") shape.column = shape.column_of(key);
    if (key == "Field1VisibleId") shape.marks = shape.column_of(key);
  }

  std::string_view text_;
  size_t at_ = 0;
};

inline std::vector<Shape> read_shapes(std::string_view text) { return ShapeReader(text).run(); }

/// The line that a record with a visible title draws.
inline Line line_of(const Shape& shape) {
  Line line{shape.title,
            shape.column.value_or(0),
            shape.marks,
            std::string(shape.text("Style")),
            {},
            shape.number("LineWidth"),
            std::string(shape.text("LineShapeStyle")),
            shape.digits};
  for (const std::string_view key : {"LineColor", "UpperShadowColor", "TextColor"}) {
    if (line.colour.empty()) line.colour = shape.text(key);
  }
  return line;
}

}  // namespace detail
}  // namespace quor

#endif
