#include "colours.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "host/panes/theme.h"

namespace quor_host {
namespace {

constexpr const char* theme_names[] = {"light", "dark"};

std::string hexadecimal(Color color) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "#";
  for (const double share : {color.red, color.green, color.blue}) {
    const auto level = static_cast<unsigned>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
    text += {digits[level >> 4U], digits[level & 15U]};
  }
  return text;
}

struct NamedColor {
  const char* name;
  Color Theme::*color;
};
constexpr NamedColor theme_colors[] = {
    {"ground", &Theme::ground},       {"grid", &Theme::grid},     {"mark", &Theme::mark},
    {"label", &Theme::label},         {"ink", &Theme::ink},       {"rise", &Theme::rise},
    {"fall", &Theme::fall},           {"buy", &Theme::buy},       {"sell", &Theme::sell},
    {"close_out", &Theme::close_out}, {"notice", &Theme::notice},
};

}  // namespace

Json colours_json(const std::vector<Record>& records) {
  std::set<std::string> keys = {"Theme.Rise", "Theme.Fall", "Theme.Ink", "Theme.Label"};
  for (const Record& record : records) {
    for (const auto& [key, text] : record.texts) {
      if (key.ends_with("Color") && !text.empty()) keys.insert(text);
    }
  }
  Json colours = Json::object();
  for (const std::string& key : keys) {
    Json& both = colours[key];
    for (const char* const name : theme_names) {
      const Theme& theme = theme_named(name);
      both[name] = {{"line", hexadecimal(theme.line(key))},
                    {"text", hexadecimal(theme.text(key))},
                    {"area", hexadecimal(theme.area(key, 1.0))}};
    }
  }
  return colours;
}

Json themes_json() {
  Json themes;
  for (const char* const name : theme_names) {
    for (const auto& [color_name, color] : theme_colors) {
      themes[name][color_name] = hexadecimal(theme_named(name).*color);
    }
  }
  return themes;
}

}  // namespace quor_host
