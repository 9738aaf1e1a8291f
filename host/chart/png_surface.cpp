#include <pango/pangocairo.h>

#include <cmath>
#include <numbers>

#include "../errors.h"
#include "surface.h"

namespace quor_host {
namespace {

/// Frees what a C library has made.
template <auto release>
struct Releaser {
  void operator()(auto* object) const { release(object); }
};
template <typename Object, auto release>
using Owned = std::unique_ptr<Object, Releaser<release>>;

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

cairo_status_t append(void* file, const unsigned char* bytes, unsigned int count) {
  static_cast<std::string*>(file)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

class PngSurface : public Surface {
 public:
  PngSurface(int width, int height)
      : image_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
        context_(cairo_create(image_.get())),
        layout_(pango_cairo_create_layout(context_.get())) {}

  void line(const std::vector<Point>& points, const Stroke& stroke) override {
    trace(points);
    set(stroke.color);
    cairo_set_line_width(context_.get(), stroke.width);
    cairo_set_line_join(context_.get(), CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(context_.get(), stroke.dashes.data(), static_cast<int>(stroke.dashes.size()),
                   0.0);
    cairo_stroke(context_.get());
  }

  void area(const std::vector<Point>& corners, Color color) override {
    trace(corners);
    set(color);
    cairo_fill(context_.get());
  }

  void tag(const Box& box, double radius, Color color) override {
    constexpr double quarter = std::numbers::pi / 2;
    cairo_t* context = context_.get();
    const Box inner{box.left + radius, box.top + radius, box.right - radius, box.bottom - radius};
    cairo_new_path(context);
    cairo_arc(context, inner.right, inner.top, radius, -quarter, 0.0);
    cairo_arc(context, inner.right, inner.bottom, radius, 0.0, quarter);
    cairo_arc(context, inner.left, inner.bottom, radius, quarter, 2 * quarter);
    cairo_arc(context, inner.left, inner.top, radius, 2 * quarter, 3 * quarter);
    set(color);
    cairo_fill(context);
  }

  void disc(Point centre, double radius, Color color) override {
    circle(centre, radius);
    set(color);
    cairo_fill(context_.get());
  }

  void ring(Point centre, double radius, double width, Color color) override {
    circle(centre, radius);
    set(color);
    cairo_set_dash(context_.get(), nullptr, 0, 0.0);
    cairo_set_line_width(context_.get(), width);
    cairo_stroke(context_.get());
  }

  void gradient(const Box& box, Color from, Color to, bool to_the_right) override {
    const Owned<cairo_pattern_t, cairo_pattern_destroy> pattern(
        to_the_right ? cairo_pattern_create_linear(box.left, 0.0, box.right, 0.0)
                     : cairo_pattern_create_linear(0.0, box.top, 0.0, box.bottom));
    cairo_pattern_add_color_stop_rgba(pattern.get(), 0.0, from.red, from.green, from.blue,
                                      from.alpha);
    cairo_pattern_add_color_stop_rgba(pattern.get(), 1.0, to.red, to.green, to.blue, to.alpha);
    rectangle(box);
    cairo_set_source(context_.get(), pattern.get());
    cairo_fill(context_.get());
  }

  void text(Point at, const std::string& text, const Lettering& lettering, Point anchor) override {
    cairo_t* context = context_.get();
    PangoLayout* layout = lay_out(text, lettering);
    const auto [width, height] = extent_of(layout);
    const Point corner{std::round(at.x - anchor.x * width), std::round(at.y - anchor.y * height)};
    cairo_move_to(context, corner.x, corner.y);
    if (lettering.halo) {
      pango_cairo_layout_path(context, layout);
      set(*lettering.halo);
      cairo_set_dash(context, nullptr, 0, 0.0);
      cairo_set_line_width(context, 3.0);
      cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
      cairo_stroke(context);
      cairo_move_to(context, corner.x, corner.y);
    }
    set(lettering.color);
    pango_cairo_show_layout(context, layout);
    cairo_new_path(context);
  }

  Point extent(const std::string& text, const Lettering& lettering) override {
    return extent_of(lay_out(text, lettering));
  }

  Box ink(const std::string& text, const Lettering& lettering) override {
    PangoRectangle ink{};
    pango_layout_get_pixel_extents(lay_out(text, lettering), &ink, nullptr);
    return {1.0 * ink.x, 1.0 * ink.y, 1.0 * ink.x + ink.width, 1.0 * ink.y + ink.height};
  }

  void clip(const Box& box) override {
    rectangle(box);
    cairo_clip(context_.get());
  }

  void unclip() override { cairo_reset_clip(context_.get()); }

  std::string finish() override {
    std::string file;
    cairo_surface_write_to_png_stream(image_.get(), append, &file);
    cairo_surface_finish(image_.get());
    cairo_status_t status = cairo_status(context_.get());
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(image_.get());
    if (status != CAIRO_STATUS_SUCCESS) {
      throw HostError(std::string("the picture can't be drawn: ") + cairo_status_to_string(status));
    }
    return file;
  }

 private:
  PangoLayout* lay_out(const std::string& text, const Lettering& lettering) {
    set_font(layout_.get(), lettering);
    pango_layout_set_text(layout_.get(), text.c_str(), static_cast<int>(text.size()));
    return layout_.get();
  }

  void set(Color color) {
    cairo_set_source_rgba(context_.get(), color.red, color.green, color.blue, color.alpha);
  }

  void trace(const std::vector<Point>& points) {
    cairo_new_path(context_.get());
    for (const auto& [x, y] : points) cairo_line_to(context_.get(), x, y);
  }

  void circle(Point centre, double radius) {
    cairo_new_path(context_.get());
    cairo_arc(context_.get(), centre.x, centre.y, radius, 0.0, 2 * std::numbers::pi);
  }

  void rectangle(const Box& box) {
    cairo_rectangle(context_.get(), box.left, box.top, box.right - box.left, box.bottom - box.top);
  }

  Owned<cairo_surface_t, cairo_surface_destroy> image_;
  Owned<cairo_t, cairo_destroy> context_;
  Owned<PangoLayout, g_object_unref> layout_;
};

}  // namespace

std::unique_ptr<Surface> png_surface(int width, int height) {
  return std::make_unique<PngSurface>(width, height);
}

}  // namespace quor_host
