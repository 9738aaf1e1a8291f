// A script with all that the user says of it: compiled, fed, told about. What the commands share.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "advice/advice.h"
#include "engine/engine.h"
#include "input/references.h"
#include "options/options.h"
#include "output/output.h"

namespace quor_host {

using Findings = std::vector<quor_advice::Finding>;

/// The text of the script, which must be UTF-8.
std::string source_of(const ScriptOptions& options);

/// What the options say, with the period of a day where they name none. Throws UsageError for what
/// can't be read in them.
quor::engine::Settings settings_of(const ScriptOptions& options);
/// The same for a first compile, before bars tell the period: one that is shorter than that of any
/// reference.
quor::engine::Settings first_settings_of(const ScriptOptions& options);

/// What a calculation can have beside bars. Scans take the code of a security from its file.
quor_advice::Supply supply_of(const ScriptOptions& options, bool has_code);

/// Warns of settings, constants and looks of lines that have no effect on the script.
void warn_of_idle(const ScriptOptions& options, const std::string& source);

/// What findings are made from beside the script.
struct Circumstances {
  quor::engine::Settings settings;
  uint32_t period = 0;  ///< 0 while it isn't known
  std::optional<quor_advice::Supply> supply;
  std::optional<quor_advice::RunFacts> run;
};
Findings findings_of(const quor::engine::Script& script, Circumstances circumstances);

/// Gives the bars and the columns of references to the script. What it gives back is null: fields
/// that the script reads and the bars don't have.
std::vector<uint32_t> feed(quor::engine::Script& script, const Bars& bars,
                           const std::vector<FilledColumn>& references);

/// Warns of what reads as null: `missing` fields, references without a file or without a value at
/// the times of the bars, and values that stand for null.
void warn_of_nulls(const quor::engine::Script& script, const Bars& bars, const std::string& path,
                   const std::vector<uint32_t>& missing, const References& references,
                   const std::vector<FilledColumn>& filled);

/// The lines that the user asks for: by name, all, or those that are drawn; all of a script that
/// draws none. Throws UsageError for a name that the script doesn't have.
std::vector<ShownLine> shown_lines(const quor::engine::Script& script, const LineOptions& options);

/// The period that the user names, else the one that the bars tell, which a note says; nothing
/// where they tell none.
std::optional<uint32_t> period_of(const ScriptOptions& options, std::span<const int64_t> keys);

bool has_error(const Findings& findings);
/// The exit status: 1 for an error, and for a warning while the user is strict.
int status_of(const ScriptOptions& options, const Findings& findings);

}  // namespace quor_host
