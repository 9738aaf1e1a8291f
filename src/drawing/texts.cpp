// Texts at a bar.
#include "core/call.h"
#include "drawing/drawing_frame.h"
#include "text/numbers.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using T = TextShape;
constexpr Item text_colour = colour_item<&T::TextColor>;

/// PARAM_ and a name: the record gets the name as its title.
std::optional<Status> named_title(Draft& draft, std::string_view text) {
  constexpr std::string_view prefix = "PARAM_";
  if (!text.starts_with(prefix)) return std::nullopt;
  if (text.size() > prefix.size()) draft.record->Field1Text = text.substr(prefix.size());
  draft.record->TitleVisible = 1;
  return Status::ok;
}

/// A number whose decimal text is one digit; the default stands for any other.
void one_digit_align(Draft& draft, double value) {
  const int32_t number = to_int(value);
  if (number >= 0 && number <= 9) field<&T::HorizontalAlign>(*draft.record) = number;
}

// COND, PRICE, text
constexpr DrawingRow drawtext = {
    .count = at_least(3),
    .record = plain<T>,
    .values = {{1, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::int_mark, 0}},
    .items_from = 3,
    .items = {text_colour, align, valign, font_size, named_title, no_text, precis,
              no_draw<&T::is_drawn>},
    .is_drawn = field<&T::is_drawn>,
};

// PRICE, text
constexpr DrawingRow drawlastbartext = {
    .count = at_least(2),
    .record = plain<T>,
    .values = {{0, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::last_row}},
    .colours = {{field<&T::TextColor>, ColourFrom::item_not_auto}},
    .items_from = 2,
    .items = {kept_colour, align, valign, font_size},
    .order = late_colour_order,
};

// COND, X, PRICE, align number, colour, text
constexpr DrawingRow ktext = {
    .count = at_least(6),
    .record = plain<T>,
    .values = {{2, field<&T::Field1Id>}},
    .columns = {{field<&T::Field1VisibleId>, Fill::zero_mark, 0}},
    .constants = {{1, as_number<&T::HorizontalOffset>}, {3, one_digit_align}},
    .colours = {{field<&T::TextColor>, ColourFrom::argument, 4}},
    .items_from = 6,
    .items = {font_size},
};

template <size_t argument>
Status read_text(Draft& draft) {
  field<&T::Text>(*draft.record) = draft.call.argument_text(argument);
  return Status::ok;
}

class DRAWTEXT final : public DrawingWord<drawtext> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return read_text<2>(draft); }
};

class DRAWLASTBARTEXT final : public DrawingWord<drawlastbartext> {
  using DrawingWord::DrawingWord;

  Status own_rules(Draft& draft) const override {
    const std::string text = draft.call.argument_text(1);
    if (text == fixed_text(null_value)) return draft.call.fail(Status::bad_constant, ".TEXT");
    field<&T::Text>(*draft.record) = text;
    return Status::ok;
  }
};

class KTEXT final : public DrawingWord<ktext> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return read_text<5>(draft); }
};

constexpr WordRow text_rows[] = {
    word_row<DRAWTEXT>("DRAWTEXT", 9, draws | steady),
    word_row<DRAWLASTBARTEXT>("DRAWLASTBARTEXT", 125, draws | follows_rows),
    word_row<KTEXT>("KTEXT", 129, draws | steady),
};

}  // namespace

std::span<const WordRow> text_words() { return text_rows; }

}  // namespace quor
