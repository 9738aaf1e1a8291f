// The parameters that a host sends beside a script.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quor_advice {

/// Names in capitals and default values from [{"PARAM_NAME":"N","DEFAULT":5}, ...]. What the
/// library passes over is passed over here: text that is no such list, entries without name or
/// number.
std::map<std::string, double, std::less<>> read_parameters(std::string_view json);

}  // namespace quor_advice
