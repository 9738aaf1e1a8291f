#include "canvas.h"

#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <map>
#include <string_view>

#include "../errors.h"

namespace quor_host {
namespace {

double component(const std::string& digits, size_t at) {
  return std::stoi(digits.substr(at, 2), nullptr, 16) / 255.0;
}

bool is_hexadecimal(std::string_view text) {
  return text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

/// The hexadecimal colours of the keys that name a hue and a shade.
const std::map<std::string, std::string, std::less<>> brushes = {
    {"Brush.Red6", "D9363E"},    {"Brush.Red10", "8C1D18"},   {"Brush.Green4", "73C17C"},
    {"Brush.Green6", "2E9E52"},  {"Brush.Green7", "1E7F3F"},  {"Brush.Gray9", "6B7280"},
    {"Brush.Cyan7", "0E9AA7"},   {"Brush.Orange7", "E07B1A"}, {"Brush.Pink7", "D6408A"},
    {"Brush.Blue7", "2563C9"},   {"Brush.Yellow8", "B58A00"}, {"Brush.Gold6", "C99A2E"},
    {"Brush.Purple7", "7A3FB8"},
};

struct LayoutDeleter {
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
};
using Layout = std::unique_ptr<PangoLayout, LayoutDeleter>;

Layout make_layout(cairo_t* context, const std::string& text, double size) {
  Layout layout(pango_cairo_create_layout(context));
  PangoFontDescription* font = pango_font_description_from_string("Sans");
  pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font);
  pango_font_description_free(font);
  pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
  return layout;
}

}  // namespace

Color resolve_brush(const std::string& key) {
  const auto brush = brushes.find(key);
  const size_t mark = key.find('#');
  const std::string digits = brush != brushes.end()      ? brush->second
                             : mark == std::string::npos ? std::string()
                                                         : key.substr(mark + 1);
  if (digits.size() < 6 || !is_hexadecimal(std::string_view(digits).substr(0, 6))) {
    return {0.42, 0.45, 0.5};
  }
  return {component(digits, 0), component(digits, 2), component(digits, 4)};
}

struct Canvas::Sheet {
  std::string path;
  bool is_image = false;
  cairo_surface_t* surface = nullptr;
  cairo_t* context = nullptr;

  void set(Color color) const {
    cairo_set_source_rgba(context, color.red, color.green, color.blue, color.alpha);
  }

  void trace(const std::vector<Point>& points) const {
    cairo_new_path(context);
    for (const Point& point : points) cairo_line_to(context, point.x, point.y);
  }
};

Canvas::Canvas(const std::string& path, int width, int height) : sheet_(new Sheet) {
  sheet_->path = path;
  sheet_->is_image = path.ends_with(".png");
  if (!sheet_->is_image && !path.ends_with(".svg")) {
    throw HostError("--out " + path + ": neither .svg nor .png");
  }
  sheet_->surface = sheet_->is_image
                        ? cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)
                        : cairo_svg_surface_create(path.c_str(), width, height);
  sheet_->context = cairo_create(sheet_->surface);
  if (cairo_surface_status(sheet_->surface) != CAIRO_STATUS_SUCCESS) {
    throw HostError(path + ": can't be written");
  }
}

Canvas::~Canvas() {
  cairo_destroy(sheet_->context);
  cairo_surface_destroy(sheet_->surface);
}

void Canvas::finish() {
  const cairo_status_t written =
      sheet_->is_image ? cairo_surface_write_to_png(sheet_->surface, sheet_->path.c_str())
                       : CAIRO_STATUS_SUCCESS;
  cairo_surface_finish(sheet_->surface);
  if (written != CAIRO_STATUS_SUCCESS ||
      cairo_surface_status(sheet_->surface) != CAIRO_STATUS_SUCCESS) {
    throw HostError(sheet_->path + ": can't be written");
  }
}

void Canvas::fill(Color color) {
  sheet_->set(color);
  cairo_paint(sheet_->context);
}

void Canvas::line(const std::vector<Point>& points, Color color, double width,
                  const std::vector<double>& dashes) {
  if (points.size() < 2) return;
  sheet_->set(color);
  cairo_set_line_width(sheet_->context, width);
  cairo_set_line_join(sheet_->context, CAIRO_LINE_JOIN_ROUND);
  cairo_set_dash(sheet_->context, dashes.data(), static_cast<int>(dashes.size()), 0.0);
  sheet_->trace(points);
  cairo_stroke(sheet_->context);
}

void Canvas::area(const std::vector<Point>& corners, Color color) {
  sheet_->set(color);
  sheet_->trace(corners);
  cairo_close_path(sheet_->context);
  cairo_fill(sheet_->context);
}

void Canvas::rectangle(Point first, Point second, Color color, bool filled) {
  const std::vector<Point> corners = {
      first, {second.x, first.y}, second, {first.x, second.y}, first};
  if (filled) {
    area(corners, color);
  } else {
    line(corners, color, 1.0);
  }
}

void Canvas::text(Point at, const std::string& text, Color color, double size, Anchor anchor) {
  const Layout layout = make_layout(sheet_->context, text, size);
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout.get(), &width, &height);
  sheet_->set(color);
  cairo_move_to(sheet_->context, at.x - anchor.x * width, at.y - anchor.y * height);
  pango_cairo_show_layout(sheet_->context, layout.get());
}

double Canvas::text_width(const std::string& text, double size) {
  const Layout layout = make_layout(sheet_->context, text, size);
  int width = 0;
  pango_layout_get_pixel_size(layout.get(), &width, nullptr);
  return width;
}

void Canvas::clip(Point first, Point second) {
  cairo_save(sheet_->context);
  cairo_rectangle(sheet_->context, first.x, first.y, second.x - first.x, second.y - first.y);
  cairo_clip(sheet_->context);
}

void Canvas::unclip() { cairo_restore(sheet_->context); }

}  // namespace quor_host
