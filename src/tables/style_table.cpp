#include "tables/style_table.h"

#include <algorithm>
#include <array>

#include "tables/colours.h"

namespace quor {
namespace {

constexpr std::array<std::string_view, 10> AutoColorPalette = {
    "Brush.Cyan7", "Brush.Green7", "Brush.Orange7", "Brush.Pink7", "Brush.Blue7",
    "Brush.Red10", "Brush.Green4", "Brush.Yellow8", "Brush.Gold6", "Brush.Purple7"};

constexpr std::string_view style_words[] = {
    "COLORAUTO",   "COLORRED",   "COLORGREEN",   "COLORBLUE",   "COLORMAGENTA", "COLORYELLOW",
    "COLORLIGREY", "COLORLIRED", "COLORLIGREEN", "COLORLIBLUE", "COLORBLACK",   "COLORWHITE",
    "COLORCYAN",   "COLORSTICK", "CIRCLEDOT",    "POINTDOT",    "COLORLIGRAY",  "COLORGRAY",
    "COLORGREY",   "CROSSDOT",   "NOTEXT",       "SOLID",       "HOLLOW",       "NODRAW"};
constexpr std::string_view stick_words[] = {"STICK", "VOLSTICK", "COLORSTICK", "VOLUMESTICK"};
constexpr std::string_view dot_words[] = {"CROSSDOT", "CIRCLEDOT"};

// The value of an enumeration is the position of its word.
constexpr std::array<std::string_view, 8> dash_words = {
    "SOLIDLINE", "DASHLINE", "DASH", "DOTLINE", "DOT", "DASHDOT", "POINTDOT", "DASHDOTDOT"};
constexpr std::array<std::string_view, 18> form_words = {
    "StraightLine",      "Polyline",
    "CurveLine",         "VertLine",
    "PartLine",          "ColorPolyline",
    "SlopeStraightLine", "SlopeStraightLine2",
    "AngleLineCurve",    "AngleLineStraightLine",
    "HorizontalCurve",   "HorizontalStraightLine",
    "TrendLineCurve",    "TrendLineStraightLine",
    "GoldenLineCurve",   "GoldenStraightLine",
    "WaveRulerCurve",    "WaveRulerStraightLine"};
constexpr std::array<std::string_view, 3> bar_words = {"Line", "Rect", "DoubleRect"};
constexpr std::array<std::string_view, 4> candle_words = {"American", "CloseLine", "Rect", "Tower"};

}  // namespace

constinit const WordSet StyleWordSet(style_words);
constinit const WordSet StickWordSet(stick_words);
constinit const WordSet DotWordSet(dot_words);

std::optional<std::string_view> colour_brush(std::string_view word) {
  const auto row = std::ranges::find(ColorBrushTable, word, &Colour::word);
  if (row == std::end(ColorBrushTable)) return std::nullopt;
  return row->brush;
}

std::string_view auto_colour(unsigned step) {
  return AutoColorPalette[step % AutoColorPalette.size()];
}

std::optional<LineDashStyle> dash_style(std::string_view word) {
  const auto found = std::ranges::find(dash_words, word);
  if (found == dash_words.end()) return std::nullopt;
  return static_cast<LineDashStyle>(found - dash_words.begin());
}

std::string_view dash_word(LineDashStyle style) { return dash_words[static_cast<size_t>(style)]; }
std::string_view form_word(LineFormStyle style) { return form_words[static_cast<size_t>(style)]; }
std::string_view bar_word(BarStyle style) { return bar_words[static_cast<size_t>(style)]; }
std::string_view candle_word(CandleStyle style) { return candle_words[static_cast<size_t>(style)]; }
std::string_view polygon_word(PolygonStyle) { return "Polygon"; }

}  // namespace quor
