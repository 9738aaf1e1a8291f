#include "script.h"

#include <algorithm>

#include "text.h"

namespace quor_host {
namespace {

/// Line ends of all systems become one byte.
std::string with_plain_line_ends(std::string_view source) {
  std::string plain;
  for (size_t i = 0; i < source.size(); ++i) {
    if (source[i] == '\r' && i + 1 < source.size() && source[i + 1] == '\n') continue;
    plain += source[i] == '\r' ? '\n' : source[i];
  }
  return plain;
}

/// Cuts by the rules of the language: quotes count everywhere, even inside comments.
class Splitter {
 public:
  explicit Splitter(std::string source) : source_(std::move(source)) {}

  std::vector<Statement> run() {
    while (at_ < source_.size() && !stopped_) {
      const char c = source_[at_];
      take(c);
      ++at_;
      if (c == '\n') ++line_;
    }
    if (!text_.empty()) push();
    return std::move(statements_);
  }

 private:
  bool at(std::string_view word) const { return source_.compare(at_, word.size(), word) == 0; }

  void take(char c) {
    if (c == '\'') in_single_ = !in_single_;
    if (c == '"') in_double_ = !in_double_;
    if (in_single_ || in_double_) {
      if (!in_comment_) append(c == '\n' ? ' ' : c);
      last_ = c;
    } else if (c == '\n') {
      end_line();
    } else if (!close_comment(c) && (in_comment_ || !open_comment(c))) {
      if (c == '\t') last_ = c;  // also inside a comment
      if (!in_comment_) take_code(c);
    }
  }

  /// Both marks vanish outside a comment, too.
  bool close_comment(char c) {
    if (c == '}') {
      in_comment_ = in_comment_ && in_line_comment_;
      return true;
    }
    if (!at("*/")) return false;
    in_comment_ = false;
    ++at_;
    return true;
  }

  bool open_comment(char c) {
    if (c == '{') {
      in_comment_ = true;
      return true;
    }
    if (!at("//") && !at("/*")) return false;
    if (at("//")) {
      stopped_ = !text_.empty() && last_ != ';';
      in_line_comment_ = true;
    } else {
      last_ = '/';
    }
    in_comment_ = true;
    ++at_;
    return true;
  }

  void take_code(char c) {
    if (c == ';') {
      push();
      last_ = c;
    } else if (c == ' ' || c == '\t') {
      if (!text_.empty()) text_ += ' ';
    } else {
      append(c);
      last_ = c;
    }
  }

  void end_line() {
    if (in_comment_ && in_line_comment_) in_comment_ = in_line_comment_ = false;
    if (!in_comment_ && last_ == ';') {
      last_ = '\n';
    } else if (text_.empty()) {
      push();
      last_ = '\n';
    } else {
      text_ += ' ';
    }
  }

  void append(char c) {
    if (text_.empty()) begin_ = line_;
    text_ += c;
  }

  void push() {
    const size_t end = text_.find_last_not_of(' ');
    text_.resize(end == std::string::npos ? 0 : end + 1);
    statements_.push_back({text_, text_.empty() ? line_ : begin_});
    text_.clear();
  }

  std::string source_;
  std::vector<Statement> statements_;
  std::string text_;
  size_t at_ = 0;
  size_t line_ = 1;
  size_t begin_ = 1;
  char last_ = '\0';
  bool in_comment_ = false;
  bool in_line_comment_ = false;
  bool in_single_ = false;
  bool in_double_ = false;
  bool stopped_ = false;
};

/// The text in front of the first colon outside quotes, empty without one.
std::string name_of(std::string_view statement) {
  std::string name;
  char quote = '\0';
  for (const char c : statement) {
    if (quote == '\0' && c == ':') return to_upper(name);
    if (quote == c) {
      quote = '\0';
    } else if (quote == '\0' && (c == '\'' || c == '"')) {
      quote = c;
    }
    if (quote != '\0' || c != ' ') name += c;
  }
  return {};
}

}  // namespace

std::vector<Statement> split_script(std::string_view source) {
  return Splitter(with_plain_line_ends(source)).run();
}

std::vector<std::string> declared_names(const std::vector<Statement>& statements) {
  std::vector<std::string> names;
  for (const Statement& statement : statements) {
    std::string name = name_of(statement.text);
    if (name.empty() || std::ranges::find(names, name) != names.end()) continue;
    names.push_back(std::move(name));
  }
  return names;
}

}  // namespace quor_host
