#include "tables/operator_table.h"

#include <algorithm>
#include <iterator>

namespace quor {
namespace {

struct OperatorRow {
  std::string_view sign;
  OpCode code;
};

constexpr OperatorRow OperatorRankTable[] = {
    {"(", op_open},
    {")", op_close},
    {"^", op_unary_minus},
    {"`", op_unary_plus},
    {"/", op_divide},
    {"*", op_times},
    {"%", op_remainder},
    {"+", op_plus},
    {"?", op_minus},
    {">", op_greater},
    {">=", op_greater_equal},
    {"<", op_less},
    {"<=", op_less_equal},
    {"<>", op_not_equal},
    {"!", op_not_equal},
    {"=", op_equal},
    {"&", op_and},
    {"&&", op_and},
    {"|", op_or},
    {"||", op_or},
};

}  // namespace

std::optional<OpCode> operator_code(std::string_view sign) {
  const auto row = std::ranges::find(OperatorRankTable, sign, &OperatorRow::sign);
  if (row == std::end(OperatorRankTable)) return std::nullopt;
  return row->code;
}

bool is_operator_sign(char sign) { return operator_code({&sign, 1}).has_value(); }

}  // namespace quor
