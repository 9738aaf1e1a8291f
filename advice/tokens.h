// The words, numbers, texts and signs of one statement, as its author sees them: a blank between
// two letters parts two words, though the language reads one.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "script.h"

namespace quor_advice {

enum class TokenKind {
  word,
  number,
  text,       ///< in single quotes
  reference,  ///< in double quotes
  sign,       ///< an operator
  open,
  close,
  comma,
  colon,  ///< ":" or ":="
};

/// What stands in front of a token.
struct Gap {
  bool is_there = false;
  bool has_line_end = false;
  bool has_tab = false;
  bool has_comment = false;
};

struct Token {
  TokenKind kind = TokenKind::word;
  std::string text;  ///< as the language reads it, in capitals outside quotes
  size_t begin = 0;  ///< offsets in the script
  size_t end = 0;
  size_t position = 0;  ///< in the statement's text
  Gap gap;
  bool is_unary = false;  ///< a sign of the operand behind it

  bool is(TokenKind wanted, std::string_view wanted_text) const {
    return kind == wanted && text == wanted_text;
  }
  bool is_sign(std::string_view sign) const { return is(TokenKind::sign, sign); }
};

using Tokens = std::span<const Token>;

std::vector<Token> tokenize(const Slot& slot, std::string_view script);

/// Whether the sign compares: =, <>, !, <, >, <= or >=.
bool is_comparison(const Token& token);

}  // namespace quor_advice
