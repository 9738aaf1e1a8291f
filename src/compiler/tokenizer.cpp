#include "compiler/tokenizer.h"

#include <algorithm>
#include <initializer_list>

#include "tables/operator_table.h"

namespace quor {
namespace {

std::vector<Token> split_tokens(std::string_view text,
                                std::initializer_list<std::string_view> pairs) {
  std::vector<Token> tokens;
  bool quoted = false;
  size_t start = 0;
  size_t at = 0;
  const auto close_token = [&] {
    if (at > start) tokens.push_back({start, text.substr(start, at - start)});
  };
  while (at < text.size()) {
    if (text[at] == '\'') quoted = !quoted;
    if (quoted || !is_operator_sign(text[at])) {
      ++at;
      continue;
    }
    close_token();
    const std::string_view pair = text.substr(at, 2);
    const size_t length = std::ranges::find(pairs, pair) != pairs.end() ? 2 : 1;
    tokens.push_back({at, text.substr(at, length)});
    at += length;
    start = at;
  }
  close_token();
  return tokens;
}

}  // namespace

std::vector<Token> tokenize(std::string_view text) {
  std::vector<Token> tokens = split_tokens(text, {">=", "<=", "<>", ":="});
  tokens.push_back({text.size() - 1, end_token});
  return tokens;
}

std::vector<Token> tokenize_expression(std::string_view text) {
  return split_tokens(text, {">=", "<=", "<>", ":=", "&&", "||"});
}

}  // namespace quor
