#include "tables/operator_table.h"

#include <algorithm>
#include <array>
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

/// Whether each byte alone is a sign. Compiling asks that of every byte of a statement.
constexpr auto is_sign = [] {
  std::array<bool, 256> bytes{};
  for (const OperatorRow& row : OperatorRankTable) {
    if (row.sign.size() == 1) bytes[static_cast<unsigned char>(row.sign[0])] = true;
  }
  return bytes;
}();

}  // namespace

std::optional<OpCode> operator_code(std::string_view sign) {
  // Every sign begins with a byte that is one.
  if (sign.empty() || !is_operator_sign(sign[0])) return std::nullopt;
  const auto row = std::ranges::find(OperatorRankTable, sign, &OperatorRow::sign);
  if (row == std::end(OperatorRankTable)) return std::nullopt;
  return row->code;
}

bool is_operator_sign(char sign) { return is_sign[static_cast<unsigned char>(sign)]; }

}  // namespace quor
