#include "color.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

namespace quor_host {
namespace {

constexpr Color black = rgb(0x000000);
constexpr Color white = rgb(0xFFFFFF);
constexpr unsigned grey = 0x6B7280;

/// The hexadecimal colours of the keys that name a hue and a shade. Those of automatic lines can be
/// told apart by eyes that lack red or green, too.
const std::map<std::string, unsigned> brushes = {
    {"Brush.Red6", 0xD9363E},    {"Brush.Red10", 0xC30006},  {"Brush.Green4", 0x366046},
    {"Brush.Green6", 0x2E9E52},  {"Brush.Green7", 0x1E7F3F}, {"Brush.Cyan7", 0x0E9AA7},
    {"Brush.Orange7", 0xE07B1A}, {"Brush.Pink7", 0xD6408A},  {"Brush.Blue7", 0x2563C9},
    {"Brush.Yellow8", 0xD9D164}, {"Brush.Gold6", 0xBEB68A},  {"Brush.Purple7", 0x8A17E9},
};

double luminance(Color color) {
  const auto linear = [](double share) {
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

bool is_neutral(Color color) {
  const double low = std::min({color.red, color.green, color.blue});
  const double high = std::max({color.red, color.green, color.blue});
  return high - low < 0.08;
}

}  // namespace

Color resolve_brush(const std::string& key) {
  unsigned code = grey;
  const size_t mark = key.find('#');
  if (const auto brush = brushes.find(key); brush != brushes.end()) {
    code = brush->second;
  } else if (mark != std::string::npos && key.size() > mark + 6) {
    std::from_chars(key.data() + mark + 1, key.data() + mark + 7, code, 16);
  }
  return rgb(code);
}

double contrast(Color first, Color second) {
  const auto [dark, light] = std::minmax({luminance(first), luminance(second)});
  return (light + 0.05) / (dark + 0.05);
}

Color blend(Color from, Color to, double share) {
  const auto mix = [share](double a, double b) { return a + (b - a) * share; };
  return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue), from.alpha};
}

Color ink_on(Color ground) {
  return contrast(black, ground) > contrast(white, ground) ? black : white;
}

Color set_off(Color color, Color ground, double least) {
  double near = 0.0;
  double far = contrast(color, ground) < least ? 1.0 : 0.0;
  while (far - near > 1e-3) {
    const double middle = (near + far) / 2;
    const bool stands_off = contrast(blend(color, ink_on(ground), middle), ground) >= least;
    (stands_off ? far : near) = middle;
  }
  return blend(color, ink_on(ground), far);
}

Color readable(Color color, Color ground, double least) {
  const bool is_lost = is_neutral(color) && contrast(color, ground) < 1.5;
  return set_off(color, ground, is_lost ? std::max(least, 10.0) : least);
}

}  // namespace quor_host
