#include "script_run.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "errors.h"
#include "input/encoding.h"
#include "input/fields.h"
#include "input/json_files.h"
#include "nearest.h"
#include "options/market_constants.h"
#include "options/parameters.h"
#include "options/period.h"
#include "output/messages.h"
#include "text.h"

namespace quor_host {
namespace {

using quor::engine::Script;
using quor::engine::Settings;
using quor::engine::Subject;

double constant_of(const MarketConstants& constants, const std::string& key) {
  const auto row = constants.find(key);
  return row == constants.end() ? std::numeric_limits<double>::quiet_NaN() : row->second;
}

Subject subject_of(const ScriptOptions& options) {
  Subject subject;
  subject.period = parse_period(options.period).value_or(period_of_a_day);
  subject.security = options.security;
  subject.market = options.market;
  subject.time_zone = options.time_zone;
  subject.is_trading = options.is_trading;
  if (!options.calendar_path.empty()) subject.calendar = read_calendar(options.calendar_path);
  const auto constants = market_constants(options.market_constants);
  subject.min_price = constant_of(constants, "MINPRICE");
  subject.unit = constant_of(constants, "UNIT");
  subject.share_count_per_unit = constant_of(constants, "SHARECOUNTPERUNIT");
  return subject;
}

bool is_mark_of_null(double value) { return value == 2147483648.0 || value == 4294967295.0; }

std::vector<ShownLine> lines_named(const Script& script, const std::vector<std::string>& names) {
  std::vector<std::string> known;
  for (const auto& line : script.lines()) known.push_back(line.name);
  std::vector<ShownLine> shown;
  for (const std::string& name : names) {
    const auto place = std::ranges::find(known, to_upper(name));
    if (place == known.end()) {
      const std::string meant = nearest(name, known);
      throw UsageError("--columns " + name + ": the script has no such line" +
                       (meant.empty() ? "" : "; did you mean " + meant + "?"));
    }
    shown.push_back({*place, script.lines()[static_cast<size_t>(place - known.begin())].column});
  }
  return shown;
}

}  // namespace

std::string source_of(const ScriptOptions& options) {
  if (!options.path.empty()) return read_text_input(options.path);
  require_utf8(options.text, "-e");
  return options.text;
}

Settings settings_of(const ScriptOptions& options) {
  Settings settings;
  settings.subject = subject_of(options);
  settings.parameters = parameters_of(options.parameters_path, options.settings);
  if (!options.lines_path.empty()) {
    settings.lines =
        read_array(options.lines_path, R"([{"LINE_NAME":"MA5","COLOR_KEY":"...","LINE_THICK":1,)"
                                       R"("IS_SELECTED":1}, ...])");
  }
  return settings;
}

Settings first_settings_of(const ScriptOptions& options) {
  constexpr uint32_t one_second = 0x3101;
  Settings settings = settings_of(options);
  if (options.period.empty()) settings.subject.period = one_second;
  return settings;
}

quor_advice::Supply supply_of(const ScriptOptions& options, bool has_code) {
  quor_advice::Supply supply;
  supply.has_calendar = !options.calendar_path.empty() && !options.market.empty() &&
                        (has_code || !options.security.empty());
  supply.calendar_advice = has_code ? "--calendar gives one, together with --market"
                                    : "--calendar gives one, together with --code and --market";
  supply.constant_advice = "--extra gives one";
  for (const auto& [key, value] : market_constants(options.market_constants)) {
    supply.constants.push_back(key);
  }
  return supply;
}

void warn_of_idle(const ScriptOptions& options, const std::string& source) {
  const quor_advice::ScriptNames names = quor_advice::names_in(source);
  for (const std::string& text : faults_of_settings(options.settings, source)) warn(text);
  for (const std::string& text : idle_constants(options.market_constants, names)) warn(text);
  if (options.lines_path.empty()) return;
  for (const std::string& name : names_of_settings(read_text(options.lines_path))) {
    if (std::ranges::find(names.lines, name) != names.lines.end()) continue;
    warn(options.lines_path + ": the script has no line " + name);
  }
}

Findings findings_of(const Script& script, Circumstances circumstances) {
  quor_advice::Input input;
  input.script = script.source();
  input.parameters = script.parameters();
  input.report = script.report().text;
  input.answer = script.answer();
  input.period = static_cast<int32_t>(circumstances.period);
  input.run = std::move(circumstances.run);
  input.supply = std::move(circumstances.supply);
  // Of the condition the script under advice is a part already.
  circumstances.settings.condition.clear();
  input.compile = [&settings = circumstances.settings](std::string_view other) {
    return Script(std::string(other), settings).report().text;
  };
  return quor_advice::advise(input);
}

std::vector<uint32_t> feed(Script& script, const Bars& bars,
                           const std::vector<FilledColumn>& references) {
  std::vector<quor::engine::Field> fields;
  std::vector<uint32_t> missing;
  for (const uint32_t id : script.report().fields) {
    const auto column = bars.columns.find(id);
    if (column != bars.columns.end()) {
      fields.push_back({id, column->second});
    } else if (!is_given_elsewhere(id)) {
      missing.push_back(id);
    }
  }
  for (const FilledColumn& filled : references) fields.push_back({filled.column, filled.values});
  script.set_rows(bars.keys, fields);
  return missing;
}

void warn_of_nulls(const Script& script, const Bars& bars, const std::string& path,
                   const std::vector<uint32_t>& missing, const References& references,
                   const std::vector<FilledColumn>& filled) {
  for (const uint32_t id : missing) {
    warn(path + " has no column for " + field_text(id) + ", which reads as null");
  }
  for (const std::string& text : references.missing(script.report())) {
    warn("no data for " + text + ", which reads as null; --reference gives it");
  }
  for (const FilledColumn& column : filled) {
    if (std::ranges::all_of(column.values, [](double value) { return std::isnan(value); })) {
      warn("--reference " + column.text + " has no value at the times of the bars");
    }
  }
  for (const uint32_t id : script.report().fields) {
    const auto column = bars.columns.find(id);
    if (column == bars.columns.end() || std::ranges::none_of(column->second, is_mark_of_null)) {
      continue;
    }
    warn(path + " has 2147483648 or 4294967295 for " + field_text(id) + ", which read as null");
  }
}

std::vector<ShownLine> shown_lines(const Script& script, const LineOptions& options) {
  if (!options.columns.empty()) return lines_named(script, options.columns);
  return drawn_lines(script, options.all);
}

std::optional<uint32_t> period_of(const ScriptOptions& options, std::span<const int64_t> keys) {
  if (!options.period.empty()) return parse_period(options.period);
  const auto period = infer_period({keys.begin(), keys.end()});
  note("period: " + period_text(period.value_or(period_of_a_day)) +
       (period ? ", by the distances of the bars" : ", as the bars tell none") +
       "; --period sets another");
  return period;
}

bool has_error(const Findings& findings) {
  return std::ranges::find(findings, quor_advice::Severity::error,
                           &quor_advice::Finding::severity) != findings.end();
}

int status_of(const ScriptOptions& options, const Findings& findings) {
  constexpr int exit_sound = 0;
  constexpr int exit_script_error = 1;
  const bool fails = has_error(findings) || (options.is_strict && !findings.empty());
  return fails ? exit_script_error : exit_sound;
}

}  // namespace quor_host
