#include "report.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "errors.h"

namespace quor_host {
namespace {

namespace dom = simdjson::dom;

template <typename Number>
std::optional<Number> leading_number(std::string_view text) {
  Number number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  return number;
}

/// What stands between two marks, up to the last place of the second.
std::string_view between(std::string_view text, std::string_view from, std::string_view to) {
  const size_t begin = text.find(from);
  if (begin == std::string_view::npos) return {};
  text.remove_prefix(begin + from.size());
  return text.substr(0, text.rfind(to));
}

/// Messages are not escaped: one with a quote in it leaves a text that is no JSON. The keys stand
/// in a fixed order, so that the failure can be read all the same.
Report parse_loosely(std::string_view text) {
  Report report;
  report.failure.code = leading_number<int64_t>(between(text, "\"ErrCode\":", "}")).value_or(-1);
  report.failure.message = between(text, "\"ExtraMsg\":\"", "\",\"IsNeedRequestTradeDay\"");
  const size_t line = text.rfind(':');
  if (line != std::string_view::npos) {
    report.failure.statement = leading_number<size_t>(text.substr(line + 1));
  }
  return report;
}

/// "600000|11|20003": source, field, column.
Reference parse_reference(std::string_view key) {
  const size_t column = key.rfind('|');
  const size_t field = column == std::string_view::npos ? column : key.rfind('|', column - 1);
  if (field == std::string_view::npos) return {std::string(key), 0, 0};
  return {std::string(key.substr(0, field)),
          leading_number<uint32_t>(key.substr(field + 1)).value_or(0),
          leading_number<uint32_t>(key.substr(column + 1)).value_or(0)};
}

std::vector<Reference> parse_references(dom::array keys) {
  std::vector<Reference> references;
  for (const dom::element key : keys) references.push_back(parse_reference(key.get_string()));
  return references;
}

bool is_true(dom::element flag) { return std::string_view(flag) == "true"; }

Report read_report(dom::element root) {
  Report report;
  report.failure.code = root["ErrCode"].get_int64();
  report.failure.message = std::string_view(root["ExtraMsg"]);
  report.failure.statement = root["ErrLine"].get_uint64();
  report.look_back = root["MaxPeriodCount"].get_int64();
  for (const dom::element id : dom::array(root["ExtraKLineFieldList"])) {
    report.fields.push_back(static_cast<uint32_t>(int64_t{id}));
  }
  std::ranges::sort(report.fields);
  report.securities = parse_references(root["CrossSecurityList"]);
  report.periods = parse_references(root["CrossPeriodList"]);
  report.quotes = parse_references(root["RealtimeFieldList"]);
  report.needs_market_constants = is_true(root["IsNeedRequestExtraData"]);
  report.needs_calendar = is_true(root["IsNeedRequestTradeDay"]);
  report.has_notices = is_true(root["IsContainsNoticeFunction"]);
  return report;
}

}  // namespace

Report parse_report(const std::string& json) {
  dom::parser parser;
  dom::element root;
  if (parser.parse(json).get(root) != simdjson::SUCCESS) return parse_loosely(json);
  return read_report(root);
}

Failure parse_answer(const std::string& json) {
  Failure failure;
  failure.code = leading_number<int64_t>(between(json, "\"ErrCode\":", "}")).value_or(-1);
  failure.message = between(json, "\"ExtraMsg\":\"", "\",\"ErrLine\":\"");
  const size_t mark = json.rfind(":\"");
  if (mark == std::string::npos) return failure;
  const std::string_view line = between(std::string_view(json).substr(mark), ":\"", "\"");
  failure.statement = leading_number<size_t>(line);
  // The text of an exception has no line behind it and stands in its place.
  if (failure.message.empty() && !leading_number<int64_t>(line)) failure.message = line;
  return failure;
}

std::vector<std::string> parse_texts(const std::string& json) {
  dom::parser parser;
  dom::array list;
  std::vector<std::string> texts;
  if (parser.parse(json).get(list) != simdjson::SUCCESS) return texts;
  for (const dom::element text : list) texts.emplace_back(std::string_view(text));
  std::ranges::sort(texts);
  return texts;
}

std::vector<std::string> parse_texts_under(const std::string& json, std::string_view key) {
  dom::parser parser;
  dom::array list;
  std::vector<std::string> texts;
  if (parser.parse(json).get(list) != simdjson::SUCCESS) return texts;
  for (const dom::element record : list) texts.emplace_back(std::string_view(record[key]));
  return texts;
}

bool is_json(const std::string& text) {
  dom::parser parser;
  return parser.parse(text).error() == simdjson::SUCCESS;
}

}  // namespace quor_host
