// Signs and pictures at a bar.
#include <string>

#include "core/call.h"
#include "drawing/drawing_frame.h"
#include "tables/icon_table.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using T = TextShape;
using I = ImageShape;

std::shared_ptr<BaseShape> picture_of_last_bar() {
  auto record = std::make_shared<I>();
  record->IsLastCandle = 1;
  return record;
}

// COND, PRICE, ICON
constexpr DrawingRow drawicon = {
    .count = at_least(3),
    .record = plain<T>,
    .values = {{1, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::int_mark, 0}},
    .colours = {{field<&T::TextColor>, ColourFrom::item_not_auto}},
    .items_from = 3,
    .items = {kept_colour, align, valign},
    .order = late_colour_order,
};

// PRICE, ICON
constexpr DrawingRow drawlastbaricon = {
    .count = at_least(2),
    .record = plain<T>,
    .values = {{0, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::last_row}},
    .items_from = 2,
    .items = {align, valign},
};

// COND, PRICE, picture name
constexpr DrawingRow drawbmp = {
    .count = exactly(3),
    .record = plain<I>,
    .title = Title::own,
    .values = {{1, field<&I::Field1Id>}},
    .columns = {{field<&I::Field1VisibleId>, Fill::zero_mark, 0}},
};

// COND, picture name
constexpr DrawingRow drawbkbmp = {
    .count = exactly(2),
    .record = picture_of_last_bar,
    .title = Title::own,
    .columns = {{field<&I::Field1VisibleId>, Fill::zero_mark, 0}},
};

/// The sign that ICON names: "5", "ICO5" and the number 5 are the fifth one.
Status read_sign(Draft& draft, size_t argument, bool needs_prefix) {
  constexpr std::string_view prefix = "ICO";
  const std::string text = upper_case(draft.call.argument_text(argument));
  const bool prefixed = text.starts_with(prefix);
  const auto sign =
      icon_text(standard_integer(std::string_view(text).substr(prefixed ? prefix.size() : 0)));
  if (!sign || (needs_prefix && !prefixed)) return draft.call.fail(Status::sign_out_of_range);
  field<&T::Text>(*draft.record) = *sign;
  return Status::ok;
}

Status read_picture_name(Draft& draft, size_t argument) {
  draft.record->Field1Text = draft.call.argument_text(argument);
  if (draft.record->Field1Text == fixed_text(null_value)) set_title(draft, Title::serial);
  return Status::ok;
}

class DRAWICON final : public DrawingWord<drawicon> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return read_sign(draft, 2, false); }
};

class DRAWLASTBARICON final : public DrawingWord<drawlastbaricon> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return read_sign(draft, 1, true); }
};

class DRAWBMP final : public DrawingWord<drawbmp> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return read_picture_name(draft, 2); }
};

class DRAWBKBMP final : public DrawingWord<drawbkbmp> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return read_picture_name(draft, 1); }
};

constexpr WordRow icon_rows[] = {
    word_row<DRAWICON>("DRAWICON", 7, draws | steady),
    word_row<DRAWLASTBARICON>("DRAWLASTBARICON", 123, draws | follows_rows),
    word_row<DRAWBMP>("DRAWBMP", 160, draws | steady),
    word_row<DRAWBKBMP>("DRAWBKBMP", 161, draws | steady),
};

}  // namespace

std::span<const WordRow> icon_words() { return icon_rows; }

}  // namespace quor
