#include "drawing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "host/input/fields.h"
#include "host/panes/layout.h"
#include "host/panes/trade_words.h"

namespace quor_host {
namespace {

constexpr size_t most_panes = 6;

/// Whether a key names a column: of values, or with the word in it of marks.
bool names_column(const std::string& key) {
  return key.ends_with("Id") || (key.ends_with("Field") && !key.starts_with("Is"));
}
bool names_marks(const std::string& key) { return key.ends_with("VisibleId"); }

const char* side_text(Side side) {
  return side == Side::buy ? "buy" : side == Side::sell ? "sell" : "none";
}

Json number_json(double value) {
  if (value == std::floor(value) && std::abs(value) < 1e15) return static_cast<int64_t>(value);
  return value;
}

bool holds(const Panel& pane, const Record& record) {
  return std::ranges::find(pane.records, &record) != pane.records.end();
}

size_t pane_of(const Drawing& drawing, const Record& record) {
  const auto pane = std::ranges::find_if(
      drawing.panes, [&record](const Panel& candidate) { return holds(candidate, record); });
  return pane == drawing.panes.end() ? 0 : static_cast<size_t>(pane - drawing.panes.begin());
}

size_t index_of(const Drawing& drawing, const Record* record) {
  return static_cast<size_t>(record - drawing.records.data());
}

Json record_json(const Drawing& drawing, const Record& record) {
  const size_t index = index_of(drawing, &record);
  Json json = {{"index", index},
               {"pane", pane_of(drawing, record)},
               {"layer", layer_of(record)},
               {"own", index > 0 && !record.is("VolumeShape")},
               {"always", shows_always(record)},
               {"valued", !has_no_value(record)},
               {"title", title_of(record)}};
  if (record.is("FuturesTradeShape")) {
    const auto& [word, side] = trade_word(record.text("Field1Text"));
    json["word"] = word;
    json["side"] = side_text(side);
  }
  for (const auto& [key, text] : record.texts) json[key] = text;
  for (const auto& [key, number] : record.numbers) json[key] = number_json(number);
  return json;
}

/// The records and how they share panes.
Drawing arranged(const Run& run, const Bars& bars) {
  const CellReader cells = [&run](uint32_t row, uint32_t column) {
    const auto values = run.column(column);
    return row < values.size() ? values[row] : std::numeric_limits<double>::quiet_NaN();
  };
  Drawing drawing;
  if (bars.keys.empty()) {
    drawing.records = run.records();
    drawing.records.insert(drawing.records.begin(), Record());
    return drawing;
  }
  const View view(cells, bars, enough_bars);
  drawing.records.reserve(run.records().size() + 2);
  drawing.records.push_back(bars_record(view));
  std::ranges::copy(run.records(), std::back_inserter(drawing.records));
  const Record volume = volume_record();
  drawing.panes = panels_of(view, view, drawing.records, &volume, most_panes);
  auto& last = drawing.panes.back().records;
  if (last == std::vector{&volume}) {
    drawing.records.push_back(volume);
    last.front() = &drawing.records.back();
  }
  return drawing;
}

}  // namespace

MarkColumns::MarkColumns(const std::vector<Record>& records) {
  for (const Record& record : records) {
    for (const auto& [key, number] : record.numbers) {
      if (names_marks(key) && number >= 0) marks_.insert(static_cast<uint32_t>(number));
    }
    for (const auto& [value_key, mark_key] : value_places) {
      const auto values = record.column(value_key);
      if (!values) continue;
      const auto marks = shows_always(record) ? std::nullopt : mark_of(record, mark_key);
      auto& known = of_values_.try_emplace(*values, marks).first->second;
      if (known != marks) known.reset();
    }
  }
}

std::optional<uint32_t> MarkColumns::of(uint32_t values) const {
  const auto found = of_values_.find(values);
  return found == of_values_.end() ? std::nullopt : found->second;
}

Drawing drawing_of(const Run& run, const Bars& bars) {
  Drawing drawing = arranged(run, bars);
  drawing.marks = MarkColumns(drawing.records);
  return drawing;
}

std::vector<uint32_t> columns_of(const Drawing& drawing, const Run& run, const Bars& bars) {
  std::vector<uint32_t> columns;
  std::set<uint32_t> known;
  const auto add = [&](uint32_t column) {
    if (known.insert(column).second) columns.push_back(column);
  };
  for (const uint32_t field : {field_open, field_high, field_low, field_close, field_volume}) {
    if (bars.columns.contains(field)) add(field);
  }
  for (const auto& line : run.script().lines()) add(line.column);
  for (const Record& record : drawing.records) {
    for (const auto& [key, number] : record.numbers) {
      if (names_column(key) && number >= 0) add(static_cast<uint32_t>(number));
    }
  }
  return columns;
}

Json records_json(const Drawing& drawing) {
  Json records = Json::array();
  for (const Record& record : drawing.records) records.push_back(record_json(drawing, record));
  if (drawing.panes.empty()) return records;
  const auto layers = layers_of(drawing.panes.front(), drawing.records.front());
  records.front()["hidden"] = std::ranges::find(layers, drawing.records.data()) == layers.end();
  return records;
}

Json panes_json(const Drawing& drawing) {
  Json panes = Json::array();
  if (drawing.panes.empty()) return panes;
  const std::vector<double> shares = shares_of(drawing.panes);
  for (size_t i = 0; i < drawing.panes.size(); ++i) {
    const Panel& pane = drawing.panes[i];
    Json records = Json::array();
    for (const Record* record : layers_of(pane, drawing.records.front())) {
      records.push_back(index_of(drawing, record));
    }
    Json levels = Json::array();
    for (const Level& level : pane.levels) {
      levels.push_back({{"record", index_of(drawing, level.record)}, {"value", level.value}});
    }
    panes.push_back({{"records", std::move(records)},
                     {"levels", std::move(levels)},
                     {"digits", pane.digits},
                     {"weight", shares[i]},
                     {"low", pane.range.low},
                     {"high", pane.range.high}});
  }
  return panes;
}

}  // namespace quor_host
