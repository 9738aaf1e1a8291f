#include "desk.h"

#include <algorithm>

namespace quor_host {

const Bars& Desk::bars() const {
  static const Bars none;
  if (play) return play->bars;
  return security ? security->bars : none;
}

std::span<const double> Desk::cells(uint32_t column) const {
  if (column == overlay_column && overlay) {
    const std::span<const double> values = overlay->values;
    return values.first(std::min(values.size(), row_count()));
  }
  const auto field = bars().columns.find(column);
  if (field != bars().columns.end()) return field->second;
  return run ? run->column(column) : std::span<const double>();
}

}  // namespace quor_host
