// Texts that must be UTF-8, and what they are instead.
#pragma once

#include <string>
#include <string_view>

namespace quor_host {

/// The text of a file as `read_file` and `read_input` give it, which must be UTF-8.
std::string read_text(const std::string& path);
std::string read_text_input(const std::string& path);

/// Throws HostError for bytes that aren't UTF-8, with the encoding that they most likely have.
/// `name` is what messages call the text.
void require_utf8(std::string_view bytes, const std::string& name);

}  // namespace quor_host
