// The operator signs of a statement as the scanner leaves them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quor {

/// The op codes. A code is also the operator's rank: a greater one binds tighter.
enum OpCode : uint8_t {
  op_or = 15,
  op_and = 20,
  op_equal = 25,
  op_not_equal = 30,
  op_less_equal = 35,
  op_less = 40,
  op_greater_equal = 45,
  op_greater = 50,
  op_minus = 60,
  op_plus = 65,
  op_remainder = 70,
  op_times = 75,
  op_divide = 80,
  op_unary_plus = 89,
  op_unary_minus = 90,
  op_close = 95,
  op_open = 100,
};

/// The op code of a whole sign such as ">="; nothing for a text that is no operator.
std::optional<OpCode> operator_code(std::string_view sign);

/// Whether the byte alone is an operator sign and so ends a token.
bool is_operator_sign(char sign);

/// The rank by which the evaluator compares operators: binary minus ranks as plus.
constexpr int operator_rank(OpCode code) { return code == op_minus ? op_plus : code; }

}  // namespace quor
