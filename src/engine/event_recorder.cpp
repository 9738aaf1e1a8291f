#include "engine/event_recorder.h"

#include <string_view>
#include <unordered_map>

#include "drawing/shapes.h"

namespace quor::engine {
namespace {

constexpr int32_t no_action = -1;
constexpr std::string_view action_words[] = {"BK", "BP", "SK", "SP", "BPK", "SPK", "CLOSEOUT"};

struct Origin {
  std::string_view name;
  int32_t statement = 0;
};

/// Where notices and signals come from, by the column of their condition.
std::unordered_map<uint32_t, Origin> origins_of(const ShapeManagement& drawings) {
  std::unordered_map<uint32_t, Origin> origins;
  for (const auto& record : drawings.records()) {
    const auto column = static_cast<uint32_t>(record->Field1Id);
    if (const auto* notice = dynamic_cast<const NoticeShape*>(record.get())) {
      origins[column] = {notice->NoticeMessage, notice->NoticeLineNumber};
    } else if (const auto* signal = dynamic_cast<const FuturesTradeShape*>(record.get())) {
      origins[column] = {{}, signal->NoticeLineNumber};
    }
  }
  return origins;
}

}  // namespace

void EventRecorder::hear_notice(uint32_t row, uint32_t column_id) {
  heard_.push_back({row, column_id, no_action, -1});
}

void EventRecorder::hear_signal(int64_t /*bar*/, uint32_t row, uint32_t column_id, uint32_t action,
                                int64_t quantity) {
  heard_.push_back({row, column_id, static_cast<int32_t>(action), quantity});
}

std::vector<Event> EventRecorder::events(const DataTable& table,
                                         const ShapeManagement& drawings) const {
  std::vector<Event> events;
  if (heard_.empty()) return events;
  const auto origins = origins_of(drawings);
  events.reserve(heard_.size());
  for (const Heard& heard : heard_) {
    const auto found = origins.find(heard.column_id);
    const Origin origin = found == origins.end() ? Origin() : found->second;
    Event& event = events.emplace_back();
    event.key = table.key(static_cast<int32_t>(heard.row));
    event.row = heard.row;
    event.word =
        heard.action == no_action ? "NOTICE" : action_words[static_cast<uint32_t>(heard.action)];
    event.name = origin.name;
    event.quantity = heard.quantity;
    event.statement = origin.statement;
    event.column = heard.column_id;
  }
  return events;
}

}  // namespace quor::engine
