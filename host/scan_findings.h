// What is wrong with a script of a scan, in words.
#pragma once

#include <string>
#include <vector>

#include "advice/advice.h"
#include "engine/engine.h"

namespace quor_host {

/// The findings about the last compile and the last calculation.
std::vector<quor_advice::Finding> findings_of(const quor::engine::Script& script);

/// The first error in one sentence.
std::string error_text(const std::vector<quor_advice::Finding>& findings);

}  // namespace quor_host
