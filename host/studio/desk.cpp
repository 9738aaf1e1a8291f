#include "desk.h"

#include "refusal.h"

namespace quor_host {

const Bars& Desk::bars() const {
  static const Bars none;
  if (play) return play->bars;
  return security ? security->bars : none;
}

std::span<const double> Desk::cells(uint32_t column) const {
  const auto field = bars().columns.find(column);
  if (field != bars().columns.end()) return field->second;
  return run ? run->column(column) : std::span<const double>();
}

Turn::Turn(Desk& desk) : desk_(desk) {
  constexpr int most = 3;  // one at work, two behind it
  if (++desk_.waiting > most) {
    --desk_.waiting;
    throw Refusal(429, "this session has too many requests under way");
  }
  lock_ = std::unique_lock(desk_.lock);
}

Turn::~Turn() {
  lock_.unlock();
  --desk_.waiting;
}

}  // namespace quor_host
