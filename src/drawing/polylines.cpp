// Lines that run through a value at every bar. POLYLINE is what every output line of a script
// becomes.
#include "core/call.h"
#include "drawing/drawing_frame.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

using P = PolylineShape;
constexpr Item polyline_thick = line_thick<&P::LineWidth>;
constexpr Item polyline_dashes = dash<&P::LineShapeStyle>;
constexpr Item polyline_hidden = no_draw<&P::is_drawn>;

/// The compiler adds the word to every output line, so that it breaks at hidden bars, while a line
/// that a script draws by a call of its own is continuous.
std::optional<Status> part_line_suffix(Draft& draft, std::string_view text) {
  if (text != "PARTLINESUFFIX") return std::nullopt;
  field<&P::IsContinuousLine>(*draft.record) = 0;
  return Status::ok;
}

std::shared_ptr<BaseShape> continuous_line() {
  auto record = std::make_shared<P>();
  record->IsContinuousLine = 1;
  return record;
}

// COND, PRICE, colour
constexpr DrawingRow polyline = {
    .count = at_least(3),
    .record = continuous_line,
    .title = Title::own,
    .values = {{1, field<&P::Field1Id>}},
    .columns = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&P::LineColor>, ColourFrom::item_or_argument, 2}},
    .items_from = 3,
    .items = {kept_colour, polyline_thick, polyline_dashes, no_text, precis, polyline_hidden,
              title_visible, part_line_suffix},
    .order = items_first_order,
    .is_drawn = field<&P::is_drawn>,
    .adds_record = false,
};

// COND, PRICE
constexpr DrawingRow polyline1 = {
    .count = at_least(2),
    .record = continuous_line,
    .title = Title::automatic,
    .values = {{1, field<&P::Field1Id>}},
    .columns = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&P::LineColor>, ColourFrom::item_or_auto}},
    .items_from = 2,
    .items = {kept_colour, polyline_thick, polyline_dashes, precis, polyline_hidden,
              part_line_suffix},
    .order = items_first_order,
    .is_drawn = field<&P::is_drawn>,
};

// COND, PRICE, colour
constexpr DrawingRow partline = {
    .count = at_least(3),
    .record = styled<P, LineFormStyle::part_line>,
    .title = Title::automatic,
    .values = {{1, field<&P::Field1Id>}},
    .columns = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&P::LineColor>, ColourFrom::argument, 2}},
    .items_from = 3,
    .items = {polyline_thick, polyline_dashes, precis},
    .order = items_first_order,
};

// COND, PRICE
constexpr DrawingRow partline1 = {
    .count = at_least(2),
    .record = styled<P, LineFormStyle::part_line>,
    .title = Title::automatic,
    .values = {{1, field<&P::Field1Id>}},
    .columns = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&P::LineColor>, ColourFrom::item_or_auto}},
    .items_from = 2,
    .items = {kept_colour, polyline_thick, polyline_dashes, precis},
    .order = items_first_order,
};

// COND, PRICE, colour, second colour
constexpr DrawingRow drawcolorline = {
    .count = at_least(4),
    .record = styled<P, LineFormStyle::color_polyline>,
    .title = Title::automatic,
    .values = {{1, field<&P::Field1Id>}},
    .columns = {{field<&P::Field1VisibleId>, Fill::zero_mark, 0}},
    .colours = {{field<&P::LineColor>, ColourFrom::argument, 2},
                {field<&P::ConditionColor>, ColourFrom::argument, 3}},
    .items_from = 4,
    .items = {polyline_thick, polyline_dashes, precis},
    .order = items_first_order,
};

class POLYLINE final : public DrawingWord<polyline> {
  using DrawingWord::DrawingWord;

  /// The host's settings of a line override what the script says. A line that the host has
  /// deselected keeps its columns but is not listed.
  Status own_rules(Draft& draft) const override {
    auto& line = static_cast<P&>(*draft.record);
    const std::string& name = draft.call.argument(1).source_text;
    const auto& models = draft.call.script().line_models;
    const auto model = models.find(name);
    if (model != models.end()) {
      line.LineColor = model->second.color_key;
      line.LineWidth = static_cast<float>(model->second.line_thick);
      if (model->second.is_selected != 1) return Status::ok;
    }
    draft.call.script().shapes.add(draft.record);
    if (line.TitleVisible == 0 || name.empty()) {
      set_title(draft, line.TitleVisible == 0 ? Title::automatic : Title::serial);
    } else {
      line.Field1Text = name;
    }
    return Status::ok;
  }
};

using POLYLINE1 = DrawingWord<polyline1>;
using PARTLINE = DrawingWord<partline>;
using PARTLINE1 = DrawingWord<partline1>;
using DRAWCOLORLINE = DrawingWord<drawcolorline>;

constexpr WordRow polyline_rows[] = {
    word_row<POLYLINE>("POLYLINE", 10, draws | steady),
    word_row<POLYLINE1>("POLYLINE1", 132, draws | steady),
    word_row<PARTLINE>("PARTLINE", 141, draws | steady),
    word_row<PARTLINE1>("PARTLINE1", 142, draws | steady),
    word_row<DRAWCOLORLINE>("DRAWCOLORLINE", 143, draws | steady),
};

}  // namespace

std::span<const WordRow> polyline_words() { return polyline_rows; }

}  // namespace quor
