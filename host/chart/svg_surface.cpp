#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "letters.h"
#include "surface.h"

namespace quor_host {
namespace {

/// Two decimals at most.
std::string number(double value) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, 2)
                       .ptr;
  std::string text(digits.data(), end);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text == "-0" ? "0" : text;
}

/// An attribute.
std::string set(std::string_view name, std::string_view value) {
  return ' ' + std::string(name) + "=\"" + std::string(value) + '"';
}

std::string set(std::string_view name, double value) { return set(name, number(value)); }

std::string code_of(Color color) {
  constexpr std::string_view hexadecimal = "0123456789abcdef";
  std::string code = "#";
  for (const double part : {color.red, color.green, color.blue}) {
    const auto byte = static_cast<unsigned>(std::lround(part * 255));
    code += {hexadecimal[byte >> 4U & 15U], hexadecimal[byte & 15U]};
  }
  return code;
}

/// A colour, and how much it covers.
std::string paint(std::string_view name, std::string_view opacity, Color color) {
  const std::string text = set(name, code_of(color));
  return color.alpha < 1.0 ? text + set(opacity, color.alpha) : text;
}

std::string filled(Color color) { return paint("fill", "fill-opacity", color); }
std::string stroked(Color color) { return paint("stroke", "stroke-opacity", color); }
std::string stop(Color color) { return paint("stop-color", "stop-opacity", color); }

std::string place(const Box& box) {
  return set("x", box.left) + set("y", box.top) + set("width", box.right - box.left) +
         set("height", box.bottom - box.top);
}

std::string escaped(std::string_view text) {
  std::string out;
  for (const char letter : text) {
    switch (letter) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      default:
        out += static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
    }
  }
  return out;
}

/// Letters stay letters, for what shows the picture to find a font for.
class SvgSurface : public Surface {
 public:
  SvgSurface(int width, int height) {
    const std::string right = std::to_string(width);
    const std::string bottom = std::to_string(height);
    add("svg", set("xmlns", "http://www.w3.org/2000/svg") + set("width", right) +
                   set("height", bottom) + set("viewBox", "0 0 " + right + ' ' + bottom) +
                   set("font-family", "DejaVu Sans, Verdana, sans-serif") +
                   set("xml:space", "preserve"));
  }

  void line(const std::vector<Point>& points, const Stroke& stroke) override {
    std::string attributes = set("points", list(points)) + set("fill", "none") +
                             stroked(stroke.color) + set("stroke-linejoin", "round");
    if (stroke.width != 1.0) attributes += set("stroke-width", stroke.width);
    std::string dashes;
    for (const double dash : stroke.dashes) dashes += (dashes.empty() ? "" : " ") + number(dash);
    if (!dashes.empty()) attributes += set("stroke-dasharray", dashes);
    add("polyline", attributes, "/");
  }

  void area(const std::vector<Point>& corners, Color color) override {
    add("polygon", set("points", list(corners)) + filled(color), "/");
  }

  void tag(const Box& box, double radius, Color color) override {
    add("rect", place(box) + set("rx", radius) + filled(color), "/");
  }

  void disc(Point centre, double radius, Color color) override {
    add("circle", circle(centre, radius) + filled(color), "/");
  }

  void ring(Point centre, double radius, double width, Color color) override {
    add("circle",
        circle(centre, radius) + set("fill", "none") + stroked(color) + set("stroke-width", width),
        "/");
  }

  void gradient(const Box& box, Color from, Color to, bool to_the_right) override {
    const std::string name = next_name();
    add("linearGradient", set("id", name) + set("x2", to_the_right ? 1.0 : 0.0) +
                              set("y2", to_the_right ? 0.0 : 1.0));
    add("stop", set("offset", 0.0) + stop(from), "/");
    add("stop", set("offset", 1.0) + stop(to), "/");
    close("linearGradient");
    add("rect", place(box) + set("fill", "url(#" + name + ')'), "/");
  }

  /// The point itself is given where a text has its start, its middle or its end, so that it has it
  /// in any font.
  void text(Point at, const std::string& text, const Lettering& lettering, Point anchor) override {
    const auto [width, height] = extent(text, lettering);
    std::string attributes;
    if (anchor.x == 0.5 || anchor.x == 1.0) {
      attributes = set("text-anchor", anchor.x == 0.5 ? "middle" : "end");
    } else {
      at.x -= anchor.x * width;
    }
    const double top = at.y - anchor.y * height;
    attributes += set("x", at.x) +
                  set("y", std::round(top) + std::ceil(base_line * lettering.size)) +
                  set("font-size", lettering.size) + filled(lettering.color);
    if (lettering.bold) attributes += set("font-weight", "bold");
    if (lettering.halo) {
      attributes += set("paint-order", "stroke") + stroked(*lettering.halo) +
                    set("stroke-width", 3.0) + set("stroke-linejoin", "round");
    }
    file_ += "<text" + attributes + '>' + escaped(text) + "</text>\n";
  }

  Point extent(const std::string& text, const Lettering& lettering) override {
    return {std::ceil(letters_width(text, lettering.bold) * lettering.size),
            std::ceil(line_height * lettering.size)};
  }

  Box ink(const std::string& text, const Lettering& lettering) override {
    const Point whole = extent(text, lettering);
    constexpr double tallest = 0.78;
    return {0.0, std::floor((base_line - tallest) * lettering.size), whole.x,
            go_deep(text) ? whole.y : std::ceil(base_line * lettering.size)};
  }

  void clip(const Box& box) override {
    const std::string name = next_name();
    add("clipPath", set("id", name));
    add("rect", place(box), "/");
    close("clipPath");
    add("g", set("clip-path", "url(#" + name + ')'));
    is_clipped_ = true;
  }

  void unclip() override {
    if (is_clipped_) close("g");
    is_clipped_ = false;
  }

  std::string finish() override {
    unclip();
    close("svg");
    return std::move(file_);
  }

 private:
  static std::string list(const std::vector<Point>& points) {
    std::string text;
    for (const auto& [x, y] : points) {
      text += (text.empty() ? "" : " ") + number(x) + ',' + number(y);
    }
    return text;
  }

  static std::string circle(Point centre, double radius) {
    return set("cx", centre.x) + set("cy", centre.y) + set("r", radius);
  }

  std::string next_name() { return 'n' + std::to_string(++names_); }

  void add(std::string_view element, const std::string& attributes, std::string_view end = "") {
    file_ += '<';
    file_ += element;
    file_ += attributes;
    file_ += end;
    file_ += ">\n";
  }

  void close(std::string_view element) { add('/' + std::string(element), ""); }

  std::string file_;
  int names_ = 0;
  bool is_clipped_ = false;
};

}  // namespace

std::unique_ptr<Surface> svg_surface(int width, int height) {
  return std::make_unique<SvgSurface>(width, height);
}

}  // namespace quor_host
