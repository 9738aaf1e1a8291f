#include "theme.h"

namespace quor_host {
namespace {

constexpr double line_contrast = 3.0;
constexpr double text_contrast = 4.5;
constexpr double area_contrast = 1.5;

constexpr Theme light{.ground = rgb(0xFFFFFF),
                      .grid = rgb(0xECEFF3),
                      .mark = rgb(0xD5DAE1),
                      .label = rgb(0x5B6472),
                      .ink = rgb(0x1B2330),
                      .rise = rgb(0xD1343B),
                      .fall = rgb(0x0F8040),
                      .buy = rgb(0x1D5FD6),
                      .sell = rgb(0xB84A00),
                      .close_out = rgb(0x7A3FB8),
                      .notice = rgb(0xB87A00)};

constexpr Theme dark{.ground = rgb(0x131722),
                     .grid = rgb(0x1F2533),
                     .mark = rgb(0x343C4D),
                     .label = rgb(0x98A2B3),
                     .ink = rgb(0xE8ECF2),
                     .rise = rgb(0xF0524F),
                     .fall = rgb(0x23B26B),
                     .buy = rgb(0x5AA2FF),
                     .sell = rgb(0xFF9F45),
                     .close_out = rgb(0xB98AF0),
                     .notice = rgb(0xE5B53B)};

Color color_of(const Theme& theme, const std::string& key) {
  if (key == "Theme.Rise") return theme.rise;
  if (key == "Theme.Fall") return theme.fall;
  if (key == "Theme.Ink") return theme.ink;
  if (key == "Theme.Label") return theme.label;
  return resolve_brush(key);
}

}  // namespace

Color Theme::line(const std::string& key) const {
  return readable(color_of(*this, key), ground, line_contrast);
}

Color Theme::text(const std::string& key) const {
  return readable(color_of(*this, key), ground, text_contrast);
}

Color Theme::area(const std::string& key, double alpha) const {
  Color color = set_off(color_of(*this, key), ground, area_contrast);
  color.alpha = alpha;
  return color;
}

const Theme& theme_named(const std::string& name) { return name == "dark" ? dark : light; }

}  // namespace quor_host
