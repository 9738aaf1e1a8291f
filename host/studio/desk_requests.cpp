#include "desk_requests.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>

#include "../output.h"
#include "../text.h"
#include "calculation.h"
#include "player.h"
#include "searches.h"
#include "shown.h"
#include "window.h"

namespace quor_host {
namespace {

constexpr size_t all = std::numeric_limits<size_t>::max();

Answer bars(Desk& desk, const Securities& securities, const Request& request) {
  if (request.type == "text/csv") {
    const std::string name = request.text("name").empty() ? "bars" : request.text("name");
    auto security = read_security(name, request.body, request.text("period"));
    const Turn turn(desk);
    return json_answer(take_bars(desk, std::move(security)));
  }
  const Json json = request.json();
  const std::string name = text_of(json, "security");
  auto security =
      read_security(name, read_file(securities.path_of(name)), text_of(json, "period", ""));
  const Turn turn(desk);
  return json_answer(take_bars(desk, std::move(security)));
}

Answer script(Desk& desk, const Securities& /*securities*/, const Request& request) {
  Task task = task_of(request.json());
  const Turn turn(desk);
  return json_answer(take_script(desk, std::move(task)));
}

std::vector<uint32_t> columns_of(const Request& request) {
  constexpr size_t most = 200;
  std::vector<uint32_t> columns;
  std::istringstream list(request.text("columns"));
  for (std::string id; std::getline(list, id, ',');) {
    const auto number = to_number(id);
    if (!number || *number < 0 || *number > 1e9) throw Refusal(400, "\"columns\" must be numbers");
    columns.push_back(static_cast<uint32_t>(*number));
  }
  if (columns.size() > most) throw Refusal(400, "too many columns at once");
  return columns;
}

Answer view(Desk& desk, const Securities& /*securities*/, const Request& request) {
  Window window{request.number("from", 0), request.number("to", all),
                std::clamp<size_t>(request.number("points", 2000), 16, 20000), columns_of(request)};
  const Turn turn(desk);
  return {200, "application/octet-stream", window_bytes(desk, std::move(window))};
}

Answer records(Desk& desk, const Securities& /*securities*/, const Request& request) {
  const size_t from = request.number("from", 0);
  const size_t to = request.number("to", all);
  const Turn turn(desk);
  return json_answer(shown_json(desk, from, to));
}

Answer values(Desk& desk, const Securities& /*securities*/, const Request& request) {
  const size_t row = request.number("row", all);
  const Turn turn(desk);
  return json_answer(values_json(desk, row));
}

Answer events(Desk& desk, const Securities& /*securities*/, const Request& request) {
  const size_t since = request.number("since", 0);
  const size_t limit = std::min<size_t>(request.number("limit", 1000), 10000);
  const Turn turn(desk);
  Json list = Json::array();
  const size_t count = desk.run ? desk.run->events().size() : 0;
  for (size_t i = since; i < count && list.size() < limit; ++i) {
    list.push_back(event_json(desk, desk.run->events()[i]));
  }
  return json_answer({{"revision", desk.revision}, {"count", count}, {"events", std::move(list)}});
}

Answer play(Desk& desk, const Securities& /*securities*/, const Request& request) {
  const Json json = request.json();
  const size_t row = count_of(json, "row", 0, 0, most_rows);
  const size_t ticks = count_of(json, "ticks", 1, 1, most_ticks);
  const Turn turn(desk);
  return json_answer(start_play(desk, row, ticks));
}

Answer step(Desk& desk, const Securities& /*securities*/, const Request& request) {
  const Json json = request.json();
  const size_t bar_count = count_of(json, "bars", 0, 0, most_steps);
  const size_t ticks = count_of(json, "ticks", bar_count == 0 ? 1 : 0, 0, most_steps);
  const Turn turn(desk);
  return json_answer(bar_count > 0 ? step_bars(desk, bar_count) : step_ticks(desk, ticks));
}

Answer stop(Desk& desk, const Securities& /*securities*/, const Request& /*request*/) {
  const Turn turn(desk);
  return json_answer(stop_play(desk));
}

Answer scan(Desk& desk, const Securities& securities, const Request& request) {
  return json_answer(start_scan(desk, securities, request.json()), 202);
}

Answer scanned(Desk& desk, const Securities& /*securities*/, const Request& request) {
  return json_answer(scan_json(desk, request.number("since", 0)));
}

Answer cancel(Desk& desk, const Securities& /*securities*/, const Request& /*request*/) {
  return json_answer(cancel_scan(desk));
}

Answer export_csv(Desk& desk, const Securities& /*securities*/, const Request& /*request*/) {
  const Turn turn(desk);
  if (!desk.run || desk.row_count() == 0) throw Refusal(409, "there are no lines to export");
  Table table;
  table.keys = desk.bars().keys;
  for (const auto& line : desk.run->script().lines()) {
    table.lines.push_back({line.name, desk.run->column(line.column)});
  }
  std::ostringstream out;
  print_csv(out, table);
  return {200,
          "text/csv; charset=utf-8",
          std::move(out).str(),
          {{"Content-Disposition", "attachment; filename=\"lines.csv\""}}};
}

struct Row {
  const char* method;
  const char* what;
  Answer (*answer)(Desk& desk, const Securities& securities, const Request& request);
};
constexpr Row rows[] = {
    {"POST", "bars", bars},
    {"POST", "script", script},
    {"GET", "view", view},
    {"GET", "records", records},
    {"GET", "values", values},
    {"GET", "events", events},
    {"POST", "play", play},
    {"POST", "play/step", step},
    {"POST", "play/stop", stop},
    {"POST", "scan", scan},
    {"GET", "scan", scanned},
    {"POST", "scan/cancel", cancel},
    {"GET", "export.csv", export_csv},
};

}  // namespace

Answer answer_at(Desk& desk, const std::string& what, const Securities& securities,
                 const Request& request) {
  const auto* const row = std::ranges::find_if(rows, [&](const Row& candidate) {
    return candidate.what == what && candidate.method == request.method;
  });
  if (row == std::end(rows)) throw Refusal(404, "a session has no such request");
  return row->answer(desk, securities, request);
}

}  // namespace quor_host
