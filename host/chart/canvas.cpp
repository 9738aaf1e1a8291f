#include "canvas.h"

#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <map>

#include "../errors.h"

namespace quor_host {
namespace {

/// The hexadecimal colours of the keys that name a hue and a shade.
const std::map<std::string, unsigned> brushes = {
    {"Brush.Red6", 0xD9363E},    {"Brush.Red10", 0x8C1D18},  {"Brush.Green4", 0x73C17C},
    {"Brush.Green6", 0x2E9E52},  {"Brush.Green7", 0x1E7F3F}, {"Brush.Cyan7", 0x0E9AA7},
    {"Brush.Orange7", 0xE07B1A}, {"Brush.Pink7", 0xD6408A},  {"Brush.Blue7", 0x2563C9},
    {"Brush.Yellow8", 0xB58A00}, {"Brush.Gold6", 0xC99A2E},  {"Brush.Purple7", 0x7A3FB8},
};

/// Frees what a C library has made.
template <auto release>
struct Releaser {
  void operator()(auto* object) const { release(object); }
};
using Layout = std::unique_ptr<PangoLayout, Releaser<g_object_unref>>;
using Escaped = std::unique_ptr<char, Releaser<g_free>>;

Layout make_layout(cairo_t* context, const std::string& text, double size) {
  Layout layout(pango_cairo_create_layout(context));
  const std::string name = "Sans " + std::to_string(size) + "px";
  PangoFontDescription* font = pango_font_description_from_string(name.c_str());
  pango_layout_set_font_description(layout.get(), font);
  pango_font_description_free(font);
  pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
  return layout;
}

Point extent_of(const Layout& layout) {
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout.get(), &width, &height);
  return {static_cast<double>(width), static_cast<double>(height)};
}

bool is_drawable(Point point) { return std::isfinite(point.x) && std::isfinite(point.y); }

/// Cairo reckons in whole numbers of 24 bits.
double bring_near(double pixels) { return std::clamp(pixels, -10000.0, 10000.0); }

cairo_status_t append(void* file, const unsigned char* bytes, unsigned int count) {
  static_cast<std::string*>(file)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

Color resolve_brush(const std::string& key, double alpha) {
  unsigned color = 0x6B7280;  // grey
  const size_t mark = key.find('#');
  if (const auto brush = brushes.find(key); brush != brushes.end()) {
    color = brush->second;
  } else if (mark != std::string::npos && key.size() > mark + 6) {
    std::from_chars(key.data() + mark + 1, key.data() + mark + 7, color, 16);
  }
  return {(color >> 16) / 255.0, (color >> 8 & 0xFF) / 255.0, (color & 0xFF) / 255.0, alpha};
}

struct Canvas::Sheet {
  std::string path;
  std::string file;   ///< its bytes, as far as they have been made
  std::string texts;  ///< what has been written on the sheet, a text on a line
  bool is_image = false;
  std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_destroy>> surface;
  std::unique_ptr<cairo_t, Releaser<cairo_destroy>> context;

  void set(Color color) const {
    cairo_set_source_rgba(context.get(), color.red, color.green, color.blue, color.alpha);
  }

  bool trace(const std::vector<Point>& points) const {
    if (points.empty() || !std::ranges::all_of(points, is_drawable)) return false;
    cairo_new_path(context.get());
    for (const auto& [x, y] : points) cairo_line_to(context.get(), bring_near(x), bring_near(y));
    return true;
  }

  /// Puts the texts behind the opening tag.
  void describe() {
    const auto is_control = [](char letter) {
      return letter > 0 && letter < ' ' && letter != '\n';
    };
    std::ranges::replace_if(texts, is_control, ' ');
    const size_t end = file.find('>', file.find("<svg"));
    if (end == std::string::npos) return;
    const Escaped escaped(g_markup_escape_text(texts.c_str(), static_cast<gssize>(texts.size())));
    file.insert(end + 1, std::string("\n<desc>\n") + escaped.get() + "</desc>");
  }
};

Canvas::Canvas(const std::string& path, int width, int height) : sheet_(new Sheet) {
  sheet_->path = path;
  sheet_->is_image = path.ends_with(".png");
  if (!sheet_->is_image && !path.ends_with(".svg")) {
    throw HostError("--out " + path + ": neither .svg nor .png");
  }
  sheet_->surface.reset(
      sheet_->is_image ? cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)
                       : cairo_svg_surface_create_for_stream(append, &sheet_->file, width, height));
  sheet_->context.reset(cairo_create(sheet_->surface.get()));
}

Canvas::~Canvas() = default;

void Canvas::finish() {
  Sheet& sheet = *sheet_;
  if (sheet.is_image) cairo_surface_write_to_png_stream(sheet.surface.get(), append, &sheet.file);
  cairo_surface_finish(sheet.surface.get());
  cairo_status_t status = cairo_status(sheet.context.get());
  if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(sheet.surface.get());
  if (status != CAIRO_STATUS_SUCCESS) {
    throw HostError(sheet.path + ": can't be drawn: " + cairo_status_to_string(status));
  }
  if (!sheet.is_image) sheet.describe();
  std::ofstream out(sheet.path, std::ios::binary);
  out << sheet.file;
  out.close();
  if (!out) throw HostError(sheet.path + ": can't be written");
}

void Canvas::line(const std::vector<Point>& points, const Stroke& stroke) {
  if (!sheet_->trace(points)) return;
  cairo_t* context = sheet_->context.get();
  const bool dot = points.size() < 3 && points.front() == points.back();
  if (dot) cairo_close_path(context);
  sheet_->set(stroke.color);
  cairo_set_line_width(context, dot ? stroke.width + 1.5 : stroke.width);
  cairo_set_line_cap(context, dot ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
  cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
  cairo_set_dash(context, stroke.dashes.data(), dot ? 0 : static_cast<int>(stroke.dashes.size()),
                 0.0);
  cairo_stroke(context);
}

void Canvas::area(const std::vector<Point>& corners, Color color) {
  if (!sheet_->trace(corners)) return;
  sheet_->set(color);
  cairo_fill(sheet_->context.get());
}

void Canvas::rectangle(Point first, Point second, Color color, bool filled) {
  const std::vector<Point> corners = {
      first, {second.x, first.y}, second, {first.x, second.y}, first};
  filled ? area(corners, color) : line(corners, {color});
}

void Canvas::gradient(Point first, Point second, Color from, Color to, bool to_the_right) {
  const std::unique_ptr<cairo_pattern_t, Releaser<cairo_pattern_destroy>> pattern(
      cairo_pattern_create_linear(first.x, first.y, to_the_right ? second.x : first.x,
                                  to_the_right ? first.y : second.y));
  cairo_pattern_add_color_stop_rgba(pattern.get(), 0, from.red, from.green, from.blue, from.alpha);
  cairo_pattern_add_color_stop_rgba(pattern.get(), 1, to.red, to.green, to.blue, to.alpha);
  cairo_set_source(sheet_->context.get(), pattern.get());
  cairo_rectangle(sheet_->context.get(), first.x, first.y, second.x - first.x, second.y - first.y);
  cairo_fill(sheet_->context.get());
}

void Canvas::text(Point at, const std::string& text, Color color, double size, Point anchor) {
  cairo_t* context = sheet_->context.get();
  const Layout layout = make_layout(context, text, size);
  const auto [width, height] = extent_of(layout);
  sheet_->set(color);
  cairo_move_to(context, at.x - anchor.x * width, at.y - anchor.y * height);
  pango_cairo_show_layout(context, layout.get());
  sheet_->texts += text + "\n";
}

Point Canvas::extent(const std::string& text, double size) {
  return extent_of(make_layout(sheet_->context.get(), text, size));
}

void Canvas::clip(Point first, Point second) {
  cairo_reset_clip(sheet_->context.get());
  cairo_rectangle(sheet_->context.get(), first.x, first.y, second.x - first.x, second.y - first.y);
  cairo_clip(sheet_->context.get());
}

}  // namespace quor_host
