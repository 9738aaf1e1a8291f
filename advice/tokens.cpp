#include "tokens.h"

#include <algorithm>
#include <array>

#include "letters.h"

namespace quor_advice {
namespace {

// The last four are no signs of an author's, though the language lets them through.
constexpr std::string_view sign_bytes = "+-*/%><=!&|^?`@";
// What a byte begins together with the one behind it.
constexpr std::array<std::string_view, 5> pairs = {">=", "<=", "<>", "&&", "||"};

bool is_mark(char c) {
  return sign_bytes.find(c) != absent || c == '(' || c == ')' || c == ',' || c == ':' ||
         c == '\'' || c == '"';
}

class Tokenizer {
 public:
  Tokenizer(const Slot& slot, std::string_view script)
      : bytes_(slot.text.bytes), places_(slot.text.places), script_(script) {}

  std::vector<Token> run() {
    tokens_.reserve(bytes_.size() / 3);
    while (at_ < bytes_.size()) {
      const char c = bytes_[at_];
      if (c == ' ') {
        ++at_;  // the one behind CONST
      } else if (c == '\'' || c == '"') {
        push(c == '"' ? TokenKind::reference : TokenKind::text, size_of_quoted(c));
      } else if (c == ':') {
        push(TokenKind::colon, bytes_.substr(at_, 2) == ":=" ? 2 : 1);
      } else if (is_mark(c)) {
        push(kind_of_mark(c), size_of_mark());
      } else {
        push_word();
      }
    }
    return std::move(tokens_);
  }

 private:
  static TokenKind kind_of_mark(char c) {
    if (c == '(') return TokenKind::open;
    if (c == ')') return TokenKind::close;
    return c == ',' ? TokenKind::comma : TokenKind::sign;
  }

  size_t size_of_mark() const {
    return std::ranges::find(pairs, bytes_.substr(at_, 2)) == pairs.end() ? 1 : 2;
  }

  /// A quote right behind a closing one opens the text again.
  size_t size_of_quoted(char mark) const {
    size_t end = at_;
    while (end < bytes_.size() && bytes_[end] == mark) {
      const size_t closing = bytes_.find(mark, end + 1);
      end = closing == absent ? bytes_.size() : closing + 1;
    }
    return end - at_;
  }

  void push_word() {
    size_t end = at_ + 1;
    while (end < bytes_.size() && bytes_[end] != ' ' && !is_mark(bytes_[end]) &&
           places_[end] == places_[end - 1] + 1) {
      ++end;
    }
    const bool is_number = to_number(bytes_.substr(at_, end - at_)).has_value();
    push(is_number ? TokenKind::number : TokenKind::word, end - at_);
  }

  void push(TokenKind kind, size_t size) {
    Token token;
    token.kind = kind;
    const std::string_view text = bytes_.substr(at_, size);
    const bool quoted = kind == TokenKind::text || kind == TokenKind::reference;
    token.text = quoted ? std::string(text) : to_upper(text);
    token.begin = places_[at_];
    token.end = places_[at_ + size - 1] + 1;
    // The second sign of "==" and "!=" isn't in the statement's text any more.
    while ((text == "=" || text == "!") && script_.substr(token.end, 1) == "=") ++token.end;
    token.position = at_;
    token.gap = gap_before(token);
    token.is_unary = is_unary(token);
    tokens_.push_back(std::move(token));
    at_ += size;
  }

  Gap gap_before(const Token& token) const {
    if (tokens_.empty() || tokens_.back().end >= token.begin) return {};
    const std::string_view between =
        script_.substr(tokens_.back().end, token.begin - tokens_.back().end);
    return {true, between.find_first_of("\r\n") != absent, between.find('\t') != absent,
            between.find("/*") != absent};
  }

  /// A plus or minus is the sign of what follows unless it stands right behind an operand; a tab, a
  /// comment of the form /* */ and a quote part it from one.
  bool is_unary(const Token& token) const {
    if (!token.is_sign("-") && !token.is_sign("+")) return false;
    if (tokens_.empty() || token.gap.has_tab || token.gap.has_comment) return true;
    const TokenKind before = tokens_.back().kind;
    return before != TokenKind::word && before != TokenKind::number && before != TokenKind::close;
  }

  std::string_view bytes_;
  const std::vector<size_t>& places_;
  std::string_view script_;
  std::vector<Token> tokens_;
  size_t at_ = 0;
};

}  // namespace

std::vector<Token> tokenize(const Slot& slot, std::string_view script) {
  return Tokenizer(slot, script).run();
}

bool is_comparison(const Token& token) {
  constexpr std::array<std::string_view, 7> signs = {"=", "<>", "!", "<", ">", "<=", ">="};
  return token.kind == TokenKind::sign && std::ranges::find(signs, token.text) != signs.end();
}

}  // namespace quor_advice
