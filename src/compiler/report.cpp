#include "compiler/report.h"

#include <utility>
#include <vector>

#include "core/status.h"
#include "tables/field_table.h"
#include "text/json.h"
#include "text/numbers.h"

namespace quor {
namespace {

struct PreParserResp {
  Status status = Status::ok;
  std::string_view message;
  int32_t error_line = 0;
  std::vector<std::string> cross_security_list;
  std::vector<std::string> cross_period_list;
  std::vector<int32_t> extra_field_list;
  std::vector<std::string> realtime_field_list;
  int32_t max_period_count = 0;
  // Texts, not booleans: they stay empty after a failure.
  std::string_view needs_extra_data;
  std::string_view contains_notice;
  std::string_view needs_trade_day;
};

template <typename List, typename Append>
void append_list(std::string& out, std::string_view key, const List& list, const Append& append) {
  out += '"';
  out += key;
  out += "\":[";
  bool first = true;
  for (const auto& entry : list) {
    if (!std::exchange(first, false)) out += ',';
    append(entry);
  }
  out += "],";
}

std::string write(const PreParserResp& report) {
  std::string out = "{";
  const auto append_text = [&out](const std::string& text) { out += '"' + text + '"'; };
  append_json_integer(out, "MaxPeriodCount", report.max_period_count, true);
  append_list(out, "CrossSecurityList", report.cross_security_list, append_text);
  append_list(out, "CrossPeriodList", report.cross_period_list, append_text);
  append_list(out, "ExtraKLineFieldList", report.extra_field_list,
              [&out](int32_t id) { append_integer(out, id); });
  append_list(out, "RealtimeFieldList", report.realtime_field_list, append_text);
  append_json_integer(out, "ErrCode", error_code(report.status), true);
  append_json_text(out, "IsNeedRequestExtraData", report.needs_extra_data, true);
  append_json_text(out, "IsContainsNoticeFunction", report.contains_notice, true);
  append_json_text(out, "ExtraMsg", report.message, true);
  append_json_text(out, "IsNeedRequestTradeDay", report.needs_trade_day, true);
  append_json_integer(out, "ErrLine", report.error_line, false);
  out += '}';
  return out;
}

std::vector<std::string> values_of(const std::map<int32_t, std::string>& references) {
  std::vector<std::string> keys;
  for (const auto& [column_id, key] : references) keys.push_back(key);
  return keys;
}

std::string_view flag_text(bool flag) { return flag ? "true" : "false"; }

}  // namespace

std::string success_report(const DataPoolCenter& pool, std::string_view error) {
  const ErrorParts parts = split_error(error);
  PreParserResp report;
  report.message = parts.message;
  report.error_line = leading_integer(parts.line);
  report.needs_trade_day = flag_text(pool.script.needs_trade_day);
  report.max_period_count = pool.script.max_period_count;
  report.cross_period_list = values_of(pool.script.cross_period_map);
  report.cross_security_list = values_of(pool.script.cross_security_map);
  report.realtime_field_list = values_of(pool.script.realtime_map);
  report.needs_extra_data = flag_text(pool.script.needs_extra_data);
  report.contains_notice = flag_text(pool.script.contains_notice);
  report.extra_field_list.assign(pool.script.extra_field_set.begin(),
                                 pool.script.extra_field_set.end());
  if (report.extra_field_list.empty()) report.extra_field_list.push_back(time_column_id);
  return write(report);
}

std::string failure_report(Status status, std::string_view message, int line) {
  PreParserResp report;
  report.status = status;
  report.message = message;
  report.error_line = line;
  return write(report);
}

std::string variable_fields_text(
    const DataPoolCenter& pool,
    const std::map<std::string, uint32_t, std::less<>>& declared_names) {
  std::vector<int32_t> ids(pool.script.extra_field_set.begin(), pool.script.extra_field_set.end());
  for (const auto& [name, column_id] : declared_names) {
    if (!reserved_field_id(name)) ids.push_back(static_cast<int32_t>(column_id));
  }
  if (ids.empty()) ids.push_back(time_column_id);
  std::string text = "[";
  for (const int32_t id : ids) {
    if (text.size() > 1) text += ',';
    append_integer(text, id);
  }
  text += ']';
  return text;
}

}  // namespace quor
