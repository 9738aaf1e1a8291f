// A sheet to draw on: lines, areas and texts in pixels from the upper left corner.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "surface.h"

namespace quor_host {

/// Lines and areas may have any coordinates: what lies far off the sheet is brought near it, and
/// what has one that is no number isn't drawn.
class Canvas {
 public:
  /// A sheet that becomes a PNG or, by the ending of the path, an SVG. Throws HostError for another
  /// ending, and for a PNG if `make_png` is null.
  Canvas(const std::string& path, int width, int height, MakeSurface* make_png);

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

  /// Writes the file. Throws HostError if that can't be.
  void finish();

 private:
  std::string path_;
  std::unique_ptr<Surface> surface_;
};

}  // namespace quor_host
