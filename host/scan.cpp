#include "scan.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <thread>
#include <utility>

#include "advice/advice.h"
#include "errors.h"
#include "parameters.h"
#include "period.h"
#include "scan_console.h"
#include "scan_findings.h"
#include "scan_output.h"
#include "text.h"

namespace quor_host {
namespace {

constexpr int exit_sound = 0;
constexpr int exit_failure = 1;
constexpr int exit_interrupted = 130;

ScanJob job_of(const ScanOptions& options) {
  ScanJob job;
  std::vector<std::string> paths = options.paths;
  if (options.script_text.empty()) {
    job.script = read_file(paths.front());
    paths.erase(paths.begin());
  } else {
    job.script = options.script_text;
  }
  if (paths.empty()) throw HostError("no files and no folders with bars are given");
  for (const std::string& text : options.parameters) {
    Setting setting = parse_setting(text);
    job.settings.parameters.emplace_back(std::move(setting.name), setting.value);
  }
  const auto period = options.period.empty() ? period_of_a_day : parse_period(options.period);
  if (!period) throw HostError("--period " + options.period + ": no known period");
  job.settings.subject.period = *period;
  job.settings.subject.market = options.market;
  job.settings.condition = options.condition;
  job.files = bar_files(paths);
  job.last = options.last;
  const size_t processors = std::max(1U, std::thread::hardware_concurrency());
  job.threads = std::min(options.jobs == 0 ? processors : options.jobs, job.files.size());
  return job;
}

/// Prints what is wrong with the script, which then serves for no file.
int print_script_failure(const quor::engine::Script& script, const ScanOptions& options) {
  const auto findings = findings_of(script);
  if (script.report().failure.in_condition) {
    throw HostError("--where " + options.condition + ": " + error_text(findings));
  }
  const std::string name = options.script_text.empty() ? options.paths.front() : "-e";
  std::cerr << quor_advice::compiler_text(findings, script.source(), name);
  return exit_failure;
}

/// By the names of the securities, or by the values of a line with the nulls last.
void sort_rows(std::vector<ScanRow>& rows, std::optional<size_t> line, bool reverse) {
  const auto before = [&](const ScanRow& a, const ScanRow& b) {
    if (!line) return reverse ? b.security < a.security : a.security < b.security;
    const double x = a.values[*line];
    const double y = b.values[*line];
    if (std::isnan(x) || std::isnan(y)) return std::isnan(x) < std::isnan(y);
    return reverse ? y < x : x < y;
  };
  std::ranges::stable_sort(rows, before);
}

std::optional<size_t> place_of(const std::string& name, const std::vector<std::string>& lines) {
  if (name.empty()) return std::nullopt;
  const auto found = std::ranges::find(lines, to_upper(name));
  if (found == lines.end()) throw HostError("--sort " + name + ": the script has no such line");
  return static_cast<size_t>(found - lines.begin());
}

void print_result(const ScanOptions& options, const std::vector<std::string>& lines,
                  const ScanResult& result) {
  if (options.as_json) {
    print_scan_json(std::cout, lines, result);
  } else if (options.as_csv) {
    print_scan_csv(std::cout, lines, result.rows);
  } else {
    print_scan_table(std::cout, lines, result.rows);
  }
  std::cout.flush();
  if (result.failures.empty()) return;
  std::cerr << "quor: " << result.failures.size() << " of " << result.done << " files failed\n";
  for (const ScanFailure& failure : result.failures) std::cerr << "  " << failure.reason << '\n';
}

}  // namespace

int scan_files(const ScanOptions& options) {
  const ScanJob job = job_of(options);
  const quor::engine::Script script(job.script, job.settings);
  const auto& report = script.report();
  if (report.failure) return print_script_failure(script, options);
  if (!report.references.empty()) {
    throw HostError("the script reads " + report.references.front().source +
                    ", and a scan has data of each security alone");
  }
  std::vector<std::string> lines;
  for (const auto& line : script.lines()) lines.push_back(line.name);
  const auto sort_place = place_of(options.sort_line, lines);

  ScanResult result = run_scan(job);
  sort_rows(result.rows, sort_place, options.reverse);
  print_result(options, lines, result);
  if (result.done < job.files.size()) {
    std::cerr << "quor: stopped behind " << result.done << " of " << job.files.size() << " files\n";
    return exit_interrupted;
  }
  return result.failures.empty() ? exit_sound : exit_failure;
}

}  // namespace quor_host
