#include "calls.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <sstream>

#include "calculation.h"
#include "colours.h"
#include "editing.h"
#include "host/output/output.h"
#include "host/studio/refusal.h"
#include "library.h"
#include "player.h"
#include "shown.h"
#include "why.h"
#include "window.h"

namespace quor_host {
namespace {

constexpr size_t all = std::numeric_limits<size_t>::max();

/// A row, or as many as there are.
size_t row_of(const Json& call, const char* key, size_t absent) {
  return count_of(call, key, absent, 0, most_rows);
}

std::string library(Desk& /*desk*/, const Json& /*call*/, std::string_view /*body*/) {
  return json_text({{"words", words_json()},
                    {"periods", periods_json()},
                    {"theme", themes_json()},
                    {"measures", measures_json()},
                    {"limits", {{"script", longest_script}}}});
}

std::string bars(Desk& desk, const Json& call, std::string_view body) {
  return json_text(
      take_bars(desk, read_security(text_of(call, "name"), body, text_of(call, "period", ""))));
}

std::string more(Desk& desk, const Json& call, std::string_view body) {
  return json_text(take_more(desk, read_security(text_of(call, "name"), body, "")));
}

std::string subject(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(take_subject(desk, subject_of(call)));
}

std::string forming(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(take_forming(desk, flag_of(call, "on")));
}

std::string other(Desk& desk, const Json& call, std::string_view body) {
  return json_text(take_other(desk, read_security(text_of(call, "name"), body, "")));
}

/// The column of the overlay, and how many of the bars it has a value for; null without a body,
/// which takes it away.
std::string overlay(Desk& desk, const Json& call, std::string_view body) {
  std::optional<Security> security;
  if (!body.empty()) security = read_security(text_of(call, "name"), body, "");
  take_overlay(desk, std::move(security));
  if (!desk.overlay) return json_text(Json());
  const auto count =
      std::ranges::count_if(desk.overlay->values, [](double value) { return !std::isnan(value); });
  return json_text({{"column", overlay_column}, {"bars", count}});
}

std::string script(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(take_script(desk, task_of(call)));
}

/// Bytes, as `window_bytes` tells.
std::string view(Desk& desk, const Json& call, std::string_view /*body*/) {
  return window_bytes(desk, {row_of(call, "from", 0), row_of(call, "to", all),
                             count_of(call, "points", 2000, 16, 20000)});
}

std::string records(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(shown_json(desk, row_of(call, "from", 0), row_of(call, "to", all)));
}

std::string values(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(values_json(desk, row_of(call, "row", all)));
}

std::string why(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(why_json(desk, row_of(call, "line", all), row_of(call, "row", all)));
}

/// The row of a key, or the last one before it.
std::string row(Desk& desk, const Json& call, std::string_view /*body*/) {
  const auto& keys = desk.bars().keys;
  const auto key = static_cast<int64_t>(number_of(call, "key").value_or(0.0));
  const auto behind = std::ranges::upper_bound(keys, key);
  if (behind == keys.begin()) throw Refusal(404, "there is no such bar");
  return json_text({{"row", behind - keys.begin() - 1}});
}

std::string events(Desk& desk, const Json& call, std::string_view /*body*/) {
  const size_t since = row_of(call, "since", 0);
  const size_t limit = count_of(call, "limit", 1000, 0, 10000);
  Json list = Json::array();
  const size_t count = desk.run ? desk.run->events().size() : 0;
  for (size_t i = since; i < count && list.size() < limit; ++i) {
    list.push_back(event_json(desk, desk.run->events()[i]));
  }
  return json_text({{"count", count}, {"events", std::move(list)}});
}

std::string play(Desk& desk, const Json& call, std::string_view /*body*/) {
  return json_text(
      start_play(desk, row_of(call, "row", 0), count_of(call, "ticks", 1, 1, most_ticks)));
}

std::string step(Desk& desk, const Json& call, std::string_view /*body*/) {
  const size_t bar_count = count_of(call, "bars", 0, 0, most_steps);
  const size_t ticks = count_of(call, "ticks", bar_count == 0 ? 1 : 0, 0, most_steps);
  return json_text(bar_count > 0 ? step_bars(desk, bar_count) : step_ticks(desk, ticks));
}

std::string stop(Desk& desk, const Json& /*call*/, std::string_view /*body*/) {
  return json_text(stop_play(desk));
}

/// Comma-separated values, those of `quor run --csv`.
std::string csv(Desk& desk, const Json& /*call*/, std::string_view /*body*/) {
  if (!desk.run || desk.row_count() == 0) throw Refusal(409, "there are no lines to export");
  Table table{desk.bars().keys, {}};
  for (const auto& line : drawn_lines(desk.run->script(), false)) {
    table.lines.push_back({line.name, desk.run->column(line.column)});
  }
  std::ostringstream out;
  print_csv(out, table);
  return std::move(out).str();
}

/// A question of an editor, which the desk has no part in.
template <Json (*answer)(const Json& call)>
std::string edit(Desk& /*desk*/, const Json& call, std::string_view /*body*/) {
  return json_text(answer(call));
}

struct Row {
  const char* name;
  std::string (*answer)(Desk& desk, const Json& call, std::string_view body);
};
constexpr Row rows[] = {
    {"library", library},
    {"bars", bars},
    {"more", more},
    {"script", script},
    {"subject", subject},
    {"forming", forming},
    {"other", other},
    {"overlay", overlay},
    {"view", view},
    {"records", records},
    {"values", values},
    {"why", why},
    {"row", row},
    {"events", events},
    {"play", play},
    {"step", step},
    {"stop", stop},
    {"csv", csv},
    {"complete", edit<completions>},
    {"hover", edit<hover>},
    {"hint", edit<call_hint>},
    {"help", edit<word_help>},
    {"name", edit<name_at>},
    {"rename", edit<renamed>},
    {"format", edit<formatted>},
    {"colours", edit<colours>},
    {"colour", edit<colour_texts>},
    {"fixes", edit<fixes>},
};

}  // namespace

std::string answer_to(Desk& desk, const Json& call, std::string_view body) {
  const auto* const row = std::ranges::find(rows, text_of(call, "call"), &Row::name);
  if (row == std::end(rows)) throw Refusal(404, "there is no such call");
  return row->answer(desk, call, body);
}

}  // namespace quor_host
