// Sticks between two prices, and columns.
#include <string>

#include "core/call.h"
#include "core/model.h"
#include "drawing/drawing_frame.h"
#include "text/strings.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using B = BarShape;

// COND, PRICE1, PRICE2, then WIDTH or a colour, EMPTY
constexpr DrawingRow stickline = {
    .count = at_least(5),
    .record = styled<B, BarStyle::line>,
    .values = {{1, field<&B::Field1Id>}, {2, field<&B::Field2Id>}},
    .columns = {{field<&B::Field1VisibleId>, Fill::int_mark, 0}},
    .ignores_status = true,
};

std::shared_ptr<BaseShape> hollow_columns() {
  auto record = std::make_shared<B>();
  record->Style = BarStyle::double_rect;
  record->IsFilled = 0;
  return record;
}

// X, COND1, COND2
constexpr DrawingRow drawcolumnchart = {
    .count = at_least(3),
    .record = hollow_columns,
    .title = Title::automatic,
    .title_visible = 1,
    .values = {{0, field<&B::Field1Id>}},
    .columns = {{field<&B::Field1VisibleId>, Fill::zero_mark, 1},
                {field<&B::Field2VisibleId>, Fill::zero_mark, 2}},
};

/// What SOLID sets is no typo: the flag is 1 for a hollow stick.
std::optional<Status> solid_or_hollow(Draft& draft, std::string_view text) {
  const bool solid = text.starts_with("SOLID");
  if (!solid && !text.starts_with("HOLLOW")) return std::nullopt;
  field<&B::IsFilled>(*draft.record) = solid ? 0 : 1;
  return Status::ok;
}

std::optional<Status> color_stick(Draft& draft, std::string_view text) {
  if (text != "ISCOLORSTICK") return std::nullopt;
  field<&B::IsColorStick>(*draft.record) = 1;
  return Status::ok;
}

std::optional<Status> vol_stick(Draft& draft, std::string_view text) {
  if (text != "ISVOLSTICK") return std::nullopt;
  field<&B::IsVolStick>(*draft.record) = 1;
  return Status::ok;
}

constexpr size_t items_from = 5;
constexpr Items width_form_items = {kept_colour, solid_or_hollow, title_visible, color_stick,
                                    vol_stick};
constexpr Items colour_form_items = {kept_colour, title_visible};

bool has_item(const Call& call, std::string_view word) {
  for (size_t i = items_from; i < call.argument_count(); ++i) {
    if (call.argument(i).text == word) return true;
  }
  return false;
}

/// Both shadows take the one colour, so that COLORAUTO takes one step of the palette.
Status read_shadow_colour(Draft& draft, std::string_view word) {
  auto& stick = static_cast<B&>(*draft.record);
  const Status status = read_colour(draft, word, stick.UpperShadowColor);
  stick.LowerShadowColor = stick.UpperShadowColor;
  return status;
}

/// A stick that is coloured by its direction doesn't even parse a colour word.
Status set_stick_colours(Draft& draft) {
  auto& stick = static_cast<B&>(*draft.record);
  if (stick.IsColorStick != 0 || stick.IsVolStick != 0) {
    stick.UpperShadowColor = "Brush.Red6";
    stick.LowerShadowColor = "Brush.Green6";
    return Status::ok;
  }
  const std::string& word = draft.colour_word;
  return word.empty() ? Status::ok : read_shadow_colour(draft, word);
}

/// A stick that was written as a statement has the line's name as its title.
void set_stick_title(Draft& draft) {
  auto& stick = static_cast<B&>(*draft.record);
  const std::string& name = draft.call.argument(1).source_text;
  const bool named = !name.empty() && name != "VOL" && name != "V";
  if (named && (stick.IsVolStick != 0 || stick.IsColorStick != 0) &&
      !has_item(draft.call, "EMPTY_LINE_NAME_RESERVED")) {
    stick.Field1Text = name;
  } else {
    set_title(draft, Title::automatic);
  }
}

float stick_width(double width) {
  const bool usable = width > 0.0 || width == -1.0;
  return usable ? static_cast<float>(width) : 1.0F;
}

class STICKLINE : public DrawingWord<stickline> {
  using DrawingWord::DrawingWord;

  Status make_record(Draft& draft) const override {
    draft.record->TitleVisible = 0;
    const bool colour_form = contains(draft.call.argument(3).text, "COLOR");
    const Status status = colour_form ? make_colour_form(draft) : make_width_form(draft);
    if (failed(status)) return status;
    return bind_values(draft);
  }

  Status make_width_form(Draft& draft) const {
    read_fill(draft);
    Status status = read_items(draft, width_form_items, items_from);
    if (!failed(status)) status = set_stick_colours(draft);
    if (failed(status)) return status;
    set_stick_title(draft);
    reserve_visibility_column(draft);
    double width;
    status = evaluate(draft.call, 3, width);
    field<&B::LineWidth>(*draft.record) = stick_width(width);
    return status;
  }

  Status make_colour_form(Draft& draft) const {
    draft.colour_word = draft.call.argument(3).text;
    Status status = read_items(draft, colour_form_items, items_from);
    if (!failed(status)) status = read_shadow_colour(draft, draft.colour_word);
    if (failed(status)) return status;
    set_title(draft, Title::serial);
    read_fill(draft);
    reserve_visibility_column(draft);
    return Status::ok;
  }

  void read_fill(Draft& draft) const {
    double empty;
    ignore_status(evaluate(draft.call, 4, empty));
    field<&B::IsFilled>(*draft.record) = to_int(empty) != 0 ? 1 : 0;
  }
};

using STICKLINE1 = STICKLINE;

using DRAWCOLUMN = DrawingWord<drawcolumnchart>;

constexpr WordRow stick_rows[] = {
    word_row<STICKLINE>("STICKLINE", 3, draws | steady),
    word_row<STICKLINE1>("STICKLINE1", 122, draws | steady),
    word_row<DRAWCOLUMN>("DRAWCOLUMNCHART", 146, draws | steady),
};

}  // namespace

std::span<const WordRow> stick_words() { return stick_rows; }

}  // namespace quor
