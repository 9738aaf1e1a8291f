// Messages as the protocol frames them: a header that tells the length, an empty line, the text.
#pragma once

#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace quor_lsp {

/// The longest message that is read; longer ones are passed over.
inline constexpr size_t longest_message = 64U << 20U;

/// The next message; nothing at the end of the stream. What is no header is passed over, line by
/// line, up to the next one.
std::optional<std::string> read_message(std::istream& in);

void write_message(std::ostream& out, std::string_view message);

}  // namespace quor_lsp
