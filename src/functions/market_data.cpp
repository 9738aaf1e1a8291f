// Words about the security: where its chips lie, its code, and what the host knows of its market.
#include <algorithm>
#include <string_view>

#include "core/call.h"
#include "functions/chip_distribution.h"
#include "functions/one_bar.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// Markets of indices, whose points are counted whole.
constexpr std::string_view whole_tick_markets[] = {"USHI", "USZI", "UZZI"};

/// The distribution at the bar of a call, from an empty one, so that a bar's answer doesn't depend
/// on how often it was asked. To be made after the call's arguments are evaluated.
ChipDistribution chips_at(const Call& call) {
  const auto column = [&call](uint32_t id) {
    return call.table().column_window(id, call.row, ChipBars::most);
  };
  const bool whole = std::ranges::count(whole_tick_markets, call.pool.market) != 0;
  return {whole ? Tick::whole : Tick::hundredth,
          {column(high_column_id), column(low_column_id), column(volume_column_id),
           column(amount_column_id)},
          call.calculator.scratch().cloud};
}

/// The price below which P percent of the chips lie.
class COST final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    double percent = null_value;
    const Status status = call.evaluate(0, percent);
    if (failed(status)) return status;
    return call.answer(price_at(call, percent));
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false}; }

 private:
  static double price_at(const Call& call, double percent) {
    if (is_null(percent)) return 0.0;
    if (percent >= 100.0 || percent <= 0.0) return null_value;
    const ChipDistribution chips = chips_at(call);
    return chips.empty() ? 0.0 : chips.price_of_share(percent);
  }
};

/// The share of the chips that lie at or below price P.
class WINNER final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 1) return call.wrong_count();
    if (call.table().row_count() == 0) {
      return call.answer(null_value);
    }
    if (call.scan) return Status::ok;
    double price = null_value;
    const Status status = call.evaluate(0, price);
    if (failed(status)) return status;
    const ChipDistribution chips = chips_at(call);
    return call.answer(chips.empty() ? 0.0 : chips.share_up_to(price));
  }
  ColumnTraits column_traits() const override { return {.leaves_state = false}; }
};

class CODELIKE final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(1);
    return call.answer(call.pool.security.starts_with(call.argument_text(0)));
  }
};

/// A number that only the host knows.
template <double DataPoolCenter::*constant>
class MarketConstant final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan) {
      call.script().needs_extra_data = true;
      return call.answer(null_value);
    }
    call.pool.refresh_extra_data();
    return call.answer(call.pool.*constant);
  }
};
using MINPRICE = MarketConstant<&DataPoolCenter::min_price>;
using UNIT = MarketConstant<&DataPoolCenter::unit>;
using SHARECOUNTPERUNIT = MarketConstant<&DataPoolCenter::share_count_per_unit>;

constexpr std::string_view chip_fields[] = {"HIGH", "LOW", "VOL", "AMOUNT"};

constexpr WordRow market_data_rows[] = {
    word_row<COST>("COST", 176, steady | follows_settings, chip_fields),
    word_row<WINNER>("WINNER", 195, steady | follows_settings, chip_fields),
    word_row<CODELIKE>("CODELIKE", 121, steady | follows_settings),
    word_row<MINPRICE>("MINPRICE", 201, looks_back | acts | follows_settings | bare),
    word_row<UNIT>("UNIT", 200, looks_back | acts | follows_settings | bare),
    word_row<SHARECOUNTPERUNIT>("SHARECOUNTPERUNIT", 202,
                                looks_back | acts | follows_settings | bare),
};

}  // namespace

std::span<const WordRow> market_data_words() { return market_data_rows; }

}  // namespace quor
