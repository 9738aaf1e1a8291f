// What the library says about a script that it refuses, taken from its texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quor_advice {

struct Failure {
  int64_t code = 0;  ///< 0 is none
  std::string message;
  std::optional<size_t> statement;  ///< counted from 0
};

/// The failure in a report or in the answer of a calculation. Their texts are not escaped and
/// needn't be JSON; their keys stand in a fixed order.
Failure read_failure(std::string_view text);

/// Whether a flag of a report is set, such as IsNeedRequestTradeDay.
bool is_flag_set(std::string_view report, std::string_view flag);

}  // namespace quor_advice
