#include "text/strings.h"

#include <algorithm>

namespace quor {

void replace_all(std::string& text, std::string_view from, std::string_view to) {
  size_t found = text.find(from);
  if (found == std::string::npos) return;
  std::string out;
  out.reserve(text.size());
  size_t done = 0;
  for (; found != std::string::npos; found = text.find(from, done)) {
    out.append(text, done, found - done);
    out.append(to);
    done = found + from.size();
  }
  out.append(text, done);
  text = std::move(out);
}

void replace_all_ignoring_case(std::string& text, std::string_view from, std::string_view to) {
  const auto same = [](char a, char b) { return to_lower(a) == to_lower(b); };
  std::string out;
  out.reserve(text.size());
  auto done = text.cbegin();
  for (;;) {
    const auto found = std::search(done, text.cend(), from.begin(), from.end(), same);
    out.append(done, found);
    if (found == text.cend()) break;
    out.append(to);
    done = found + static_cast<std::string::difference_type>(from.size());
  }
  text = std::move(out);
}

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
  return split_in_order(text, std::span(&separator, 1));
}

std::vector<std::string_view> split_in_order(std::string_view text,
                                             std::span<const std::string_view> separators) {
  std::vector<std::string_view> pieces;
  // A separator that is missing from what is left is missing from every later rest, too.
  for (const std::string_view separator : separators) {
    for (size_t found = text.find(separator); found != std::string_view::npos;
         found = text.find(separator)) {
      if (found > 0) pieces.push_back(text.substr(0, found));
      text.remove_prefix(found + separator.size());
    }
  }
  if (!text.empty()) pieces.push_back(text);
  return pieces;
}

std::string_view trim(std::string_view text, char sign) {
  while (!text.empty() && text.front() == sign) text.remove_prefix(1);
  while (!text.empty() && text.back() == sign) text.remove_suffix(1);
  return text;
}

char to_upper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

char to_lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string upper_case(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), to_upper);
  return out;
}

void upper_case_outside_quotes(std::string& text) {
  bool quoted = false;
  for (char& c : text) {
    if (c == '\'' || c == '"') quoted = !quoted;
    if (!quoted) c = to_upper(c);
  }
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return to_lower(x) == to_lower(y); });
}

}  // namespace quor
