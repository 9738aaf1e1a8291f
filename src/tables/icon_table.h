// The signs that icon words accept, by position.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quor {

/// The sign at a position counted from 1 to 33; nothing outside.
std::optional<std::string_view> icon_text(int32_t position);

}  // namespace quor
