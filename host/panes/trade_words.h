// The words of trade signals, as the statements of their records have them.
#pragma once

#include <string>
#include <string_view>

namespace quor_host {

enum class Side { buy, sell, none };

struct TradeWord {
  std::string_view word;
  Side side;
};

/// The word of a statement such as "CROSS(C,MA5),BK(2)": the last piece between commas that is one.
const TradeWord& trade_word(const std::string& statement);

}  // namespace quor_host
