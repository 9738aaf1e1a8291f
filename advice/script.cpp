#include "script.h"

#include <utility>

#include "letters.h"

namespace quor_advice {
namespace {

/// No quote, no part of a mark, no blank, no end, and no sign that may be written twice.
constexpr bool is_plain(char c) {
  constexpr std::string_view others = "()<>,.:+-%_&|$";
  return is_letter(c) || is_digit(c) || is_beyond_ascii(c) || others.find(c) != absent;
}

/// One pass over the bytes. Quotes count everywhere, even inside comments and inside the other
/// kind of quote.
class Scanner {
 public:
  explicit Scanner(MappedText text) : text_(std::move(text)) {}

  ScannedScript run() {
    while (at_ < text_.bytes.size() && !script_.half_line_comment) take(text_.bytes[at_]);
    if (!current_.bytes.empty()) {
      script_.slots.push_back({std::move(current_), end_place(), false});
      script_.is_unfinished = true;
    }
    script_.ends_well = last_ == ';' || last_ == '\n' || text_.bytes.empty();
    if (in_comment_ && !in_line_comment_) script_.open_comment = comment_begin_;
    if (in_comment_) script_.asides.push_back({comment_begin_, end_place()});
    return std::move(script_);
  }

 private:
  size_t place() const { return text_.places[at_]; }
  size_t end_place() const {
    if (script_.half_line_comment) return *script_.half_line_comment;
    return text_.places.empty() ? 0 : text_.places.back() + 1;
  }
  /// Whether these two bytes stand here.
  bool at(std::string_view mark) const {
    return text_.bytes[at_] == mark[0] && at_ + 1 < text_.bytes.size() &&
           text_.bytes[at_ + 1] == mark[1];
  }

  void take(char c) {
    toggle(c, '\'', in_single_);
    toggle(c, '"', in_double_);
    if (in_single_ || in_double_) {
      if (in_comment_) {
        note_hidden_end(c);
      } else {
        current_.append(c, place());
      }
      last_ = c;
      ++at_;
    } else if (!take_plain() && !take_comment_mark(c) && !take_blank(c)) {
      if (!in_comment_) take_code(c);
      ++at_;
    }
  }

  /// What stands for itself, as much as there is at once.
  bool take_plain() {
    if (in_comment_) return false;
    const size_t begin = at_;
    while (at_ < text_.bytes.size() && is_plain(text_.bytes[at_])) ++at_;
    if (at_ == begin) return false;
    current_.append(text_, begin, at_);
    last_ = text_.bytes[at_ - 1];
    return true;
  }

  void toggle(char c, char mark, std::optional<size_t>& open) {
    if (c != mark) return;
    if (open) {
      script_.quoted[*open].end = place();
      open.reset();
    } else {
      open = script_.quoted.size();
      script_.quoted.push_back({mark, place(), std::nullopt, in_comment_, false});
    }
  }

  void note_hidden_end(char c) {
    const bool ends = in_line_comment_ ? c == '\n' : c == '}' || at("*/");
    if (!ends) return;
    for (const auto& open : {in_single_, in_double_}) {
      if (open && script_.quoted[*open].in_comment) script_.quoted[*open].hides_comment_end = true;
    }
  }

  bool take_comment_mark(char c) {
    if (c == '{' && !in_comment_) {
      open_comment(1);
    } else if (c == '}' && !in_line_comment_) {
      close_comment(1);
    } else if (at("*/")) {
      close_comment(2);
    } else if (in_comment_ && c != '\n') {
      if (c == '\t') last_ = c;
      ++at_;
    } else if (at("/*")) {
      open_comment(2);
      last_ = '/';
    } else if (at("//")) {
      if (!current_.bytes.empty() && last_ != ';') {
        script_.half_line_comment = place();
        return true;
      }
      open_comment(2);
      in_line_comment_ = true;
    } else {
      return false;
    }
    return true;
  }

  /// Closing marks count without a comment, too.
  void close_comment(size_t size) {
    if (in_comment_) {
      script_.comments.push_back({comment_begin_, place()});
    } else {
      script_.stray_ends.push_back(place());
    }
    script_.asides.push_back({in_comment_ ? comment_begin_ : place(), place() + size});
    in_comment_ = false;
    at_ += size;
  }

  void open_comment(size_t size) {
    in_comment_ = true;
    comment_begin_ = place();
    at_ += size;
  }

  bool take_blank(char c) {
    if (c == '\n') {
      end_line();
    } else if (c == '\t') {
      last_ = c;
    } else if (c != ' ') {
      return false;
    } else if (current_.bytes.size() == 5 && to_upper(current_.bytes) == "CONST") {
      current_.append(c, place());
    }
    ++at_;
    return true;
  }

  void end_line() {
    if (in_comment_ && in_line_comment_) {
      script_.asides.push_back({comment_begin_, place()});
      in_comment_ = in_line_comment_ = false;
    }
    if (!in_comment_ && last_ == ';') {
      last_ = '\n';
    } else if (current_.bytes.empty()) {
      script_.slots.push_back({{}, place(), true});
      last_ = '\n';
    }
  }

  void take_code(char c) {
    if (c == ';') {
      script_.slots.push_back({std::move(current_), place(), true});
      current_.clear();
    } else if (c != '=' || (last_ != '=' && last_ != '!')) {
      current_.append(c, place());
    }
    last_ = c;
  }

  MappedText text_;
  ScannedScript script_;
  MappedText current_;
  size_t at_ = 0;
  size_t comment_begin_ = 0;
  char last_ = '\0';
  bool in_comment_ = false;
  bool in_line_comment_ = false;
  std::optional<size_t> in_single_;  ///< the stretch that is open
  std::optional<size_t> in_double_;
};

}  // namespace

ScannedScript scan_script(std::string_view script) {
  MappedText text = map_text(script);
  replace_all(text, "\r\n", "\n");
  replace_all(text, "\r", "\n");
  replace_all(text, " AND ", "&&", 1);
  replace_all(text, " OR ", "||", 1);
  replace_all(text, "\xC2\xA0", " ");
  return Scanner(std::move(text)).run();
}

}  // namespace quor_advice
