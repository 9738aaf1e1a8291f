#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>

#include "../errors.h"
#include "../input/paths.h"
#include "../panes/measures.h"

namespace quor_host {
namespace {

bool is_drawable(Point point) { return std::isfinite(point.x) && std::isfinite(point.y); }

bool are_drawable(const std::vector<Point>& points) {
  return !points.empty() && std::ranges::all_of(points, is_drawable);
}

/// What draws reckons in numbers with few digits.
double bring_near(double pixels) { return std::clamp(pixels, -10000.0, 10000.0); }

Point brought_near(Point point) { return {bring_near(point.x), bring_near(point.y)}; }

std::vector<Point> brought_near(std::vector<Point> points) {
  for (Point& point : points) point = brought_near(point);
  return points;
}

std::unique_ptr<Surface> surface_for(const std::string& path, int width, int height,
                                     MakeSurface* make_png) {
  if (path == "-" || path.ends_with(".svg")) return svg_surface(width, height);
  if (!path.ends_with(".png")) throw UsageError("--out " + path + ": neither .svg nor .png");
  if (make_png != nullptr) return make_png(width, height);
  throw UsageError("--out " + path +
                   ": this build of quor draws no PNG; name the picture FILE.svg");
}

}  // namespace

Canvas::Canvas(const std::string& path, int width, int height, MakeSurface* make_png)
    : path_(path), surface_(surface_for(path, width, height, make_png)) {}

void Canvas::finish() {
  const std::string file = surface_->finish();
  if (path_ == "-") {
    std::cout << file;
    return;
  }
  std::ofstream out(path_of(path_), std::ios::binary);
  out << file;
  out.close();
  if (!out) throw HostError(path_ + ": can't be written");
}

void Canvas::line(const std::vector<Point>& points, const Stroke& stroke) {
  if (!are_drawable(points)) return;
  if (points.size() < 3 && points.front() == points.back()) {
    return disc(points.front(), (stroke.width + 1.5) / 2, stroke.color);
  }
  surface_->line(brought_near(points), stroke);
}

void Canvas::area(const std::vector<Point>& corners, Color color) {
  if (are_drawable(corners)) surface_->area(brought_near(corners), color);
}

void Canvas::fill(const Box& box, Color color) {
  area({{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}},
       color);
}

void Canvas::frame(const Box& box, Color color) {
  const auto [left, top, right, bottom] = box;
  const double half = 0.5;
  line({{left + half, top + half},
        {right - half, top + half},
        {right - half, bottom - half},
        {left + half, bottom - half},
        {left + half, top}},
       {color});
}

void Canvas::tag(const Box& box, Color color) { surface_->tag(box, tag_radius, color); }

void Canvas::disc(Point centre, double radius, Color color) {
  if (is_drawable(centre)) surface_->disc(brought_near(centre), radius, color);
}

void Canvas::ring(Point centre, double radius, Color color) {
  if (is_drawable(centre)) surface_->ring(brought_near(centre), radius, ring_line, color);
}

void Canvas::gradient(const Box& box, Color from, Color to, bool to_the_right) {
  surface_->gradient(box, from, to, to_the_right);
}

void Canvas::text(Point at, const std::string& text, const Lettering& lettering, Point anchor) {
  if (!text.empty()) surface_->text(at, text, lettering, anchor);
}

Point Canvas::extent(const std::string& text, const Lettering& lettering) {
  return surface_->extent(text, lettering);
}

Box Canvas::ink(const std::string& text, const Lettering& lettering) {
  return surface_->ink(text, lettering);
}

void Canvas::clip(const Box& box) {
  unclip();
  surface_->clip(box);
}

void Canvas::unclip() { surface_->unclip(); }

}  // namespace quor_host
