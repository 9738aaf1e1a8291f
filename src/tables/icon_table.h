// The signs that icon words accept, by position.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quor {

/// One face stands at two positions; scripts choose by position.
inline constexpr std::string_view IconTextSet[] = {
    "↑", "↓", "B",    "S", "买", "卖", "多", "空", "✔", "❌", "✈",    "⚡", "❤", "❄", "✌", "😀", "😀",
    "😊", "😂", "🤣", "😍", "😒",  "👌",  "😘",  "💕",  "😁", "👍", "🤞", "😉", "😎", "🔥", "💢", "💯",
};

/// The sign at a position counted from 1 to 33; nothing outside.
std::optional<std::string_view> icon_text(int32_t position);

}  // namespace quor
