// Colours: those that records name, and what makes one stand off from another.
#pragma once

#include <string>

namespace quor_host {

struct Color {
  double red = 0.0;
  double green = 0.0;
  double blue = 0.0;
  double alpha = 1.0;

  bool operator==(const Color&) const = default;
};

/// 0xRRGGBB.
constexpr Color rgb(unsigned code) {
  return {(code >> 16) / 255.0, (code >> 8 & 0xFF) / 255.0, (code & 0xFF) / 255.0};
}

/// The colour of a brush key or of "#RRGGBB"; grey for a key this host doesn't know.
Color resolve_brush(const std::string& key);

/// From 1, no difference, to 21, black on white: (L1 + 0.05) / (L2 + 0.05) of the relative
/// luminances, the lighter one first. Alpha doesn't count.
double contrast(Color first, Color second);

/// The way from one colour to another, 0 at the first. Alpha is that of the first.
Color blend(Color from, Color to, double share);

/// The colour, as much darker or lighter as it takes to have a contrast to the ground.
Color set_off(Color color, Color ground, double least);

/// The same for lines and texts. A black, white or grey that can't be seen on the ground was meant
/// to be strong and becomes so.
Color readable(Color color, Color ground, double least);

/// Black or white, whichever is easier to read on the ground.
Color ink_on(Color ground);

}  // namespace quor_host
