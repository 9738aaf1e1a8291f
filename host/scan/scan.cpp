#include "scan.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "../errors.h"
#include "../options/period.h"
#include "../output/messages.h"
#include "../script_run.h"
#include "../text.h"
#include "advice/advice.h"
#include "advice/reading.h"
#include "scan_console.h"
#include "scan_findings.h"
#include "scan_output.h"

namespace quor_host {
namespace {

constexpr int exit_sound = 0;
constexpr int exit_failure = 1;
constexpr int exit_interrupted = 130;

/// Rows of two files under one name couldn't be told apart.
void refuse_namesakes(const std::vector<std::string>& files) {
  std::map<std::string, std::string> known;
  for (const std::string& file : files) {
    const auto [other, is_new] = known.emplace(security_of(file), file);
    if (is_new) continue;
    throw UsageError(file == other->second ? file + ": is given twice"
                                           : file + " and " + other->second +
                                                 ": two files are of security " + other->first);
  }
}

ScanJob job_of(const ScanOptions& options, const std::vector<std::string>& paths) {
  ScanJob job;
  job.script = source_of(options.script);
  job.settings = first_settings_of(options.script);
  job.settings.condition = options.condition;
  job.infers_period = options.script.period.empty();
  if (paths.empty()) throw UsageError("no files and no folders with bars are given");
  job.files = bar_files(paths);
  refuse_namesakes(job.files);
  job.naming = naming_of(options.bars.form);
  job.references = std::make_shared<const References>(options.bars);
  job.last = options.last;
  const size_t processors = std::max(1U, std::thread::hardware_concurrency());
  job.threads = std::min(options.jobs == 0 ? processors : options.jobs, job.files.size());
  return job;
}

/// Prints what is wrong with the script, which then serves for no file.
int print_script_failure(const quor::engine::Script& script, const ScanJob& job,
                         const ScanOptions& options) {
  const auto findings = findings_of(script, {job.settings, 0, std::nullopt, std::nullopt});
  if (script.report().failure.in_condition) {
    throw HostError("--where " + options.condition + ": " + error_text(findings));
  }
  show_findings(findings, script.source(), options.script.name());
  return exit_failure;
}

/// The periods that the bars told, "day" or "5min (12 files), day (3 files)".
std::string period_list(const std::map<uint32_t, size_t>& periods) {
  if (periods.size() == 1) return period_text(periods.begin()->first);
  std::string text;
  for (const auto& [period, files] : periods) {
    text += (text.empty() ? "" : ", ") + period_text(period) + " (" + std::to_string(files) +
            (files == 1 ? " file)" : " files)");
  }
  return text;
}

void print_periods(const ScanJob& job, const ScanResult& result) {
  if (!job.infers_period || result.periods.empty()) return;
  note("period: " + period_list(result.periods) +
       ", by the distances of the bars; --period sets another");
}

/// What there is to say about the script and about the condition, which stands behind it; tells how
/// many findings there are. Of several periods the first is below a day if any is, and asks for
/// most.
size_t print_warnings(const quor::engine::Script& script, const ScanJob& job,
                      const ScanOptions& options, const ScanResult& result) {
  for (const std::string& doubt : result.doubts) warn(doubt);
  if (result.periods.empty()) return 0;
  auto findings = findings_of(script, {job.settings, result.periods.begin()->first,
                                       supply_of(options.script, true), std::nullopt});
  const size_t count = findings.size();
  if (script.has_condition()) {
    const size_t last_line = quor_advice::read_script(script.source(), {}).line_starts.size();
    std::erase_if(findings, [&](const quor_advice::Finding& finding) {
      if (finding.line != last_line) return false;
      warn("--where " + options.condition + ": " + finding.sentence +
           (finding.suggestion.empty() ? "" : "; ") + finding.suggestion);
      return true;
    });
  }
  show_findings(findings, script.source(), options.script.name());
  return count;
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
  if (found == lines.end()) throw UsageError("--sort " + name + ": the script has no such line");
  return static_cast<size_t>(found - lines.begin());
}

/// The rows with the lines that are shown alone.
void keep_shown(std::vector<ScanRow>& rows, const std::vector<size_t>& places) {
  for (ScanRow& row : rows) {
    std::vector<double> values;
    values.reserve(places.size());
    for (const size_t place : places) values.push_back(row.values[place]);
    row.values = std::move(values);
  }
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
  tell_error(std::to_string(result.failures.size()) + " of " + std::to_string(result.done) +
             (result.done == 1 ? " file failed" : " files failed"));
  for (const ScanFailure& failure : result.failures) std::cerr << "  " << failure.reason << '\n';
}

/// The script stands first among the paths unless its text is given.
std::vector<std::string> take_script(ScanOptions& options) {
  std::vector<std::string> paths = options.paths;
  if (options.script.text.empty() && !paths.empty()) {
    options.script.path = paths.front();
    paths.erase(paths.begin());
  }
  return paths;
}

int scan_with(const ScanOptions& options, const std::vector<std::string>& paths) {
  const ScanJob job = job_of(options, paths);
  const quor::engine::Script script(job.script, job.settings);
  const auto& report = script.report();
  if (report.failure) return print_script_failure(script, job, options);
  job.references->require_use(report);
  for (const std::string& missing : job.references->missing(report)) {
    warn("no data for " + missing + ", which reads as null; --reference gives it");
  }
  warn_of_idle(options.script, script.source());
  std::vector<std::string> lines;
  for (const auto& line : script.lines()) lines.push_back(line.name);
  const auto sort_place = place_of(options.sort_line, lines);
  std::vector<std::string> names;
  std::vector<size_t> places;
  for (const ShownLine& line : shown_lines(script, options.lines)) {
    names.push_back(line.name);
    places.push_back(*place_of(line.name, lines));
  }

  ScanResult result = run_scan(job);
  print_periods(job, result);
  const size_t warnings = print_warnings(script, job, options, result);
  sort_rows(result.rows, sort_place, options.reverse);
  keep_shown(result.rows, places);
  print_result(options, names, result);
  if (result.done < job.files.size()) {
    tell_error("stopped behind " + std::to_string(result.done) + " of " +
               std::to_string(job.files.size()) + " files");
    return exit_interrupted;
  }
  const bool fails = !result.failures.empty() || (options.script.is_strict && warnings > 0);
  return fails ? exit_failure : exit_sound;
}

}  // namespace

int scan_files(ScanOptions options) {
  const std::vector<std::string> paths = take_script(options);
  return scan_with(options, paths);
}

}  // namespace quor_host
