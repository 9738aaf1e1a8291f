#include "layout.h"

#include <algorithm>
#include <array>
#include <utility>

#include "letters.h"

namespace quor_advice {
namespace {

/// A stretch of text, a place where a line may end, or an edge of a group of such places: either
/// all of a group's lines end there or none.
struct Part {
  enum class Kind { text, line, open, close };
  Kind kind = Kind::text;
  std::string text;  ///< of a line: what stands there if it doesn't end
};

constexpr size_t step = 4;            ///< blanks that a group is moved in
constexpr size_t deepest_group = 40;  ///< parentheses in one another; what is deeper isn't broken

/// Prints parts by the rule that an outer group breaks before an inner one.
class Printer {
 public:
  explicit Printer(const std::vector<Part>& parts) : parts_(parts) {}

  std::string run() {
    for (size_t i = 0; i < parts_.size(); ++i) {
      const Part& part = parts_[i];
      if (part.kind == Part::Kind::open) {
        broken_.push_back(is_broken() && !fits(i));
        moved_ += broken_.back() ? 1 : 0;
      } else if (part.kind == Part::Kind::close) {
        moved_ -= broken_.back() ? 1 : 0;
        broken_.pop_back();
      } else if (part.kind == Part::Kind::line && is_broken()) {
        text_ += '\n' + std::string(moved_ * step, ' ');
        column_ = moved_ * step;
      } else {
        add(part.text);
      }
    }
    return std::move(text_);
  }

 private:
  /// Outside of all groups lines end, too.
  bool is_broken() const { return broken_.empty() || broken_.back(); }

  void add(const std::string& text) {
    text_ += text;
    const size_t end = text.rfind('\n');
    column_ = end == absent ? column_ + width_of(text) : width_of(text.substr(end + 1));
  }

  /// Whether the group that opens at a part fits with what follows up to the next line.
  bool fits(size_t from) const {
    size_t depth = 0;
    bool is_inside = true;
    size_t width = column_;
    for (size_t i = from; i < parts_.size() && width <= widest_line; ++i) {
      const Part& part = parts_[i];
      if (part.kind == Part::Kind::line && !is_inside) return true;
      if (part.kind == Part::Kind::open) ++depth;
      if (part.kind == Part::Kind::close && depth > 0 && --depth == 0) is_inside = false;
      width += width_of(part.text);
    }
    return width <= widest_line;
  }

  const std::vector<Part>& parts_;
  std::string text_;
  size_t column_ = 0;
  size_t moved_ = 0;
  std::vector<bool> broken_;
};

/// How loosely an operator binds for the eye; 0 for what is none.
int looseness(const Token& token) {
  if (token.kind != TokenKind::sign || token.is_unary) return 0;
  struct Rank {
    std::string_view sign;
    int looseness;
  };
  constexpr std::array<Rank, 8> ranks = {
      {{"||", 5}, {"|", 5}, {"&&", 4}, {"&", 4}, {"+", 2}, {"-", 2}, {"*", 1}, {"/", 1}}};
  const auto* const row = std::ranges::find(ranks, token.text, &Rank::sign);
  if (row != ranks.end()) return row->looseness;
  return is_comparison(token) ? 3 : 1;
}

class Layout {
 public:
  Layout(const Statement& statement, std::string_view script, const std::vector<Aside>& asides)
      : statement_(statement), script_(script), asides_(asides) {
    const size_t begin = statement.tokens.front().begin;
    next_aside_ = static_cast<size_t>(std::ranges::lower_bound(asides, begin, {}, &Aside::begin) -
                                      asides.begin());
  }

  std::string run(bool is_closed, size_t end) {
    size_t begin = 0;
    if (statement_.colon != absent) {
      for (; begin < statement_.colon; ++begin) put(begin, begin > 0);
      put(begin++, true);
      text(" ");
    }
    expression({begin, statement_.expression.end}, 0);
    items();
    asides_before(end);
    if (is_closed) text(";");
    return Printer(parts_).run();
  }

 private:
  const Token& token(size_t index) const { return statement_.tokens[index]; }

  void text(std::string_view text) {
    if (text.empty()) return;
    if (parts_.empty() || parts_.back().kind != Part::Kind::text) parts_.push_back({});
    parts_.back().text += text;
  }
  void line(std::string_view flat) { parts_.push_back({Part::Kind::line, std::string(flat)}); }
  void open() { parts_.push_back({Part::Kind::open, {}}); }
  void close() { parts_.push_back({Part::Kind::close, {}}); }

  bool ends_in_blank() const {
    const auto last = std::find_if(parts_.rbegin(), parts_.rend(), [](const Part& part) {
      return part.kind == Part::Kind::text || part.kind == Part::Kind::line;
    });
    return last == parts_.rend() || last->kind == Part::Kind::line || last->text.ends_with(' ');
  }

  /// The comments in front of a place, each with blanks around.
  bool asides_before(size_t place) {
    bool is_any = false;
    for (; next_aside_ < asides_.size() && asides_[next_aside_].begin < place; ++next_aside_) {
      const Aside aside = asides_[next_aside_];
      if (!ends_in_blank()) text(" ");
      text(script_.substr(aside.begin, aside.end - aside.begin));
      is_any = true;
    }
    return is_any;
  }

