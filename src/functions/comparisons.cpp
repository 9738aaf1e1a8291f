// Words that compare: extremes of the arguments, truths about them and about the bar's candle, and
// the null itself. A comparison with a null is false.
#include <algorithm>
#include <limits>

#include "core/call.h"
#include "core/columns.h"
#include "core/reduce.h"
#include "functions/one_bar.h"
#include "functions/over_arguments.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

constexpr auto above = [](double a, double b) { return a > b; };
constexpr auto below = [](double a, double b) { return a < b; };
constexpr auto equal = [](double a, double b) { return a == b; };

/// A null as the second argument is passed over, as the first it stays.
using MAX = TwoArguments<[](double a, double b) { return a < b ? b : a; }>;
using MIN = TwoArguments<[](double a, double b) { return b < a ? b : a; }>;

using NOT = OneArgument<[](double x) { return x == 0.0; }>;
using ISNULL = OneArgument<[](double x) { return is_null(x); }>;
using BETWEEN = ThreeArguments<[](double x, double a, double b) { return a <= x && x <= b; }>;
using RANGE = ThreeArguments<[](double x, double a, double b) { return a < x && x < b; }>;

/// The argument that is ahead of all others. Nulls are passed over; with nothing left the answer is
/// the finite number that is behind every other.
template <auto is_ahead>
struct Foremost {
  static constexpr double greatest = std::numeric_limits<double>::max();
  static constexpr double start = is_ahead(1.0, 0.0) ? -greatest : greatest;
  static Status scan(const Call&) { return Status::ok; }
  static double take(double foremost, double x) { return is_ahead(x, foremost) ? x : foremost; }
  static double finish(double foremost, size_t) { return foremost; }
};
using MAX1 = OverArguments<Foremost<above>>;
using MIN1 = OverArguments<Foremost<below>>;

/// How the bar's close stands to its open.
template <auto compare>
class CloseAgainstOpen final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return Status::ok;
    const DataTable& table = call.table();
    return call.answer(compare(table.cell(call.row, table.column_index_of(close_column_id)),
                               table.cell(call.row, table.column_index_of(open_column_id))));
  }
  const double* column(const ColumnCall& call) const override {
    const DataTable& table = call.table();
    const int32_t close = table.column_index_of(close_column_id);
    const int32_t open = table.column_index_of(open_column_id);
    if (close == -1 || open == -1) return nullptr;
    const double* closes = call.cells(close) + call.rows.first;
    const double* opens = call.cells(open) + call.rows.first;
    double* result = call.scratch();
    for (size_t i = 0; i < call.size(); ++i) result[i] = truth(compare(closes[i], opens[i]));
    return result;
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false}; }
};
using ISUP = CloseAgainstOpen<above>;
using ISDOWN = CloseAgainstOpen<below>;
using ISEQUAL = CloseAgainstOpen<equal>;

/// `NULL` is a macro.
class NULL_FUNC final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override { return call.answer(null_value); }
  const double* column(const ColumnCall& call) const override {
    return call.everywhere(null_value);
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false}; }
};
using DRAWNULL = NULL_FUNC;

constexpr std::string_view body_fields[] = {"CLOSE", "OPEN"};

constexpr WordRow comparison_rows[] = {
    word_row<MAX>("MAX", 56, steady),
    word_row<MIN>("MIN", 57, steady),
    word_row<NOT>("NOT", 59, steady),
    word_row<ISNULL>("ISNULL", 108, steady),
    word_row<BETWEEN>("BETWEEN", 11, steady),
    word_row<RANGE>("RANGE", 88, steady),
    word_row<MAX1>("MAX1", 83, steady),
    word_row<MIN1>("MIN1", 82, steady),
    word_row<ISUP>("ISUP", 106, steady | bare, body_fields),
    word_row<ISDOWN>("ISDOWN", 105, steady | bare, body_fields),
    word_row<ISEQUAL>("ISEQUAL", 107, steady | bare, body_fields),
    word_row<NULL_FUNC>("NULL", 109, steady | bare),
    word_row<DRAWNULL>("DRAWNULL", 8, steady | bare),
};

}  // namespace

std::span<const WordRow> comparison_words() { return comparison_rows; }

}  // namespace quor
