// What is wrong with a script of a scan, in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "advice/advice.h"
#include "engine/engine.h"

namespace quor_host {

/// The findings about the last compile and the last calculation.
std::vector<quor_advice::Finding> findings_of(const quor::engine::Script& script);
/// The same with what is missing for bars of a period.
std::vector<quor_advice::Finding> findings_of(const quor::engine::Script& script, uint32_t period,
                                              quor_advice::Supply supply);

/// The first error in one sentence.
std::string error_text(const std::vector<quor_advice::Finding>& findings);

}  // namespace quor_host
