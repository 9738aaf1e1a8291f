// What a canvas draws on: an SVG or a PNG in the making.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "../panes/color.h"
#include "placement.h"

namespace quor_host {

struct Point {
  double x = 0.0;
  double y = 0.0;

  bool operator==(const Point&) const = default;
};

struct Stroke {
  Color color;
  double width = 1.0;
  std::vector<double> dashes = {};
};

struct Lettering {
  Color color;
  double size = 11.0;
  bool bold = false;
  std::optional<Color> halo = {};  ///< sets the letters off from what lies under them
};

/// Takes finite coordinates.
class Surface {
 public:
  virtual ~Surface() = default;

  virtual void line(const std::vector<Point>& points, const Stroke& stroke) = 0;
  virtual void area(const std::vector<Point>& corners, Color color) = 0;
  virtual void tag(const Box& box, double radius, Color color) = 0;
  virtual void disc(Point centre, double radius, Color color) = 0;
  virtual void ring(Point centre, double radius, double width, Color color) = 0;
  virtual void gradient(const Box& box, Color from, Color to, bool to_the_right) = 0;
  virtual void text(Point at, const std::string& text, const Lettering& lettering,
                    Point anchor) = 0;
  virtual Point extent(const std::string& text, const Lettering& lettering) = 0;
  virtual Box ink(const std::string& text, const Lettering& lettering) = 0;
  virtual void clip(const Box& box) = 0;
  virtual void unclip() = 0;
  /// The bytes of the file. Throws HostError for what can't be drawn.
  virtual std::string finish() = 0;
};

using MakeSurface = std::unique_ptr<Surface>(int width, int height);

/// The same bytes on every system.
MakeSurface svg_surface;
/// Needs Cairo and Pango; only the program `quor-chart` has them.
MakeSurface png_surface;

}  // namespace quor_host
