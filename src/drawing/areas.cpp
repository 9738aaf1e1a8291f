// Background rectangles, the area between two series, the range of the value axis, and the number
// of a colour.
#include "core/call.h"
#include "drawing/drawing_frame.h"
#include "text/numbers.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using R = RectShape;
using G = PolygonShape;
using Y = YRangeShape;

std::shared_ptr<BaseShape> rectangle_of_last_bar() {
  auto record = std::make_shared<R>();
  record->IsLastCandle = 1;
  return record;
}

bool zero_or_one(double value) { return value == 0.0 || value == 1.0; }

/// Of several colour items the first one counts.
std::optional<Status> first_colour(Draft& draft, std::string_view text) {
  if (!text.starts_with("COLOR")) return std::nullopt;
  if (draft.colour_word.empty()) draft.colour_word = text;
  return Status::ok;
}

void as_title(Draft& draft, double value) { draft.record->Field1Text = fixed_text(value); }

// COND, colour, second colour, DIRECTION
constexpr DrawingRow drawgbk = {
    .count = at_least(4),
    .record = rectangle_of_last_bar,
    .title = Title::automatic,
    .columns = {{field<&R::Field1VisibleId>, Fill::zero_mark, 0}},
    .constants = {{3, as_int<&R::GradientDirection>, zero_or_one, ".D"}},
    .colours = {{field<&R::FilledColor>, ColourFrom::argument, 1},
                {field<&R::GradientColor>, ColourFrom::argument, 2}},
    .order = {DraftStep::title, DraftStep::colours, DraftStep::constants, DraftStep::columns},
};

// COND, colour
constexpr DrawingRow drawgbk1 = {
    .count = at_least(2),
    .record = plain<R>,
    .title = Title::automatic,
    .columns = {{field<&R::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&R::FilledColor>, ColourFrom::argument, 1}},
};

// COND, PRICE1, PRICE2, colour
constexpr DrawingRow fillrgn = {
    .count = at_least(4),
    .record = plain<G>,
    .values = {{1, field<&G::Field1Id>}, {2, field<&G::Field2Id>}},
    .columns = {{field<&G::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&G::FilledColor>, ColourFrom::argument, 3}},
};

// COND, PRICE1, PRICE2
constexpr DrawingRow fillrgn1 = {
    .count = at_least(3),
    .record = plain<G>,
    .values = {{1, field<&G::Field1Id>}, {2, field<&G::Field2Id>}},
    .columns = {{field<&G::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&G::FilledColor>, ColourFrom::item}},
    .items_from = 3,
    .items = {first_colour},
    .order = late_colour_order,
};

// X
constexpr DrawingRow backgroundstyle = {
    .count = at_least(1),
    .record = plain<Y>,
    .title = Title::own,
    .constants = {{0, as_title, not_null, ".i"}},
};

Status set_second_title(Draft& draft) {
  field<&G::Field2Text>(*draft.record) = draft.record->Field1Text;
  return Status::ok;
}

using DRAWGBK = DrawingWord<drawgbk>;
using DRAWGBK1 = DrawingWord<drawgbk1>;
class FILLRGN final : public DrawingWord<fillrgn> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return set_second_title(draft); }
};
class FILLRGN1 final : public DrawingWord<fillrgn1> {
  using DrawingWord::DrawingWord;
  Status own_rules(Draft& draft) const override { return set_second_title(draft); }
};
using BACKGROUNDSTYLE = DrawingWord<backgroundstyle>;

/// Draws nothing: the number of a colour from its parts.
class RGB final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    constexpr std::string_view suffixes[] = {".Red", ".Green", ".Blue"};
    if (call.scan) return call.check_count(3);
    int32_t parts[3];
    for (size_t i = 0; i < 3; ++i) {
      double value = null_value;
      const Status status = call.evaluate(i, value);
      if (failed(status)) return status;
      parts[i] = to_int(value);
    }
    for (size_t i = 0; i < 3; ++i) {
      if (parts[i] < 0 || parts[i] > 255) return call.fail(Status::bad_constant, suffixes[i]);
    }
    return call.answer(parts[0] * 65536 + parts[1] * 256 + parts[2]);
  }
};

constexpr WordRow area_rows[] = {
    word_row<DRAWGBK>("DRAWGBK", 144, draws | steady),
    word_row<DRAWGBK1>("DRAWGBK1", 145, draws | steady),
    word_row<FILLRGN>("FILLRGN", 74, draws | steady),
    word_row<FILLRGN1>("FILLRGN1", 130, draws | steady),
    word_row<BACKGROUNDSTYLE>("BACKGROUNDSTYLE", 159, draws | steady),
    word_row<RGB>("RGB", 78, steady | can_fail),
};

}  // namespace

std::span<const WordRow> area_words() { return area_rows; }

}  // namespace quor
