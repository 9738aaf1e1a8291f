#include "drawing/colour_text.h"

#include "core/status.h"
#include "tables/style_table.h"

namespace quor {
namespace {

bool is_hexadecimal(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

}  // namespace

std::optional<std::string> fixed_colour_text(std::string_view word) {
  if (const auto brush = colour_brush(word)) return std::string(*brush);
  constexpr size_t prefix = 5;
  if (word.size() <= prefix) return std::nullopt;
  word.remove_prefix(prefix);
  if (word.front() == '#') word.remove_prefix(1);
  if (word.size() < 6 || word.size() > 8 || !is_hexadecimal(word.front())) return std::nullopt;
  return "#" + std::string(word);
}

Status colour_text(DataPoolCenter& pool, std::string_view word, std::string& error,
                   std::string& text) {
  if (word == "COLORAUTO") {
    text = auto_colour(pool.script.auto_color_counter++);
    return Status::ok;
  }
  if (auto fixed = fixed_colour_text(word)) {
    text = std::move(*fixed);
    return Status::ok;
  }
  text.clear();
  append_error(error, word, 0);
  return Status::bad_colour;
}

}  // namespace quor
