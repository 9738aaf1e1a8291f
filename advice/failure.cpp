#include "failure.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "letters.h"

namespace quor_advice {
namespace {

struct CodeWords {
  int64_t code;
  std::string_view words;
};

constexpr CodeWords code_table[] = {
    {1, "nothing defines an argument"},
    {2, "nothing defines a word"},
    {3, "a form stands without what it belongs to"},
    {4, "an operand is missing"},
    {5, "a quote is left open"},
    {6, "parentheses are missing or don't match"},
    {7, "wrong number of arguments"},
    {8, "a notice or trade signal can't have a name"},
    {9, "a reference in double quotes must stand right behind ':' or '='"},
    {10, "a reference in double quotes lacks its '$'"},
    {11, "a reference in double quotes lacks its code"},
    {12, "a function word can't be a name"},
    {13, "a name can't hold '~'"},
    {14, "the statement has no ';' at its end"},
    {15, "a branch can't stand behind a comma"},
    {2000, "a variable is gone"},
    {2001, "a text or style stands alone in parentheses"},
    {2002, "unknown field of a quote"},
    {2003, "unknown number of a sign"},
    {2004, "the name is taken"},
    {2006, "ZIG can't be called"},
    {2007, "unknown unit of a period"},
    {2008, "the unit doesn't allow this multiple"},
    {2009, "the period isn't longer than that of the bars"},
    {2010, "unknown field of a reference"},
    {2011, "a short form lacks its digit or text"},
    {2012, "a constant or a short form is out of bounds"},
    {2013, "unknown colour"},
    {2014, "a second drawing or signal in one statement"},
    {2015, "a notice can't stand in a script that looks ahead"},
    {2016, "a trade signal can't stand in a script that looks ahead"},
    {4000, "the calculation failed"},
};

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
  // No place belongs to an exception and to a signal with a name; the number is 0 all the same.
  if (failure.code == 8 || failure.code == 4000) failure.statement.reset();
  return failure;
}

bool is_flag_set(std::string_view report, std::string_view flag) {
  return report.find('"' + std::string(flag) + "\":\"true\"") != absent;
}

std::string_view words_of_code(int64_t code) {
  const auto* const row = std::ranges::find(code_table, code, &CodeWords::code);
  return row == std::end(code_table) ? "unknown error" : row->words;
}

}  // namespace quor_advice
