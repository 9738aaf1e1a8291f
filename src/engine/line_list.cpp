#include "engine/line_list.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "drawing/shapes.h"

namespace quor::engine {
namespace {

/// The look of one of the records that a line's style can ask for.
Look look_of(const BaseShape& record) {
  Look look;
  look.shape = record.ShapeName;
  look.marks = record.Field1VisibleId;
  if (const auto* line = dynamic_cast<const PolylineShape*>(&record)) {
    look.style = form_word(line->Style);
    look.colour = line->LineColor;
    look.width = line->LineWidth;
    look.dash = dash_word(line->LineShapeStyle);
  } else if (const auto* bar = dynamic_cast<const BarShape*>(&record)) {
    look.style = bar_word(bar->Style);
    look.colour = bar->UpperShadowColor;
    look.width = bar->LineWidth;
  } else if (const auto* text = dynamic_cast<const TextShape*>(&record)) {
    look.style = record.ShapeName;
    look.colour = text->TextColor;
  }
  return look;
}

}  // namespace

std::vector<Line> lines_of(const DataPoolCenter& pool, const ShapeManagement& drawings) {
  std::unordered_map<std::string_view, std::vector<const BaseShape*>> by_title;
  for (const auto& record : drawings.records()) {
    if (record->TitleVisible != 0) by_title[record->Field1Text].push_back(record.get());
  }
  std::vector<Line> lines;
  for (const Variable* variable : pool.script.variable_list) {
    // A declaration lists a field of its own beside the statement.
    if (variable->kind != VariableKind::field) continue;
    Line& line = lines.emplace_back();
    line.name = variable->text;
    line.column = variable->column_id;
    line.statement = variable->line;
    // A record that isn't a line's own has a name that was made for it.
    const auto draws = [&line](const BaseShape* record) {
      return static_cast<uint32_t>(record->Field1Id) == line.column;
    };
    const auto& records = by_title[variable->text];
    const auto record = std::ranges::find_if(records, draws);
    if (record != records.end()) line.look = look_of(**record);
  }
  return lines;
}

}  // namespace quor::engine
