// Tokens of a statement in the in-band form: runs of bytes between operator signs.
#pragma once

#include <string_view>
#include <vector>

namespace quor {

struct Token {
  size_t position;
  std::string_view text;  ///< points into the text that was split
};

/// The token behind the last one.
inline constexpr std::string_view end_token = "#";

/// Splits the text for the passes that rewrite it; ">=", "<=", "<>" and ":=" are one token each,
/// text in single quotes stays whole. The end token closes the list. A text that holds "#" alone
/// between operators gives that token, too, and passes that stop at it stop there.
std::vector<Token> tokenize(std::string_view text);

/// The tokens of a final expression: as `tokenize`, but "&&" and "||" are one token each and no end
/// token follows.
std::vector<Token> tokenize_expression(std::string_view text);

}  // namespace quor
