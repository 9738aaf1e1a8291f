// Colour, style, dash and figure words.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tables/word_set.h"

namespace quor {

/// The brush key of a colour word such as COLORRED; nothing for any other text.
std::optional<std::string_view> colour_brush(std::string_view word);

/// The ten brush keys through which COLORAUTO rotates.
std::string_view auto_colour(unsigned step);

/// Words that stand as a style item without being variables.
extern const WordSet StyleWordSet;
extern const WordSet StickWordSet;
extern const WordSet DotWordSet;

enum class LineDashStyle : uint8_t {
  solid_line = 0,
  dash_line,
  dash,
  dot_line,
  dot,
  dash_dot,
  point_dot,
  dash_dot_dot,
};

std::optional<LineDashStyle> dash_style(std::string_view word);
std::string_view dash_word(LineDashStyle style);

enum class LineFormStyle : uint8_t {
  straight_line = 0,
  polyline,
  curve_line,
  vert_line,
  part_line,
  color_polyline,
  slope_straight_line,
  slope_straight_line2,
  angle_line_curve,
  angle_line_straight_line,
  horizontal_curve,
  horizontal_straight_line,
  trend_line_curve,
  trend_line_straight_line,
  golden_line_curve,
  golden_straight_line,
  wave_ruler_curve,
  wave_ruler_straight_line,
};
std::string_view form_word(LineFormStyle style);

enum class BarStyle : uint8_t { line = 0, rect, double_rect };
std::string_view bar_word(BarStyle style);

enum class CandleStyle : uint8_t { american = 0, close_line, rect, tower };
std::string_view candle_word(CandleStyle style);

enum class PolygonStyle : uint8_t { polygon = 0 };
std::string_view polygon_word(PolygonStyle style);

}  // namespace quor
