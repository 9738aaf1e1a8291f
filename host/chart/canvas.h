// A sheet to draw on: lines, areas and texts in pixels from the upper left corner.
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

/// Lines and areas may have any coordinates: what lies far off the sheet is brought near it, and
/// what has one that is no number isn't drawn.
class Canvas {
 public:
  /// A sheet that becomes a PNG or, by the ending of the path, an SVG. Throws HostError for another
  /// ending.
  Canvas(const std::string& path, int width, int height);
  ~Canvas();

  /// A line of no length is a dot.
  void line(const std::vector<Point>& points, const Stroke& stroke);
  void area(const std::vector<Point>& corners, Color color);
  void fill(const Box& box, Color color);
  /// A frame of one pixel, inside the box.
  void frame(const Box& box, Color color);
  /// A filled box with round corners.
  void tag(const Box& box, Color color);
  void disc(Point centre, double radius, Color color);
  void ring(Point centre, double radius, Color color);
  /// A box whose colour turns into another one, downwards or to the right.
  void gradient(const Box& box, Color from, Color to, bool to_the_right);
  /// The anchor is where the point lies in the text: 0 at its left or upper edge, 1 at the right or
  /// lower one.
  void text(Point at, const std::string& text, const Lettering& lettering,
            Point anchor = {0.0, 0.5});
  /// How far a text reaches to the right and down.
  Point extent(const std::string& text, const Lettering& lettering);
  /// What its letters cover, from its upper left corner on.
  Box ink(const std::string& text, const Lettering& lettering);

  /// Limits drawing to a box, in place of the one before.
  void clip(const Box& box);
  void unclip();

  /// Writes the file. Letters become outlines, so an SVG has its texts in a description, too.
  /// Throws HostError if the file can't be written.
  void finish();

 private:
  struct Sheet;
  std::unique_ptr<Sheet> sheet_;
};

}  // namespace quor_host
