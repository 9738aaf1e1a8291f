#include "failure.h"

#include <charconv>

#include "letters.h"

namespace quor_advice {
namespace {

template <typename Number>
std::optional<Number> leading_number(std::string_view text) {
  Number number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  return number;
}

std::string_view behind(std::string_view text, size_t mark, std::string_view key) {
  return mark == absent ? std::string_view() : text.substr(mark + key.size());
}

}  // namespace

Failure read_failure(std::string_view text) {
  constexpr std::string_view code_key = "\"ErrCode\":";
  constexpr std::string_view message_key = "\"ExtraMsg\":\"";
  constexpr std::string_view line_key = "\"ErrLine\":";
  Failure failure;
  failure.code = leading_number<int64_t>(behind(text, text.find(code_key), code_key)).value_or(0);
  if (failure.code == 0) return failure;
  const std::string_view message = behind(text, text.find(message_key), message_key);
  const size_t flag = message.rfind("\",\"IsNeedRequestTradeDay\"");
  failure.message = message.substr(0, flag == absent ? message.rfind("\",\"ErrLine\"") : flag);
  std::string_view line = behind(text, text.rfind(line_key), line_key);
  const bool is_text = line.starts_with('"');
  if (is_text) line = line.substr(1, line.rfind('"') - 1);
  failure.statement = leading_number<size_t>(line);
  // A failed calculation without a statement has its text in the place of the number.
  if (is_text && !failure.statement && failure.message.empty()) failure.message = line;
  // Of errors in one another each has its own line, and the number is 0.
  constexpr std::string_view mark = "ErrLine.";
  const size_t inner = failure.message.find(mark);
  if (inner != absent) {
    failure.statement = leading_number<size_t>(behind(failure.message, inner, mark));
    failure.message.resize(inner);
  }
  // No place belongs to an exception and to a signal with a name; the number is 0 all the same.
  if (failure.code == 8 || failure.code == 4000) failure.statement.reset();
  return failure;
}

bool is_flag_set(std::string_view report, std::string_view flag) {
  return report.find('"' + std::string(flag) + "\":\"true\"") != absent;
}

}  // namespace quor_advice
