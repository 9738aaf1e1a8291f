#include "engine/script_texts.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "interface/script_parser.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace quor::engine {
namespace {

/// What stands between two marks, up to the last place of the second.
std::string_view between(std::string_view text, std::string_view from, std::string_view to) {
  const size_t begin = text.find(from);
  if (begin == std::string_view::npos) return {};
  text.remove_prefix(begin + from.size());
  return text.substr(0, text.rfind(to));
}

int32_t place_of(std::string_view digits) {
  const bool known = !digits.empty() && digits.front() >= '0' && digits.front() <= '9';
  return known ? leading_integer(digits) : -1;
}

void append_number(std::string& out, double value) {
  char digits[32];
  // An integer beyond 64 bits is no JSON number to some readers, one with an exponent is.
  const auto form =
      std::abs(value) < 1e15 ? std::chars_format::general : std::chars_format::scientific;
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value, form);
  out.append(std::begin(digits), end.ptr);
}

bool can_be_name(std::string_view name) {
  return !name.empty() && std::ranges::none_of(name, [](char c) {
    return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
  });
}

}  // namespace

// The texts don't escape what they quote, so that no JSON reader serves for all of them; their keys
// stand in a fixed order.

Failure failure_of_report(std::string_view report) {
  constexpr std::string_view opening =
      R"({"MaxPeriodCount":0,"CrossSecurityList":[],"CrossPeriodList":[],)"
      R"("ExtraKLineFieldList":[],"RealtimeFieldList":[],"ErrCode":)";
  // A success lists one field at least.
  if (!report.starts_with(opening)) return {};
  Failure failure;
  failure.code = leading_integer(report.substr(opening.size()));
  failure.text = between(report, R"("ExtraMsg":")", R"(","IsNeedRequestTradeDay":")");
  failure.statement = place_of(report.substr(report.rfind(':') + 1));
  return failure;
}

Failure failure_of_answer(std::string_view answer) {
  if (answer == sound_answer) return {};
  Failure failure;
  failure.code = leading_integer(answer.substr(answer.find(':') + 1));
  failure.text = between(answer, R"("ExtraMsg":")", R"(","ErrLine":")");
  const std::string_view line = between(answer, R"(","ErrLine":")", "\"}");
  failure.statement = place_of(line);
  // An exception leaves its text where else the place stands.
  if (failure.statement == -1 && failure.text.empty()) failure.text = line;
  return failure;
}

std::string parameters_json(std::span<const std::pair<std::string, double>> parameters) {
  std::string json = "[";
  for (const auto& [name, value] : parameters) {
    if (!can_be_name(name)) throw Misuse("'" + name + "' can't be the name of a parameter");
    if (!std::isfinite(value)) throw Misuse("the parameter " + name + " is no number");
    json += (json.size() > 1 ? R"(,{"PARAM_NAME":")" : R"({"PARAM_NAME":")") + name;
    json += R"(","DEFAULT":)";
    append_number(json, value);
    json += '}';
  }
  return json + ']';
}

std::string with_condition(std::string_view source, std::string_view condition) {
  for (const std::string_view mark :
       {";", "'", "\"", "{", "}", "//", "/*", "*/", ":", "\n", "\r"}) {
    if (contains(condition, mark)) {
      throw Misuse("the condition '" + std::string(condition) + "' isn't one plain expression");
    }
  }
  std::string whole(source);
  whole += '\n';
  whole += condition_name;
  whole += ":=";
  whole += condition;
  whole += ';';
  return whole;
}

}  // namespace quor::engine
