#include "mapped_text.h"

#include <algorithm>

#include "letters.h"

namespace quor_advice {

MappedText map_text(std::string_view script) {
  MappedText text;
  text.bytes = script;
  text.places.resize(script.size());
  for (size_t i = 0; i < script.size(); ++i) text.places[i] = i;
  return text;
}

void replace_all(MappedText& text, std::string_view from, std::string_view to, size_t shift) {
  const bool has_letters = std::ranges::any_of(from, is_letter);
  const std::string upper = has_letters ? to_upper(text.bytes) : text.bytes;
  size_t found = upper.find(from);
  if (found == std::string::npos) return;
  MappedText out;
  size_t done = 0;
  for (; found != std::string::npos; found = upper.find(from, done)) {
    for (; done < found; ++done) out.append(text.bytes[done], text.places[done]);
    for (size_t i = 0; i < to.size(); ++i) {
      const bool is_last = i + 1 == to.size();
      const size_t source = is_last ? found + from.size() - 1 - shift : found + shift;
      out.append(to[i], text.places[source]);
    }
    done = found + from.size();
  }
  for (; done < text.bytes.size(); ++done) out.append(text.bytes[done], text.places[done]);
  text = std::move(out);
}

}  // namespace quor_advice
