// The colours of a picture, on a light ground or a dark one.
#pragma once

#include <string>

#include "color.h"

namespace quor_host {

/// Lines have a contrast of 3 to the ground, texts one of 4.5, and areas, which lie thinly over it,
/// one of 1.5: a script's colour that has less is made darker or lighter.
struct Theme {
  Color ground;
  Color grid;
  Color mark;   ///< grid lines where a month or a year begins
  Color label;  ///< texts of the axes
  Color ink;    ///< the title, and a line of the bars
  Color rise;
  Color fall;
  Color buy;
  Color sell;
  Color close_out;
  Color notice;

  /// Keys of the records; "Theme.Rise", "Theme.Fall", "Theme.Ink" and
  /// "Theme.Label" are the theme's own.
  Color line(const std::string& key) const;
  Color text(const std::string& key) const;
  Color area(const std::string& key, double alpha) const;
};

/// "light" or "dark".
const Theme& theme_named(const std::string& name);

}  // namespace quor_host
