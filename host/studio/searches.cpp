#include "searches.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "../period.h"
#include "../scan_findings.h"
#include "calculation.h"
#include "refusal.h"

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

std::shared_ptr<Scan> scan_of(Desk& desk) {
  const std::lock_guard guard(desk.scan_lock);
  if (!desk.scan) throw Refusal(409, "there was no scan");
  return desk.scan;
}

/// With its place on the way, as far as it came.
Json progress_json(const Desk& desk, Scan& scan) {
  const bool is_running = !scan.wait(std::chrono::milliseconds(0));
  return {{"running", is_running},
          {"cancelled", desk.is_scan_cancelled.load()},
          {"done", scan.done()},
          {"files", scan.job().files.size()}};
}

}  // namespace

Json start_scan(Desk& desk, const Securities& securities, const Json& request) {
  ScanJob job = job_of(securities, request);
  Json lines = lines_or_refusal(job);
  const size_t count = job.files.size();
  auto scan = std::make_shared<Scan>(std::move(job));
  {
    const std::lock_guard guard(desk.scan_lock);
    std::swap(desk.scan, scan);
    desk.is_scan_cancelled = false;
  }
  // The one before ends here, outside of the lock.
  return {{"files", count}, {"lines", std::move(lines)}};
}

Json scan_json(Desk& desk, size_t since) {
  const std::shared_ptr<Scan> scan = scan_of(desk);
  // Before the outcomes, so that the last answer that says it runs on isn't the last one with rows.
  Json json = progress_json(desk, *scan);
  Json rows = Json::array();
  Json failures = Json::array();
  const std::vector<ScanOutcome> outcomes = scan->outcomes(since);
  for (const ScanOutcome& outcome : outcomes) {
    for (const ScanRow& row : outcome.rows) {
      rows.push_back({{"security", row.security},
                      {"key", row.key},
                      {"text", key_text(row.key, row.key % 1000000 != 0)},
                      {"values", row.values}});
    }
    if (outcome.reason.empty()) continue;
    failures.push_back(
        {{"security", security_of(scan->job().files[outcome.file])}, {"reason", outcome.reason}});
  }
  json["next"] = since + outcomes.size();
  json["rows"] = std::move(rows);
  json["failures"] = std::move(failures);
  return json;
}

Json cancel_scan(Desk& desk) {
  const std::shared_ptr<Scan> scan = scan_of(desk);
  scan->stop();
  desk.is_scan_cancelled = true;
  return progress_json(desk, *scan);
}

}  // namespace quor_host
