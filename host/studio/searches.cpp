#include "searches.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "../input/bars.h"
#include "../options/period.h"
#include "../scan/scan_findings.h"
#include "gate.h"
#include "refusal.h"
#include "task.h"

namespace quor_host {
namespace {

constexpr size_t most_last = 1000;

ScanJob job_of(const Securities& securities, const Json& request) {
  Task task = task_of(request);
  ScanJob job;
  job.script = std::move(task.script);
  job.settings.parameters = std::move(task.parameters);
  job.settings.condition = text_of(request, "where", "");
  const std::string period = text_of(request, "period", "day");
  const auto code = parse_period(period);
  if (!code) throw Refusal(400, "\"period\" is none that is known");
  job.settings.subject.period = *code;
  job.last = count_of(request, "last", 1, 1, most_last);
  job.files = securities.paths();
  job.threads = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, job.files.size());
  return job;
}

/// The names of the lines. Throws Refusal for a script that can't be scanned with.
Json lines_of(const ScanJob& job) {
  const quor::engine::Script script(job.script, job.settings);
  if (script.report().failure) {
    const std::string where = script.report().failure.in_condition ? "the condition" : "the script";
    throw Refusal(400, where + ": " + error_text(findings_of(script)));
  }
  if (!script.report().references.empty()) {
    throw Refusal(400, "the script reads " + script.report().references.front().source +
                           ", and a scan has data of each security alone");
  }
  Json lines = Json::array();
  for (const auto& line : script.lines()) lines.push_back(line.name);
  return lines;
}

Json lines_or_refusal(const ScanJob& job) {
  try {
    return lines_of(job);
  } catch (const quor::engine::Misuse& misuse) {
    throw Refusal(400, misuse.what());
  }
}

/// With its place on the way, as far as it came.
Json progress_json(Scan& scan, bool is_cancelled) {
  const bool is_running = !scan.wait(std::chrono::milliseconds(0));
  return {{"running", is_running},
          {"cancelled", is_cancelled},
          {"done", scan.done()},
          {"files", scan.job().files.size()}};
}

void add_rows(Json& rows, const ScanOutcome& outcome) {
  for (const ScanRow& row : outcome.rows) {
    rows.push_back({{"security", row.security},
                    {"key", row.key},
                    {"text", key_text(row.key, row.key % 1000000 != 0)},
                    {"values", row.values}});
  }
}

}  // namespace

Json Searches::start(const Securities& securities, const Json& request) {
  ScanJob job = job_of(securities, request);
  Json lines = lines_or_refusal(job);
  const size_t count = job.files.size();
  Search search{random_text(), std::make_unique<Scan>(std::move(job))};
  Json answer = {{"id", search.id}, {"files", count}, {"lines", std::move(lines)}};
  std::list<Search> ended;  // outside of the lock, as its threads have to end first
  const std::lock_guard guard(lock_);
  searches_.push_back(std::move(search));
  if (searches_.size() > most) ended.splice(ended.begin(), searches_, searches_.begin());
  return answer;
}

std::list<Searches::Search>::iterator Searches::find(const std::string& id) {
  const auto search = std::ranges::find(searches_, id, &Search::id);
  if (search == searches_.end()) throw Refusal(404, "there is no such scan");
  return search;
}

Json Searches::progress(const std::string& id, size_t since) {
  const std::lock_guard guard(lock_);
  const Search& search = *find(id);
  // Before the outcomes, so that the last answer that says it runs on isn't the last one with rows.
  Json json = progress_json(*search.scan, search.is_cancelled);
  Json rows = Json::array();
  Json failures = Json::array();
  const std::vector<ScanOutcome> outcomes = search.scan->outcomes(since);
  for (const ScanOutcome& outcome : outcomes) {
    add_rows(rows, outcome);
    if (outcome.reason.empty()) continue;
    failures.push_back({{"security", security_of(search.scan->job().files[outcome.file])},
                        {"reason", outcome.reason}});
  }
  json["next"] = since + outcomes.size();
  json["rows"] = std::move(rows);
  json["failures"] = std::move(failures);
  return json;
}

Json Searches::cancel(const std::string& id) {
  const std::lock_guard guard(lock_);
  Search& search = *find(id);
  search.scan->stop();
  search.is_cancelled = true;
  return progress_json(*search.scan, true);
}

void Searches::close(const std::string& id) {
  std::list<Search> ended;
  const std::lock_guard guard(lock_);
  ended.splice(ended.begin(), searches_, find(id));
}

}  // namespace quor_host
