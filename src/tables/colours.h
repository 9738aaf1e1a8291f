// The words of colours and the brush keys that they give: the one list of them, for the library as
// for what advises authors.
#pragma once

#include <string_view>

namespace quor {

struct Colour {
  std::string_view word;
  std::string_view brush;  ///< ends in "#RRGGBB"
};

inline constexpr Colour ColorBrushTable[] = {
    {"COLORRED", "TempBrushKey.#CC3030"},     {"COLORLIRED", "TempBrushKey.#FF7575"},
    {"COLORGREEN", "TempBrushKey.#0C993F"},   {"COLORLIGREEN", "TempBrushKey.#5BE58E"},
    {"COLORBLUE", "TempBrushKey.#19A0FF"},    {"COLORLIBLUE", "TempBrushKey.#75C6FF"},
    {"COLORMAGENTA", "TempBrushKey.#EF39B2"}, {"COLORYELLOW", "TempBrushKey.#FFD933"},
    {"COLORCYAN", "TempBrushKey.#00C6D1"},    {"COLORGRAY", "TempBrushKey.#434448"},
    {"COLORGREY", "TempBrushKey.#434448"},    {"COLORLIGRAY", "TempBrushKey.#B4B6B8"},
    {"COLORLIGREY", "TempBrushKey.#B4B6B8"},  {"COLORBLACK", "TempBrushKey.#000000"},
    {"COLORWHITE", "TempBrushKey.#FFFFFF"},
};

}  // namespace quor
