// The texts that go into the engine and come out of it, for the facade that speaks in values.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "engine/values.h"

namespace quor::engine {

/// The failure in the report of a compile, and in the answer of a run; code 0 for none.
Failure failure_of_report(std::string_view report);
Failure failure_of_answer(std::string_view answer);

/// The parameter JSON. Misuse: a name that can't stand in it, a value that is no number.
std::string parameters_json(std::span<const std::pair<std::string, double>> parameters);

inline constexpr std::string_view condition_name = "CONDITION_OF_THE_CALLER";

/// The script with the condition as its last statement. Misuse: a condition that is more than one
/// expression.
std::string with_condition(std::string_view source, std::string_view condition);

}  // namespace quor::engine
