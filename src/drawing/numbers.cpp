// Numbers at a bar. NUMBER always lies in a column, which the host prints from.
#include "core/call.h"
#include "core/column_owners.h"
#include "core/data_table.h"
#include "core/model.h"
#include "drawing/drawing_frame.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using T = TextShape;

void digits_from_zero(Draft& draft, double value) {
  draft.record->Digit = value >= 0.0 ? to_int(value) : 0;
}

void keep_number(Draft& draft, double value) { draft.number = value; }

/// DIRECTION, which was kept, turns the shift to the left or to the right.
void shift(Draft& draft, double value) {
  const double x = to_int(value);
  auto& offset = field<&T::HorizontalOffset>(*draft.record);
  if (to_int(draft.number) == 0) offset = 0.0 - x;
  if (to_int(draft.number) == 1) offset = x;
}

// COND, PRICE, NUMBER, PRECISION, colour
constexpr DrawingRow drawnumber = {
    .count = at_least(5),
    .record = plain<T>,
    .values = {{1, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::zero_mark, 0}},
    .constants = {{3, digits_from_zero}},
    .colours = {{field<&T::TextColor>, ColourFrom::argument, 4}},
    .items_from = 5,
    .items = {align, valign, font_size},
};

// COND, PRICE, NUMBER, PRECISION
constexpr DrawingRow drawnumber1 = {
    .count = at_least(4),
    .record = plain<T>,
    .values = {{1, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::zero_mark, 0}},
    .constants = {{3, digits_from_zero}},
    .colours = {{field<&T::TextColor>, ColourFrom::item_not_auto}},
    .items_from = 4,
    .items = {kept_colour, align, valign, font_size},
    .order = late_colour_order,
};

// COND, PRICE, NUMBER, PRECISION, colour, DIRECTION, X
constexpr DrawingRow drawshiftnumber = {
    .count = at_least(7),
    .record = plain<T>,
    .values = {{1, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::zero_mark, 0}},
    .constants = {{3, digits_from_zero},
                  {5, keep_number, not_null, ".DIRECTION"},
                  {6, shift, not_null, ".X"}},
    .colours = {{field<&T::TextColor>, ColourFrom::argument, 4}},
    .items_from = 7,
    .items = {align, valign, font_size},
};

// PRICE, NUMBER, PRECISION, colour
constexpr DrawingRow drawlastbarnumber = {
    .count = at_least(4),
    .record = plain<T>,
    .values = {{0, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::last_row}, {nullptr, Fill::own}},
    .constants = {{2, as_int<&T::Digit>, not_null, ".PRECISION"}},
    .colours = {{field<&T::TextColor>, ColourFrom::argument, 3}},
    .items_from = 4,
    .items = {align, valign, font_size},
    .order = {DraftStep::title, DraftStep::constants, DraftStep::colours, DraftStep::columns,
              DraftStep::own, DraftStep::items, DraftStep::values},
};

bool needs_column(const Variable& number) {
  return number.column_index == -1 && number.kind != VariableKind::missing;
}

template <const DrawingRow& row, size_t number_position>
class NumberWord : public DrawingWord<row> {
 public:
  using DrawingWord<row>::DrawingWord;

 protected:
  static Variable& number_of(const Call& call) { return call.argument(number_position); }

  static void name_number_column(Draft& draft) {
    field<&T::NumberFieldId>(*draft.record) = static_cast<int32_t>(number_of(draft.call).column_id);
  }

  /// Reserves NUMBER's column, if it needs one, among those of the holder.
  static Status bind_number(Draft& draft, Variable& holder) {
    Variable& number = number_of(draft.call);
    if (needs_column(number)) {
      reserve_columns(holder, 1);
      hand_over_column(holder, 0, number);
    }
    name_number_column(draft);
    return Status::ok;
  }

  Status store_number(const Call& call) const {
    double value;
    const Status status = this->evaluate(call, number_position, value);
    if (failed(status)) return status;
    call.table().set_cell(call.row, number_of(call).column_index, value);
    return Status::ok;
  }

  bool has_usual_bars() const final { return false; }

  Status write_bar(const Call& call, BaseShape& record) const override {
    const Status status = store_number(call);
    return failed(status) ? status : DrawingFunc::write_bar(call, record);
  }
};

class DRAWNUMBER final : public NumberWord<drawnumber, 2> {
  using NumberWord::NumberWord;
  Status own_rules(Draft& draft) const override {
    return bind_number(draft, number_of(draft.call));
  }
};

class DRAWNUMBER1 final : public NumberWord<drawnumber1, 2> {
  using NumberWord::NumberWord;
  Status own_rules(Draft& draft) const override {
    return bind_number(draft, number_of(draft.call));
  }
};

class DRAWSHIFTNUMBER final : public NumberWord<drawshiftnumber, 2> {
  using NumberWord::NumberWord;
  /// The column of the marks, which the call reserves later, takes the place of this one among the
  /// call's columns; NUMBER keeps it.
  Status own_rules(Draft& draft) const override { return bind_number(draft, draft.call.variable); }
};

class DRAWLASTBARNUMBER final : public NumberWord<drawlastbarnumber, 1> {
  using NumberWord::NumberWord;

  Status own_rules(Draft& draft) const override {
    Variable& number = number_of(draft.call);
    if (needs_column(number)) hand_over_column(draft.call.variable, 1, number);
    name_number_column(draft);
    return Status::ok;
  }

  Status write_bar(const Call& call, BaseShape& record) const override {
    Status status = store_values(call);
    if (!failed(status) && is_last_row(call)) status = store_number(call);
    return failed(status) ? status : write_columns(call, record);
  }
};

constexpr WordRow number_rows[] = {
    word_row<DRAWNUMBER>("DRAWNUMBER", 126, draws | steady),
    word_row<DRAWNUMBER1>("DRAWNUMBER1", 127, draws | steady),
    word_row<DRAWSHIFTNUMBER>("DRAWSHIFTNUMBER", 128, draws | steady),
    word_row<DRAWLASTBARNUMBER>("DRAWLASTBARNUMBER", 124, draws | follows_rows),
};

}  // namespace

std::span<const WordRow> number_words() { return number_rows; }

}  // namespace quor
