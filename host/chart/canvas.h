// A sheet to draw on: lines, areas and texts in pixels from the upper left corner.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace quor_host {

struct Color {
  double red = 0.0;
  double green = 0.0;
  double blue = 0.0;
  double alpha = 1.0;
};

/// The colour of a brush key or of "#RRGGBB"; grey for a key this host doesn't know.
Color resolve_brush(const std::string& key, double alpha = 1.0);

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
  void rectangle(Point first, Point second, Color color, bool filled);
  /// A rectangle whose colour turns into another one, downwards or to the right.
  void gradient(Point first, Point second, Color from, Color to, bool to_the_right);
  /// The anchor is where the point lies in the text: 0 at its left or upper edge, 1 at the right or
  /// lower one.
  void text(Point at, const std::string& text, Color color, double size, Point anchor = {0.0, 0.5});
  /// How far a text reaches to the right and down.
  Point extent(const std::string& text, double size);

  /// Limits drawing to a rectangle, in place of the one before.
  void clip(Point first, Point second);

  /// Writes the file. Letters become outlines, so an SVG has its texts in a description, too.
  /// Throws HostError if the file can't be written.
  void finish();

 private:
  struct Sheet;
  std::unique_ptr<Sheet> sheet_;
};

}  // namespace quor_host
