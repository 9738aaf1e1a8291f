#include "compiler/scanner.h"

#include "core/status.h"
#include "text/strings.h"

namespace quor {
namespace {

bool ends_operand(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return byte == ')' || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z') || code >= 0x80;
}

/// One pass over the bytes. Every byte takes the first rule that fits it.
class Scanner {
 public:
  Scanner(const std::string& source, std::vector<std::string>& slots)
      : source_(source), slots_(slots) {}

  Status run(std::string& error) {
    Status status = Status::ok;
    while (at_ < source_.size() && !failed(status)) status = take(source_[at_]);
    if (!failed(status)) status = end();
    if (failed(status)) append_error(error, {}, static_cast<int32_t>(slots_.size()));
    return status;
  }

 private:
  char next() const { return at_ + 1 < source_.size() ? source_[at_ + 1] : '\0'; }

  Status take(char c) {
    // Quotes count in every state, also inside comments and inside the other kind of quote.
    if (c == '\'') in_single_ = !in_single_;
    if (c == '"') in_double_ = !in_double_;
    if (in_single_ || in_double_) {
      if (!in_comment_) current_ += c;
      last_ = c;
      ++at_;
      return Status::ok;
    }
    if (take_comment_end(c) || take_blank(c)) return Status::ok;
    if (in_comment_) {
      ++at_;
      return Status::ok;
    }
    if (c == '/' && next() == '/') return open_line_comment();
    take_sign(c);
    return Status::ok;
  }

  /// Braces and "*/": they never enter a slot and leave the last significant byte alone.
  bool take_comment_end(char c) {
    if (c == '{' && !in_comment_) {
      in_comment_ = true;
    } else if (c == '}' && !in_line_comment_) {
      in_comment_ = false;
    } else if (c == '*' && next() == '/') {
      in_comment_ = false;
      ++at_;
    } else {
      return false;
    }
    ++at_;
    return true;
  }

  bool take_blank(char c) {
    if (c == '\n') {
      end_line();
    } else if (c == ' ') {
      if (equal_ignoring_case(current_, "CONST")) current_ += c;
    } else if (c == '\t') {
      last_ = c;
    } else {
      return false;
    }
    ++at_;
    return true;
  }

  void end_line() {
    if (in_comment_ && in_line_comment_) in_comment_ = in_line_comment_ = false;
    if (!in_comment_ && last_ == ';') {
      last_ = '\n';
    } else if (current_.empty()) {
      slots_.emplace_back();
      last_ = '\n';
    }
  }

  Status open_line_comment() {
    if (!current_.empty() && last_ != ';') return Status::source_unfinished;
    in_comment_ = in_line_comment_ = true;
    at_ += 2;
    return Status::ok;
  }

  void take_sign(char c) {
    const bool behind_operand = ends_operand(last_);
    if (c == '/' && next() == '*') {
      in_comment_ = true;
      ++at_;
    } else if (c == '-') {
      current_ += behind_operand ? '?' : '^';
    } else if (c == '+') {
      current_ += behind_operand ? '+' : '`';
    } else if (c == ',') {
      current_ += '@';
    } else if (c == ';') {
      slots_.push_back(std::move(current_));
      current_.clear();
      statement_ended_ = true;
    } else if (c != '=' || (last_ != '=' && last_ != '!')) {
      current_ += c;
    }
    last_ = c;
    ++at_;
  }

  Status end() const {
    if (in_single_ || in_double_) return Status::quote_open;
    // Blanks, tabs and comments alone are a script of no statements.
    const bool no_statement = !statement_ended_ && current_.empty();
    if (no_statement || last_ == ';' || last_ == '\n') return Status::ok;
    return Status::source_unfinished;
  }

  const std::string& source_;
  std::vector<std::string>& slots_;
  std::string current_;
  size_t at_ = 0;
  char last_ = '\0';
  bool in_comment_ = false;
  bool in_line_comment_ = false;
  bool in_single_ = false;
  bool in_double_ = false;
  bool statement_ended_ = false;  ///< a ";" was seen
};

}  // namespace

Status split_statements(std::string& source, std::vector<std::string>& slots, std::string& error) {
  if (source.empty()) return Status::ok;
  replace_all(source, "\r\n", "\n");
  replace_all(source, "\r", "\n");
  replace_all_ignoring_case(source, " AND ", "&&");
  replace_all_ignoring_case(source, " OR ", "||");
  replace_all(source, "\xC2\xA0", " ");
  return Scanner(source, slots).run(error);
}

}  // namespace quor
