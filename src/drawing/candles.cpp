// Candles from four prices, and the colouring of the chart's own candles.
#include "core/call.h"
#include "drawing/drawing_frame.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using C = CandleShape;

constexpr ShortList<Value, 4> four_prices = {
    {0, field<&C::HighField>, field<&C::HighFieldText>},
    {1, field<&C::OpenField>, field<&C::OpenFieldText>},
    {2, field<&C::LowField>, field<&C::LowFieldText>},
    {3, field<&C::CloseField>, field<&C::CloseFieldText>},
};

/// Candles over the bars' own columns, which the record names by the ids of the bar fields.
std::shared_ptr<BaseShape> candles_of_bars() {
  auto record = std::make_shared<C>();
  record->HighField = static_cast<int32_t>(high_column_id);
  record->OpenField = static_cast<int32_t>(open_column_id);
  record->LowField = static_cast<int32_t>(low_column_id);
  record->CloseField = static_cast<int32_t>(close_column_id);
  record->IsColorKLine = 1;
  return record;
}

// HIGH, OPEN, LOW, CLOSE
constexpr DrawingRow drawbarline = {
    .count = exactly(4),
    .record = styled<C, CandleStyle::american>,
    .values = four_prices,
};

// HIGH, OPEN, LOW, CLOSE
constexpr DrawingRow drawkline = {
    .count = exactly(4),
    .record = styled<C, CandleStyle::rect>,
    .values = four_prices,
    .ignores_status = true,
};

// COND, colour, EMPTY
constexpr DrawingRow drawcolorkline = {
    .count = exactly(3),
    .record = candles_of_bars,
    .columns = {{field<&C::Field1VisibleId>, Fill::zero_mark, 0}},
    .constants = {{2, as_flag<&C::IsFilled>}},
    .colours = {{field<&C::FilledColor>, ColourFrom::argument, 1}},
};

using DRAWBARLINE = DrawingWord<drawbarline>;

class DRAWKLINE : public DrawingWord<drawkline> {
 public:
  using DrawingWord::DrawingWord;
  Status execute(const Call& call) const override {
    call.result = call.scan ? null_value : 0.0;
    return DrawingWord::execute(call);
  }

 private:
  bool has_usual_bars() const override { return false; }
};

using DRAWKLINE1 = DRAWKLINE;

using DRAWCOLORKLINE = DrawingWord<drawcolorkline>;

constexpr WordRow candle_rows[] = {
    word_row<DRAWBARLINE>("DRAWBARLINE", 133, draws | steady),
    word_row<DRAWKLINE>("DRAWKLINE", 2, draws | steady),
    word_row<DRAWKLINE1>("DRAWKLINE1", 131, draws | steady),
    word_row<DRAWCOLORKLINE>("DRAWCOLORKLINE", 134, draws | steady, bar_fields),
};

}  // namespace

std::span<const WordRow> candle_words() { return candle_rows; }

}  // namespace quor
