// What a page wants calculated.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "json.h"

namespace quor_host {

inline constexpr size_t longest_script = size_t{256} << 10U;

using Parameters = std::vector<std::pair<std::string, double>>;  ///< by name

struct Task {
  std::string script;
  Parameters parameters;
};

/// Script and parameters of a request. Throws Refusal.
Task task_of(const Json& request);

}  // namespace quor_host
