#include "formatting.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "layout.h"
#include "letters.h"
#include "reading.h"
#include "syntax.h"

namespace quor_advice {
namespace {

/// The line ends of a script as line feeds.
std::string with_line_feeds(std::string_view script) {
  std::string text;
  for (size_t i = 0; i < script.size(); ++i) {
    if (script[i] == '\r' && script.substr(i + 1, 1) == "\n") continue;
    text += script[i] == '\r' ? '\n' : script[i];
  }
  return text;
}

std::string with_carriage_returns(std::string_view text) {
  std::string out;
  for (const char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return out;
}

bool is_same(const Statement& a, const Statement& b) {
  return std::ranges::equal(a.tokens, b.tokens, [](const Token& x, const Token& y) {
    return x.kind == y.kind && x.is_unary == y.is_unary;
  });
}

/// Whether the library reads the same statements in both.
bool reads_the_same(const Reading& a, const Reading& b) {
  const auto next = [](const Reading& reading, size_t& at) {
    while (at < reading.scan.slots.size() && reading.scan.slots[at].text.bytes.empty()) ++at;
    return at < reading.scan.slots.size();
  };
  size_t i = 0;
  size_t j = 0;
  while (next(a, i) && next(b, j)) {
    const Slot& slot = a.scan.slots[i];
    const Slot& other = b.scan.slots[j];
    const bool is_equal = slot.text.bytes == other.text.bytes && slot.is_closed == other.is_closed;
    if (!is_equal || !is_same(a.statements[i++], b.statements[j++])) return false;
  }
  return !next(a, i) && !next(b, j) && a.scan.ends_well == b.scan.ends_well &&
         a.scan.open_comment.has_value() == b.scan.open_comment.has_value();
}

bool reads_as(std::string_view text, const Slot& slot, const Statement& statement) {
  const Reading reading = read_script(text, {});
  return reading.statements.size() == 1 && is_same(reading.statements[0], statement) &&
         reading.scan.slots[0].text.bytes == slot.text.bytes &&
         reading.scan.slots[0].is_closed == slot.is_closed;
}

std::string_view without_end_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\n") + 1);
}

/// Statements and comments one after the other.
class Formatter {
 public:
  explicit Formatter(const Reading& reading) : reading_(reading), script_(reading.script) {}

  std::string run() {
    for (size_t i = 0; i < reading_.statements.size(); ++i) {
      const Statement& statement = reading_.statements[i];
      if (statement.tokens.empty()) continue;
      asides_before(statement.tokens.front().begin);
      const Slot& slot = reading_.scan.slots[i];
      const size_t begin = statement.tokens.front().begin;
      const size_t end = slot.is_closed ? slot.end + 1 : slot.end;
      begin_line(begin);
      const std::string text = formatted(statement, slot, script_.substr(begin, end - begin));
      text_ += slot.is_closed ? std::string_view(text) : without_end_blanks(text);
      skip_asides(slot.end);
      done_ = end;
    }
    asides_before(absent);
    return std::move(text_) + '\n';
  }

 private:
  /// What stands between two statements; what begins on the line of the first one stays there.
  void asides_before(size_t place) {
    const std::vector<Aside>& asides = reading_.scan.asides;
    for (; aside_ < asides.size() && asides[aside_].begin < place; ++aside_) {
      const Aside aside = asides[aside_];
      const bool goes_on = !text_.empty() && line_ends_before(aside.begin) == 0;
      if (goes_on) {
        text_ += ' ';
      } else {
        begin_line(aside.begin);
      }
      text_ += without_end_blanks(script_.substr(aside.begin, aside.end - aside.begin));
      done_ = aside.end;
    }
  }

  void skip_asides(size_t place) {
    const std::vector<Aside>& asides = reading_.scan.asides;
    while (aside_ < asides.size() && asides[aside_].begin < place) ++aside_;
  }

  /// Line ends between what is done and a place.
  size_t line_ends_before(size_t place) const {
    return static_cast<size_t>(std::ranges::count(script_.substr(done_, place - done_), '\n'));
  }

  void begin_line(size_t place) {
    if (text_.empty()) return;
    text_ += line_ends_before(place) > 1 ? "\n\n" : "\n";
  }

  std::string formatted(const Statement& statement, const Slot& slot,
                        std::string_view written) const {
    // A mistake in it may be a ";" that is missing, which joins what its author has on two lines.
    if (!check_form(reading_, statement).empty()) return std::string(written);
    const std::vector<Aside>& asides = reading_.scan.asides;
    for (size_t i = aside_; i < asides.size() && asides[i].begin < slot.end; ++i) {
      if (!can_move(asides[i], statement)) return std::string(written);
    }
    std::string laid_out = lay_out(statement, script_, asides, slot.is_closed, slot.end);
    return reads_as(laid_out, slot, statement) ? laid_out : std::string(written);
  }

  /// A comment of one line between two tokens.
  bool can_move(const Aside& aside, const Statement& statement) const {
    if (script_.substr(aside.begin, aside.end - aside.begin).find('\n') != absent) return false;
    const auto next = std::ranges::upper_bound(statement.tokens, aside.begin, {}, &Token::begin);
    return next == statement.tokens.begin() || (next - 1)->end <= aside.begin;
  }

  const Reading& reading_;
  std::string_view script_;
  std::string text_;
  size_t done_ = 0;   ///< offset behind what is written
  size_t aside_ = 0;  ///< the next one
};

std::optional<size_t> unreadable_place(const ScannedScript& scan) {
  const auto open =
      std::ranges::find_if(scan.quoted, [](const Quoted& quoted) { return !quoted.end; });
  return open != scan.quoted.end() ? open->begin : scan.half_line_comment;
}

}  // namespace

Formatted format_script(std::string_view script) {
  if (script.empty()) return {};
  const std::string text = with_line_feeds(script);
  const Reading reading = read_script(text, {});
  if (unreadable_place(reading.scan)) {
    return {std::string(script), unreadable_place(scan_script(script))};
  }
  std::string formatted = Formatter(reading).run();
  if (!reads_the_same(read_script(formatted, {}), reading)) {
    // Behind some comments the last line end closes a statement that is open without it.
    formatted.pop_back();
    if (!reads_the_same(read_script(formatted, {}), reading)) return {std::string(script), {}};
  }
  const size_t line_end = script.find_first_of("\r\n");
  const bool has_returns = line_end != absent && script.substr(line_end, 2) == "\r\n";
  return {has_returns ? with_carriage_returns(formatted) : std::move(formatted), {}};
}

}  // namespace quor_advice
