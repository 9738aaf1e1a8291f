#include "scan.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <thread>
#include <utility>

#include "advice/advice.h"
#include "advice/reading.h"
#include "encoding.h"
#include "errors.h"
#include "json_files.h"
#include "market_constants.h"
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

double constant_of(const MarketConstants& constants, const std::string& key) {
  const auto row = constants.find(key);
  return row == constants.end() ? std::numeric_limits<double>::quiet_NaN() : row->second;
}

quor::engine::Subject subject_of(const ScanOptions& options) {
  quor::engine::Subject subject;
  subject.period = parse_period(options.period).value_or(period_of_a_day);
  subject.market = options.market;
  if (!options.calendar_path.empty()) subject.calendar = read_calendar(options.calendar_path);
  const auto constants = market_constants(options.market_constants);
  subject.min_price = constant_of(constants, "MINPRICE");
  subject.unit = constant_of(constants, "UNIT");
  subject.share_count_per_unit = constant_of(constants, "SHARECOUNTPERUNIT");
  return subject;
}

quor_advice::Supply supply_of(const ScanOptions& options) {
  quor_advice::Supply supply;
  supply.has_calendar = !options.calendar_path.empty() && !options.market.empty();
  supply.calendar_advice = "--calendar gives one, together with --market";
  supply.constant_advice = "--extra gives one";
  for (const auto& [key, value] : market_constants(options.market_constants)) {
    supply.constants.push_back(key);
  }
  return supply;
}

/// Rows of two files under one name couldn't be told apart.
void refuse_namesakes(const std::vector<std::string>& files) {
  std::map<std::string, std::string> known;
  for (const std::string& file : files) {
    const auto [other, is_new] = known.emplace(security_of(file), file);
    if (is_new) continue;
    throw HostError(file == other->second ? file + ": is given twice"
                                          : file + " and " + other->second +
                                                ": two files are of security " + other->first);
  }
}

ScanJob job_of(const ScanOptions& options) {
  ScanJob job;
  std::vector<std::string> paths = options.paths;
  if (options.script_text.empty()) {
    job.script = read_text_input(paths.front());
    paths.erase(paths.begin());
  } else {
    job.script = options.script_text;
    require_utf8(job.script, "-e");
  }
  if (paths.empty()) throw HostError("no files and no folders with bars are given");
  for (Setting& setting : parse_settings(options.parameters)) {
    job.settings.parameters.emplace_back(std::move(setting.name), setting.value);
  }
  job.infers_period = options.period.empty();
  job.settings.subject = subject_of(options);
  job.settings.condition = options.condition;
  job.files = bar_files(paths);
  refuse_namesakes(job.files);
  job.last = options.last;
  const size_t processors = std::max(1U, std::thread::hardware_concurrency());
  job.threads = std::min(options.jobs == 0 ? processors : options.jobs, job.files.size());
  return job;
}

std::string script_name(const ScanOptions& options) {
  return options.script_text.empty() ? options.paths.front() : "-e";
}

/// Prints what is wrong with the script, which then serves for no file.
int print_script_failure(const quor::engine::Script& script, const ScanOptions& options) {
  const auto findings = findings_of(script);
  if (script.report().failure.in_condition) {
    throw HostError("--where " + options.condition + ": " + error_text(findings));
  }
  std::cerr << quor_advice::compiler_text(findings, script.source(), script_name(options));
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

void print_idle_settings(const quor::engine::Script& script, const ScanOptions& options) {
  const auto names = quor_advice::names_in(script.source());
  auto texts = faults_of_settings(options.parameters, script.source());
  std::ranges::move(idle_constants(options.market_constants, names), std::back_inserter(texts));
  for (const std::string& text : texts) std::cerr << "quor: warning: " << text << '\n';
}

void print_periods(const ScanJob& job, const ScanResult& result) {
  if (!job.infers_period || result.periods.empty()) return;
  std::cerr << "quor: period: " << period_list(result.periods)
            << ", by the distances of the bars; --period sets another\n";
}

/// What there is to say about the script and about the condition, which stands behind it. Of
/// several periods the shortest, which comes first, asks for most.
void print_warnings(const quor::engine::Script& script, const ScanOptions& options,
                    const ScanResult& result) {
  if (result.periods.empty()) return;
  auto findings = findings_of(script, result.periods.begin()->first, supply_of(options));
  if (script.has_condition()) {
    const size_t last_line = quor_advice::read_script(script.source(), {}).line_starts.size();
    std::erase_if(findings, [&](const quor_advice::Finding& finding) {
      if (finding.line != last_line) return false;
      std::cerr << "quor: warning: --where " << options.condition << ": " << finding.sentence
                << (finding.suggestion.empty() ? "" : "; ") << finding.suggestion << '\n';
      return true;
    });
  }
  std::cerr << quor_advice::compiler_text(findings, script.source(), script_name(options));
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
  print_idle_settings(script, options);
  std::vector<std::string> lines;
  for (const auto& line : script.lines()) lines.push_back(line.name);
  const auto sort_place = place_of(options.sort_line, lines);

  ScanResult result = run_scan(job);
  print_periods(job, result);
  print_warnings(script, options, result);
  sort_rows(result.rows, sort_place, options.reverse);
  print_result(options, lines, result);
  if (result.done < job.files.size()) {
    std::cerr << "quor: stopped behind " << result.done << " of " << job.files.size() << " files\n";
    return exit_interrupted;
  }
  return result.failures.empty() ? exit_sound : exit_failure;
}

}  // namespace quor_host
