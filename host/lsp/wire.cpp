#include "wire.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace quor_lsp {
namespace {

/// A line without its end; nothing at the end of the stream. Of a long one the front.
std::optional<std::string> read_line(std::istream& in) {
  constexpr size_t longest = 4096;
  std::string line;
  for (int c = in.get(); c != std::istream::traits_type::eof(); c = in.get()) {
    if (c == '\n') {
      if (line.ends_with('\r')) line.pop_back();
      return line;
    }
    if (line.size() < longest) line += static_cast<char>(c);
  }
  return std::nullopt;
}

/// The number of "Content-Length: 123".
std::optional<size_t> length_of(std::string_view line) {
  constexpr std::string_view key = "content-length:";
  const auto is_same = [](char a, char b) { return (a | 0x20) == (b | 0x20) || a == b; };
  if (line.size() < key.size() || !std::ranges::equal(line.substr(0, key.size()), key, is_same))
    return std::nullopt;
  line.remove_prefix(key.size());
  while (line.starts_with(' ')) line.remove_prefix(1);
  while (line.ends_with(' ')) line.remove_suffix(1);
  size_t length = 0;
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), length);
  if (error != std::errc() || end != line.data() + line.size()) return std::nullopt;
  return length;
}

}  // namespace

std::optional<std::string> read_message(std::istream& in) {
  constexpr size_t unknown = SIZE_MAX;
  size_t length = unknown;
  while (const auto line = read_line(in)) {
    length = length_of(*line).value_or(length);
    if (!line->empty() || length == unknown) continue;
    if (length > longest_message) {
      in.ignore(static_cast<std::streamsize>(std::min<size_t>(length, INT64_MAX)));
      length = unknown;
      continue;
    }
    std::string message(length, '\0');
    in.read(message.data(), static_cast<std::streamsize>(length));
    if (static_cast<size_t>(in.gcount()) < length) return std::nullopt;
    return message;
  }
  return std::nullopt;
}

void write_message(std::ostream& out, std::string_view message) {
  out << "Content-Length: " << message.size() << "\r\n\r\n" << message << std::flush;
}

}  // namespace quor_lsp