  /// As the author wrote it, without blanks between the signs of one operator.
  std::string_view written(const Token& token) const {
    const std::string_view written = script_.substr(token.begin, token.end - token.begin);
    const bool is_quoted = token.kind == TokenKind::text || token.kind == TokenKind::reference;
    const bool is_apart = !is_quoted && written.find_first_of(" \t\r\n\xC2") != absent;
    return is_apart && token.kind != TokenKind::word && token.kind != TokenKind::number
               ? std::string_view(token.text)
               : written;
  }

  void put(size_t index, bool has_blank) {
    const bool has_comment = asides_before(token(index).begin);
    if ((has_blank || has_comment) && !ends_in_blank()) text(" ");
    text(written(token(index)));
  }

  bool stands_close(size_t index) const {
    return index > 0 && token(index - 1).end == token(index).begin;
  }

  /// 1E-5 is one number, though its sign reads as an operator.
  bool is_exponent_sign(size_t index) const {
    if (index == 0 || index + 1 >= statement_.tokens.size()) return false;
    const std::string& front = token(index - 1).text;
    return token(index - 1).kind == TokenKind::word && front.size() > 1 && front.ends_with('E') &&
           front.find_first_not_of("0123456789.") == front.size() - 1 && stands_close(index) &&
           stands_close(index + 1) && token(index + 1).kind == TokenKind::number;
  }

  bool is_operator(size_t index) const {
    return looseness(token(index)) > 0 && !is_exponent_sign(index);
  }

  /// The index behind the partner of an opening parenthesis.
  size_t behind(size_t index, size_t end) const {
    const bool opens = token(index).kind == TokenKind::open;
    const size_t partner = opens ? statement_.partners[index] : absent;
    return partner < end ? partner + 1 : index + 1;
  }

  /// Operands and operators; those that bind loosest begin lines.
  void expression(Range range, size_t depth) {
    int loosest = 0;
    for (size_t i = range.begin; i < range.end; i = behind(i, range.end)) {
      if (i > range.begin && is_operator(i)) loosest = std::max(loosest, looseness(token(i)));
    }
    if (depth > deepest_group) return plain(range);
    if (loosest == 0) return operand(range, depth);
    open();
    size_t begin = range.begin;
    for (size_t i = range.begin; i < range.end; i = behind(i, range.end)) {
      if (i == range.begin || !is_operator(i) || looseness(token(i)) != loosest) continue;
      expression({begin, i}, depth + 1);
      line(" ");
      put(i, false);
      text(" ");
      begin = i + 1;
    }
    expression({begin, range.end}, depth + 1);
    close();
  }

  /// Words, numbers and texts in a row, with the arguments of calls.
  void operand(Range range, size_t depth) {
    for (size_t i = range.begin; i < range.end; ++i) {
      const size_t end = behind(i, range.end);
      put(i, i > range.begin && wants_blank(i));
      if (end == i + 1) continue;
      const bool is_call = i > range.begin && token(i - 1).kind == TokenKind::word;
      arguments({i + 1, end - 1}, depth, is_call);
      put(end - 1, false);
      i = end - 1;
    }
  }

  /// The same without places where a line may end.
  void plain(Range range) {
    for (size_t i = range.begin; i < range.end; ++i) put(i, i > range.begin && wants_blank(i));
  }

  /// Between tokens of an operand.
  bool wants_blank(size_t index) const {
    const Token& before = token(index - 1);
    const Token& here = token(index);
    if (is_exponent_sign(index) || is_exponent_sign(index - 1)) return false;
    if (is_operator(index) || is_operator(index - 1)) return true;
    if (before.kind == TokenKind::comma || before.kind == TokenKind::colon) return true;
    if (here.kind == TokenKind::colon) return true;
    const bool is_tight = before.is_unary || before.kind == TokenKind::open ||
                          here.kind == TokenKind::open || here.kind == TokenKind::close ||
                          here.kind == TokenKind::comma;
    return !is_tight && !stands_close(index);
  }

  /// What stands in parentheses; that of a call may begin a line.
  void arguments(Range range, size_t depth, bool is_call) {
    if (range.empty()) return;
    if (depth > deepest_group) return plain(range);
    open();
    if (is_call) line("");
    size_t begin = range.begin;
    for (size_t i = range.begin; i < range.end; i = behind(i, range.end)) {
      if (token(i).kind != TokenKind::comma) continue;
      expression({begin, i}, depth + 1);
      put(i, false);
      line(" ");
      begin = i + 1;
    }
    expression({begin, range.end}, depth + 1);
    close();
  }

  /// What stands behind the commas of the statement, on a line of its own if need be.
  void items() {
    const size_t begin = statement_.expression.end;
    const size_t end = statement_.tokens.size();
    if (begin == end) return;
    put(begin, false);
    open();
    line(" ");
    for (const Range& item : statement_.items) {
      if (&item != &statement_.items.front()) {
        put(item.begin - 1, false);
        text(" ");
      }
      expression(item, 0);
    }
    close();
  }

  const Statement& statement_;
  std::string_view script_;
  const std::vector<Aside>& asides_;
  size_t next_aside_ = 0;
  std::vector<Part> parts_;
};

}  // namespace

std::string lay_out(const Statement& statement, std::string_view script,
                    const std::vector<Aside>& asides, bool is_closed, size_t end) {
  return Layout(statement, script, asides).run(is_closed, end);
}

}  // namespace quor_advice
