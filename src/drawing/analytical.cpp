// Angle line, horizontal line, trend line, golden line and wave ruler. Each figure has a curve form
// (the word alone) and a straight form (the word behind DRAW, with a colour at a position). The
// library hands on the anchors; geometry is the host's.
#include "drawing/drawing_frame.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using P = PolylineShape;

using Values = ShortList<Value, 4>;
constexpr Values one_price = {{1, field<&P::Field1Id>}};
constexpr Values two_prices = {{1, field<&P::Field1Id>}, {3, field<&P::Field2Id>}};
constexpr Values three_prices = {
    {1, field<&P::Field1Id>}, {3, field<&P::Field2Id>}, {5, field<&P::Field3Id>}};

using Columns = ShortList<Column, 4>;
constexpr Columns one_mark = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0}};
constexpr Columns two_marks = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0},
                               {field<&P::Field2VisibleId>, Fill::zero_mark, 2}};
constexpr Columns three_marks = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0},
                                 {field<&P::Field2VisibleId>, Fill::zero_mark, 2},
                                 {field<&P::Field3VisibleId>, Fill::zero_mark, 4}};

using Constants = ShortList<Constant, 3>;
constexpr Constants no_ratio = {};
constexpr Constants ratio_at(size_t argument, std::string_view suffix) {
  return {{argument, as_number<&P::Ratio>, not_null, suffix}};
}

template <LineFormStyle style>
constexpr DrawingRow curve_form(size_t count, Values values, Columns columns, Constants constants) {
  return {
      .count = at_least(count),
      .record = styled<P, style>,
      .title = Title::automatic,
      .title_visible = 1,
      .values = values,
      .columns = columns,
      .constants = constants,
      .colours = {{field<&P::LineColor>, ColourFrom::item_or_auto}},
      .items_from = count,
      .items = {kept_colour, line_thick<&P::LineWidth>, dash<&P::LineShapeStyle>, no_text, precis},
      .order = items_first_order,
  };
}

/// The colour is the last of the counted arguments.
template <LineFormStyle style>
constexpr DrawingRow straight_form(size_t count, Values values, Columns columns,
                                   Constants constants) {
  return {
      .count = at_least(count),
      .record = styled<P, style>,
      .values = values,
      .columns = columns,
      .constants = constants,
      .colours = {{field<&P::LineColor>, ColourFrom::argument, count - 1}},
      .items_from = count,
      .items = {line_thick<&P::LineWidth>, dash<&P::LineShapeStyle>, precis},
      .order = items_first_order,
  };
}

using Form = LineFormStyle;
// clang-format off
constexpr auto angleline =
    curve_form<Form::angle_line_curve>(5, two_prices, two_marks, ratio_at(4, ".RATIO"));
constexpr auto drawangleline =
    straight_form<Form::angle_line_straight_line>(6, two_prices, two_marks, ratio_at(4, ".RATIO"));
constexpr auto horizontalline =
    curve_form<Form::horizontal_curve>(2, one_price, one_mark, no_ratio);
constexpr auto drawhorizontalline =
    straight_form<Form::horizontal_straight_line>(3, one_price, one_mark, no_ratio);
constexpr auto trendlines =
    curve_form<Form::trend_line_curve>(4, two_prices, two_marks, no_ratio);
constexpr auto drawtrendline =
    straight_form<Form::trend_line_straight_line>(5, two_prices, two_marks, no_ratio);
// This word alone names itself twice in the refusal.
constexpr auto goldenline =
    curve_form<Form::golden_line_curve>(5, two_prices, two_marks, ratio_at(4, "GOLDENLINE"));
constexpr auto drawgoldenline =
    straight_form<Form::golden_straight_line>(6, two_prices, two_marks, ratio_at(4, ".RATIO"));
constexpr auto waveruler =
    curve_form<Form::wave_ruler_curve>(7, three_prices, three_marks, ratio_at(6, ".RATIO"));
constexpr auto drawwaveruler =
    straight_form<Form::wave_ruler_straight_line>(8, three_prices, three_marks,
                                                  ratio_at(6, ".RATIO"));
// clang-format on

using ANGLELINE = DrawingWord<angleline>;
using DRAWANGLELINE = DrawingWord<drawangleline>;
using HORIZONTALLINE = DrawingWord<horizontalline>;
using DRAWHORIZONTALLINE = DrawingWord<drawhorizontalline>;
using TRENDLINES = DrawingWord<trendlines>;
using DRAWTRENDLINE = DrawingWord<drawtrendline>;
using GOLDENLINE = DrawingWord<goldenline>;
using DRAWGOLDENLINE = DrawingWord<drawgoldenline>;
using WAVERULER = DrawingWord<waveruler>;
using DRAWWAVERULER = DrawingWord<drawwaveruler>;

constexpr WordRow analytical_rows[] = {
    word_row<ANGLELINE>("ANGLELINE", 149, draws | steady),
    word_row<DRAWANGLELINE>("DRAWANGLELINE", 150, draws | steady),
    word_row<HORIZONTALLINE>("HORIZONTALLINE", 151, draws | steady),
    word_row<DRAWHORIZONTALLINE>("DRAWHORIZONTALLINE", 152, draws | steady),
    word_row<TRENDLINES>("TRENDLINES", 153, draws | steady),
    word_row<DRAWTRENDLINE>("DRAWTRENDLINE", 154, draws | steady),
    word_row<GOLDENLINE>("GOLDENLINE", 155, draws | steady),
    word_row<DRAWGOLDENLINE>("DRAWGOLDENLINE", 156, draws | steady),
    word_row<WAVERULER>("WAVERULER", 157, draws | steady),
    word_row<DRAWWAVERULER>("DRAWWAVERULER", 158, draws | steady),
};

}  // namespace

std::span<const WordRow> analytical_words() { return analytical_rows; }

}  // namespace quor
