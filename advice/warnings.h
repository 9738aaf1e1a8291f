// What the library takes without a word though no author can have meant it.
#pragma once

#include <vector>

#include "finding.h"
#include "reading.h"
#include "syntax.h"

namespace quor_advice {

/// Warnings of the script as a whole: comments and quotes that swallow code, nothing to run.
std::vector<Problem> script_warnings(const Reading& reading);

/// Warnings of one statement that the library has taken.
std::vector<Problem> statement_warnings(const Reading& reading, const Statement& statement,
                                        const RunFacts* run);

/// Warnings of what the script asks its host for in vain: a trading calendar, market constants.
std::vector<Problem> supply_warnings(const Reading& reading, const Input& input);

/// The market constants that the host is known to have no number for.
std::vector<std::string_view> missing_constants(const Input& input);

/// Warnings of a calculation: lines that are null on every bar.
std::vector<Problem> run_warnings(const Reading& reading, const Input& input);

/// The first period code that a day or something longer has.
inline constexpr int32_t one_day = 0x4000;

/// Whether bars come several times a day though the period is a day or longer.
bool contradicts_period(const RunFacts& run, int32_t period);

// Parts of them, each by its subject.
void warn_of_items(const Reading& reading, const Statement& statement, std::vector<Problem>& out);
void warn_of_branches(const Reading& reading, const Statement& statement,
                      std::vector<Problem>& out);
void warn_of_arguments(const Reading& reading, const Statement& statement,
                       std::vector<Problem>& out);
void warn_of_limits(const Reading& reading, const Statement& statement, std::vector<Problem>& out);
void warn_of_comparison_values(const Reading& reading, const Statement& statement,
                               std::vector<Problem>& out);
void warn_of_foreign_forms(const Reading& reading, const Statement& statement,
                           std::vector<Problem>& out);
void warn_of_names(const Reading& reading, const Statement& statement, std::vector<Problem>& out);
void warn_of_references(const Reading& reading, const Statement& statement,
                        std::vector<Problem>& out);
void warn_of_words(const Reading& reading, const Statement& statement, std::vector<Problem>& out);
void warn_of_styles(const Reading& reading, const Statement& statement, std::vector<Problem>& out);
void warn_of_calls(const Reading& reading, const Statement& statement, const RunFacts* run,
                   std::vector<Problem>& out);

}  // namespace quor_advice
