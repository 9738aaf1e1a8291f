#include "tables/icon_table.h"

#include <iterator>

namespace quor {

std::optional<std::string_view> icon_text(int32_t position) {
  if (position < 1 || position > static_cast<int32_t>(std::size(IconTextSet))) return std::nullopt;
  return IconTextSet[position - 1];
}

}  // namespace quor
