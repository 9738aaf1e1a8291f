// Keeps the notices and signals of one run.
#pragma once

#include <vector>

#include "callbacks/host_callbacks.h"
#include "core/data_table.h"
#include "core/shape_management.h"
#include "engine/values.h"

namespace quor::engine {

class EventRecorder final : public EventListener {
 public:
  void hear_notice(uint32_t row, uint32_t column_id) override;
  void hear_signal(int64_t bar, uint32_t row, uint32_t column_id, uint32_t action,
                   int64_t quantity) override;

  void clear() { heard_.clear(); }
  /// What was heard, with what the drawing records know of it.
  std::vector<Event> events(const DataTable& table, const ShapeManagement& drawings) const;

 private:
  struct Heard {
    uint32_t row;
    uint32_t column_id;
    int32_t action;
    int64_t quantity;
  };
  std::vector<Heard> heard_;
};

}  // namespace quor::engine
