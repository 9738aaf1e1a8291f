#include "shown.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "advice/vocabulary.h"
#include "bars/period.h"
#include "host/studio/refusal.h"

namespace quor_host {
namespace {

constexpr size_t most_rows_of_record = 5000;

constexpr const char* value_keys[] = {"Field1Id",
                                      "Field2Id",
                                      "Field3Id",
                                      "NumberFieldId",
                                      "HorizontalOffset1FieldId",
                                      "HorizontalOffset2FieldId"};

struct MarkKey {
  const char* name;
  const char* key;
};
constexpr MarkKey mark_keys[] = {
    {"first", "Field1VisibleId"}, {"second", "Field2VisibleId"}, {"third", "Field3VisibleId"}};

bool is_figure(const Record& record) {
  const std::string style = record.text("Style");
  return record.is("PolylineShape") &&
         (style.ends_with("Curve") || style.ends_with("StraightLine"));
}

bool is_pair_line(const Record& record) {
  return record.is("StraightLineShape") && record.text("Style") == "StraightLine";
}

/// Whether the record stands at single bars; lines, areas, sticks and candles go through all.
bool stands_at_bars(const Record& record) {
  constexpr const char* kinds[] = {"TextShape", "ImageShape",  "StraightLineShape",
                                   "RectShape", "NoticeShape", "FuturesTradeShape",
                                   "SoundShape"};
  return is_figure(record) ||
         std::ranges::any_of(kinds, [&record](const char* kind) { return record.is(kind); });
}

/// A record with the columns that it names.
class Shown {
 public:
  Shown(const Desk& desk, const Record& record) : desk_(desk), record_(record) {
    for (const char* const key : value_keys) add(values_, key, key);
    for (const auto& [name, key] : mark_keys) add(marks_, name, key);
    if (record.is("NoticeShape") || record.is("FuturesTradeShape")) {
      marks_.clear();
      add(marks_, "first", "Field1Id");
    }
  }

  bool shows_at(size_t row) const {
    return marks_.empty() ||
           std::ranges::any_of(marks_, [row](const Column& mark) { return mark.is_set(row); });
  }

  Json at(size_t row) const {
    Json values = Json::object();
    for (const Column& column : values_) values[column.name] = column.at(row);
    const int64_t key = desk_.bars().keys[row];
    Json json = {{"row", row}, {"key", key}, {"text", time_text(desk_, key)}, {"values", values}};
    for (const Column& mark : marks_) json[mark.name] = mark.is_set(row) ? 1 : 0;
    return json;
  }

  std::vector<size_t> rows(size_t from, size_t to) const {
    if (is_figure(record_)) return anchors();
    if (record_.flag("IsLastCandle")) from = std::max<size_t>(to = desk_.row_count(), 1) - 1;
    std::vector<size_t> rows;
    for (size_t row = from; row < to; ++row) {
      if (shows_at(row)) rows.push_back(row);
    }
    if (is_pair_line(record_)) add_open_end(rows, from);
    return rows;
  }

 private:
  struct Column {
    const char* name;
    std::span<const double> values;

    bool is_there(size_t row) const { return row < values.size(); }
    bool is_set(size_t row) const { return is_there(row) && values[row] == 1.0; }
    Json at(size_t row) const { return is_there(row) ? Json(values[row]) : Json(); }
  };

  void add(std::vector<Column>& columns, const char* name, const char* key) {
    const auto id = record_.column(key);
    if (id) columns.push_back({name, desk_.cells(*id)});
  }

  /// The newest bar of each anchor of a figure, wherever it lies.
  std::vector<size_t> anchors() const {
    std::vector<size_t> rows;
    for (size_t i = 0; i < std::size(mark_keys); ++i) {
      const auto value = record_.column(value_keys[i]);
      const auto mark = record_.column(mark_keys[i].key);
      if (!value) continue;
      const auto values = desk_.cells(*value);
      const Column marks{"", mark ? desk_.cells(*mark) : std::span<const double>()};
      for (size_t row = values.size(); row-- > 0;) {
        if (!std::isfinite(values[row]) || (mark && !marks.is_set(row))) continue;
        rows.push_back(row);
        break;
      }
    }
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
  }

  /// A line that was begun in front of the rows in sight and ends among them or behind.
  void add_open_end(std::vector<size_t>& rows, size_t from) const {
    if (!record_.column("Field2VisibleId")) return;
    for (size_t row = std::min(from, desk_.row_count()); row-- > 0;) {
      if (!shows_at(row)) continue;
      if (marks_.front().is_set(row)) rows.insert(rows.begin(), row);
      return;
    }
  }

  const Desk& desk_;
  const Record& record_;
  std::vector<Column> values_;
  std::vector<Column> marks_;
};

}  // namespace

Json shown_json(const Desk& desk, size_t from, size_t to) {
  to = std::min(to, desk.row_count());
  from = std::min(from, to);
  Json records = Json::array();
  for (size_t i = 0; i < desk.drawing.records.size() && desk.row_count() > 0; ++i) {
    const Record& record = desk.drawing.records[i];
    if (!stands_at_bars(record)) continue;
    const Shown shown(desk, record);
    const std::vector<size_t> rows = shown.rows(from, to);
    const bool is_cut = rows.size() > most_rows_of_record;
    Json list = Json::array();
    for (const size_t row : std::span(rows).last(std::min(rows.size(), most_rows_of_record))) {
      list.push_back(shown.at(row));
    }
    records.push_back({{"index", i}, {"shown", std::move(list)}, {"cut", is_cut}});
  }
  return {{"records", std::move(records)}};
}

std::string time_text(const Desk& desk, int64_t key) {
  const bool intraday = desk.security->period < quor_bars::period_of_a_day &&
                        (key % 1000000 != 0 || desk.bars().keys.front() % 1000000 != 0);
  return key_text(key, intraday);
}

Json line_values(const Desk& desk, size_t row) {
  Json values = Json::array();
  if (!desk.run) return values;
  for (const auto& line : desk.run->script().lines()) {
    const auto cells = desk.run->column(line.column);
    values.push_back(row < cells.size() ? Json(cells[row]) : Json());
  }
  return values;
}

Json values_json(const Desk& desk, size_t row) {
  if (row >= desk.row_count()) throw Refusal(404, "there is no such row");
  Json fields = Json::object();
  Json names = Json::object();
  for (const auto& [id, values] : desk.bars().columns) {
    fields[std::to_string(id)] = values[row];
    const auto words = quor_advice::words_of_field(id);
    names[std::to_string(id)] = words.empty() ? std::to_string(id) : std::string(words.front());
  }
  const int64_t key = desk.bars().keys[row];
  return {{"row", row},
          {"key", key},
          {"text", time_text(desk, key)},
          {"fields", std::move(fields)},
          {"names", std::move(names)},
          {"lines", line_values(desk, row)}};
}

Json event_json(const Desk& desk, const quor::engine::Event& event) {
  return {{"row", event.row},
          {"key", event.key},
          {"text", time_text(desk, event.key)},
          {"word", event.word},
          {"name", event.name},
          {"quantity", event.quantity < 0 ? Json() : Json(event.quantity)},
          {"statement", event.statement}};
}

}  // namespace quor_host
