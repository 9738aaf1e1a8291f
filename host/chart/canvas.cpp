#include "canvas.h"

#include <cairo-svg.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>

#include "../errors.h"

namespace quor_host {
namespace {

/// Frees what a C library has made.
template <auto release>
struct Releaser {
  void operator()(auto* object) const { release(object); }
};
using Layout = std::unique_ptr<PangoLayout, Releaser<g_object_unref>>;
using Escaped = std::unique_ptr<char, Releaser<g_free>>;

void set_font(PangoLayout* layout, const Lettering& lettering) {
  const std::string name =
      std::string(lettering.bold ? "Sans Bold " : "Sans ") + std::to_string(lettering.size) + "px";
  PangoFontDescription* font = pango_font_description_from_string(name.c_str());
  pango_layout_set_font_description(layout, font);
  pango_font_description_free(font);
}

Point extent_of(PangoLayout* layout) {
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout, &width, &height);
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

struct Canvas::Sheet {
  std::string path;
  std::string file;   ///< its bytes, as far as they have been made
  std::string texts;  ///< what has been written on the sheet, a text on a line
  bool is_image = false;
  std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_destroy>> surface;
  std::unique_ptr<cairo_t, Releaser<cairo_destroy>> context;
  Layout layout;

  PangoLayout* lay_out(const std::string& text, const Lettering& lettering) const {
    set_font(layout.get(), lettering);
    pango_layout_set_text(layout.get(), text.c_str(), static_cast<int>(text.size()));
    return layout.get();
  }

  void set(Color color) const {
    cairo_set_source_rgba(context.get(), color.red, color.green, color.blue, color.alpha);
  }

  bool trace(const std::vector<Point>& points) const {
    if (points.empty() || !std::ranges::all_of(points, is_drawable)) return false;
    cairo_new_path(context.get());
    for (const auto& [x, y] : points) cairo_line_to(context.get(), bring_near(x), bring_near(y));
    return true;
  }

  void circle(Point centre, double radius) const {
    cairo_new_path(context.get());
    cairo_arc(context.get(), bring_near(centre.x), bring_near(centre.y), radius, 0.0,
              2 * std::numbers::pi);
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
  sheet_->layout.reset(pango_cairo_create_layout(sheet_->context.get()));
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

void Canvas::tag(const Box& box, Color color) {
  constexpr double radius = 2.5;
  constexpr double quarter = std::numbers::pi / 2;
  cairo_t* context = sheet_->context.get();
  const Box inner{box.left + radius, box.top + radius, box.right - radius, box.bottom - radius};
  cairo_new_path(context);
  cairo_arc(context, inner.right, inner.top, radius, -quarter, 0.0);
  cairo_arc(context, inner.right, inner.bottom, radius, 0.0, quarter);
  cairo_arc(context, inner.left, inner.bottom, radius, quarter, 2 * quarter);
  cairo_arc(context, inner.left, inner.top, radius, 2 * quarter, 3 * quarter);
  sheet_->set(color);
  cairo_fill(context);
}

void Canvas::disc(Point centre, double radius, Color color) {
  if (!is_drawable(centre)) return;
  sheet_->circle(centre, radius);
  sheet_->set(color);
  cairo_fill(sheet_->context.get());
}

void Canvas::ring(Point centre, double radius, Color color) {
  if (!is_drawable(centre)) return;
  sheet_->circle(centre, radius);
  sheet_->set(color);
  cairo_set_dash(sheet_->context.get(), nullptr, 0, 0.0);
  cairo_set_line_width(sheet_->context.get(), 1.3);
  cairo_stroke(sheet_->context.get());
}

void Canvas::gradient(const Box& box, Color from, Color to, bool to_the_right) {
  const std::unique_ptr<cairo_pattern_t, Releaser<cairo_pattern_destroy>> pattern(
      to_the_right ? cairo_pattern_create_linear(box.left, 0.0, box.right, 0.0)
                   : cairo_pattern_create_linear(0.0, box.top, 0.0, box.bottom));
  cairo_pattern_add_color_stop_rgba(pattern.get(), 0.0, from.red, from.green, from.blue,
                                    from.alpha);
  cairo_pattern_add_color_stop_rgba(pattern.get(), 1.0, to.red, to.green, to.blue, to.alpha);
  cairo_t* context = sheet_->context.get();
  cairo_rectangle(context, box.left, box.top, box.right - box.left, box.bottom - box.top);
  cairo_set_source(context, pattern.get());
  cairo_fill(context);
}

void Canvas::text(Point at, const std::string& text, const Lettering& lettering, Point anchor) {
  cairo_t* context = sheet_->context.get();
  PangoLayout* layout = sheet_->lay_out(text, lettering);
  const auto [width, height] = extent_of(layout);
  const Point corner{std::round(at.x - anchor.x * width), std::round(at.y - anchor.y * height)};
  cairo_move_to(context, corner.x, corner.y);
  if (lettering.halo) {
    pango_cairo_layout_path(context, layout);
    sheet_->set(*lettering.halo);
    cairo_set_dash(context, nullptr, 0, 0.0);
    cairo_set_line_width(context, 3.0);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(context);
    cairo_move_to(context, corner.x, corner.y);
  }
  sheet_->set(lettering.color);
  pango_cairo_show_layout(context, layout);
  cairo_new_path(context);
  sheet_->texts += text + "\n";
}

Point Canvas::extent(const std::string& text, const Lettering& lettering) {
  return extent_of(sheet_->lay_out(text, lettering));
}

Box Canvas::ink(const std::string& text, const Lettering& lettering) {
  PangoRectangle ink{};
  pango_layout_get_pixel_extents(sheet_->lay_out(text, lettering), &ink, nullptr);
  return {1.0 * ink.x, 1.0 * ink.y, 1.0 * ink.x + ink.width, 1.0 * ink.y + ink.height};
}

void Canvas::clip(const Box& box) {
  unclip();
  cairo_rectangle(sheet_->context.get(), box.left, box.top, box.right - box.left,
                  box.bottom - box.top);
  cairo_clip(sheet_->context.get());
}

void Canvas::unclip() { cairo_reset_clip(sheet_->context.get()); }

}  // namespace quor_host
