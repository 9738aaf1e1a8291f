// Straight lines between two marked bars, from one bar with a slope, and vertical lines.
#include "core/call.h"
#include "core/model.h"
#include "drawing/drawing_frame.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using S = StraightLineShape;
constexpr Item straight_thick = line_thick<&S::LineWidth>;
constexpr Item straight_dashes = dash<&S::LineShapeStyle>;
constexpr Item line_colour = colour_item<&S::LineColor>;

bool zero_to_three(double value) {
  return value == 0.0 || value == 1.0 || value == 2.0 || value == 3.0;
}

/// Unlike `zero_to_three` this one looks at the whole part only.
bool whole_part_zero_to_two(double value) { return to_int(value) >= 0 && to_int(value) <= 2; }

std::shared_ptr<BaseShape> line_of_last_bar() {
  auto record = std::make_shared<S>();
  record->IsLastCandle = 1;
  return record;
}

// COND1, PRICE1, COND2, PRICE2, colour
constexpr DrawingRow drawline = {
    .count = at_least(5),
    .record = plain<S>,
    .values = {{1, field<&S::Field1Id>}, {3, field<&S::Field2Id>}},
    .columns = {{field<&S::Field1VisibleId>, Fill::own}},
    .colours = {{field<&S::LineColor>, ColourFrom::argument, 4}},
    .items_from = 5,
    .items = {straight_thick, straight_dashes},
};

// COND1, PRICE1, COND2, PRICE2, EXPAND
constexpr DrawingRow drawline1 = {
    .count = at_least(5),
    .record = plain<S>,
    .values = {{1, field<&S::Field1Id>}, {3, field<&S::Field2Id>}},
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0},
                {field<&S::Field2VisibleId>, Fill::zero_mark, 2}},
    .constants = {{4, as_int<&S::IsExpand>, not_null, ".EXP"}},
    .items_from = 5,
    .items = {line_colour, straight_thick, straight_dashes},
};

// COND1, PRICE1, OFFSET1, COND2, PRICE2, OFFSET2, EXPAND; the numbers at 5 and 6 match no item
constexpr DrawingRow drawline3 = {
    .count = at_least(7),
    .record = plain<S>,
    .values = {{1, field<&S::Field1Id>}, {4, field<&S::Field2Id>}},
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0},
                {field<&S::Field2VisibleId>, Fill::zero_mark, 3},
                {field<&S::HorizontalOffset1FieldId>, Fill::negated, 2},
                {field<&S::HorizontalOffset2FieldId>, Fill::negated, 5}},
    .constants = {{6, as_int<&S::IsExpand>}},
    .items_from = 5,
    .items = {line_colour, straight_thick, straight_dashes},
};

// as DRAWLINE3
constexpr DrawingRow drawlastbarline = {
    .count = at_least(7),
    .record = line_of_last_bar,
    .values = {{1, field<&S::Field1Id>}, {4, field<&S::Field2Id>}},
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0},
                {field<&S::Field2VisibleId>, Fill::zero_mark, 3},
                {field<&S::HorizontalOffset1FieldId>, Fill::negated, 2},
                {field<&S::HorizontalOffset2FieldId>, Fill::negated, 5}},
    .constants = {{6, as_flag<&S::IsExpand>}},
    .items_from = 5,
    .items = {line_colour, straight_thick, straight_dashes},
    .last_row_only = true,
};

// COND, PRICE, SLOPE, LEN, EXPAND, colour
constexpr DrawingRow drawsl = {
    .count = at_least(6),
    .record = styled<S, LineFormStyle::slope_straight_line>,
    .values = {{1, field<&S::Field1Id>}},
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0},
                {field<&S::HorizontalOffset1FieldId>, Fill::number, 3}},
    .constants = {{4, as_int<&S::IsExpand>, zero_to_three, ".EXPAND"},
                  {2, as_number<&S::Slope>, not_null, ".SLOPE"}},
    .colours = {{field<&S::LineColor>, ColourFrom::argument, 5}},
    .items_from = 6,
    .items = {straight_thick, straight_dashes},
};

// COND, PRICE, SLOPE, LEN, EXPAND
constexpr DrawingRow drawsl1 = {
    .count = at_least(5),
    .record = styled<S, LineFormStyle::slope_straight_line2>,
    .values = {{1, field<&S::Field1Id>}},
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0},
                {field<&S::HorizontalOffset1FieldId>, Fill::number, 3}},
    .constants = {{4, as_int<&S::IsExpand>, whole_part_zero_to_two, ".EXPAND"},
                  {2, as_number<&S::Slope>, not_null, ".SLOPE"}},
    .items_from = 5,
    .items = {line_colour, straight_thick, straight_dashes},
};

// COND, colour
constexpr DrawingRow vertline = {
    .count = at_least(2),
    .record = styled<S, LineFormStyle::vert_line>,
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&S::LineColor>, ColourFrom::argument, 1}},
    .items_from = 2,
    .items = {straight_thick, straight_dashes},
};

// COND
constexpr DrawingRow vertline1 = {
    .count = at_least(1),
    .record = styled<S, LineFormStyle::vert_line>,
    .columns = {{field<&S::Field1VisibleId>, Fill::zero_mark, 0}},
    .items_from = 1,
    .items = {line_colour, straight_thick, straight_dashes},
};

class DRAWLINE final : public DrawingWord<drawline> {
  using DrawingWord::DrawingWord;

  bool has_usual_bars() const override { return false; }

  /// One mark for both ends: the line shows where both conditions hold at the same bar.
  Status write_bar(const Call& call, BaseShape&) const override {
    Status status = store_values(call);
    if (failed(status)) return status;
    if (call.argument(0).text.empty() || call.argument(2).text.empty()) return Status::ok;
    double first;
    status = evaluate(call, 0, first);
    if (failed(status)) return status;
    double second;
    status = evaluate(call, 2, second);
    if (failed(status)) return status;
    set_call_column(call, 0, mark_of(first != 0.0 && second != 0.0));
    return Status::ok;
  }
};

using DRAWLINE1 = DrawingWord<drawline1>;
using DRAWLINE3 = DrawingWord<drawline3>;
using DRAWLASTBARLINE = DrawingWord<drawlastbarline>;
using DRAWSL = DrawingWord<drawsl>;
using DRAWSL1 = DrawingWord<drawsl1>;
using VERTLINE = DrawingWord<vertline>;
using VERTLINE1 = DrawingWord<vertline1>;

constexpr WordRow straight_line_rows[] = {
    word_row<DRAWLINE>("DRAWLINE", 135, draws | steady),
    word_row<DRAWLINE1>("DRAWLINE1", 136, draws | steady),
    word_row<DRAWLINE3>("DRAWLINE3", 137, draws | steady),
    word_row<DRAWLASTBARLINE>("DRAWLASTBARLINE", 138, draws | follows_rows),
    word_row<DRAWSL>("DRAWSL", 147, draws | steady),
    word_row<DRAWSL1>("DRAWSL1", 148, draws | steady),
    word_row<VERTLINE>("VERTLINE", 139, draws | steady),
    word_row<VERTLINE1>("VERTLINE1", 140, draws | steady),
};

}  // namespace

std::span<const WordRow> straight_line_words() { return straight_line_rows; }

}  // namespace quor
