#include "further.h"

#include <algorithm>
#include <set>
#include <utility>

#include "excerpt.h"
#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

constexpr size_t most_errors = 20;
constexpr size_t most_rounds = 40;  ///< consequences of errors cost some, too
constexpr int64_t quote_open = 5;
constexpr int64_t unfinished = 14;

bool is_line_end(char c) { return c == '\n' || c == '\r'; }

/// Codes that say that nothing defines the word of their message.
bool is_unknown_word(int64_t code) { return code == 1 || code == 2; }

/// Codes of a name that can't be declared: nothing stands in for it.
bool is_of_name(int64_t code) { return code == 12 || code == 13 || code == 2004; }

/// Codes that depend on more than the statement and what it reads.
bool is_of_script(int64_t code) { return code == quote_open || code == unfinished; }

class ErrorSearch {
 public:
  ErrorSearch(const Input& input, Failure first) : input_(input), failure_(std::move(first)) {
    found_.rest = input.script;
  }

  AllErrors run() {
    Reading reading = read_script(found_.rest, input_.parameters);
    for (size_t round = 0; failure_.code != 0 && round < most_rounds; ++round) {
      if (found_.errors.size() == most_errors) break;
      if (!take(reading) || !input_.compile) break;
      reading = read_again(std::move(reading), found_.rest, input_.parameters, changed_);
      failure_ = next_failure(reading);
    }
    found_.last = failure_;
    return std::move(found_);
  }

 private:
  /// Notes the error and leaves its statement out; false if there is no way on.
  bool take(const Reading& reading) {
    Problem problem = explain(reading, failure_);
    const std::optional<Place> place = place_at_fault(reading, problem);
    if (!is_consequence(problem)) found_.errors.push_back({failure_.code, std::move(problem)});
    return place && leave_out(reading, *place);
  }

  /// What the library refuses next. As a compile of a long script takes its time, it is looked
  /// through in pieces first; that the whole compiles is the proof.
  Failure next_failure(const Reading& reading) {
    while (const auto stretch = stretch_from(reading, checked_)) {
      Failure failure = read_failure(input_.compile(stretch->excerpt.script));
      if (failure.code == 0) {
        checked_ = stretch->end;
        continue;
      }
      const auto& numbers = stretch->excerpt.numbers;
      if (is_of_script(failure.code) || !failure.statement || *failure.statement >= numbers.size())
        break;
      const size_t number = numbers[*failure.statement];
      const size_t begin = reading.statements[number].tokens.front().begin;
      if (begin < stretch->begin) break;
      failure.statement = number;
      checked_ = begin;
      return failure;
    }
    return read_failure(input_.compile(found_.rest));
  }

  /// A word that a faulty statement was to declare, or a place that has been told already.
  bool is_consequence(const Problem& problem) const {
    if (is_unknown_word(failure_.code) && lost_names_.contains(to_upper(failure_.message)))
      return true;
    return std::ranges::any_of(found_.errors, [&](const ToldError& told) {
      if (failure_.code == unfinished && told.code == unfinished) return true;
      const Place place = told.problem.place;
      return place.begin < problem.place.end && problem.place.begin < place.end;
    });
  }

  /// From the first to behind the last byte of what is to be left out.
  std::optional<Place> place_at_fault(const Reading& reading, const Problem& problem) const {
    const size_t at = problem.place.begin;
    const std::string& text = found_.rest;
    if (failure_.code == unfinished && reading.scan.half_line_comment) {
      const size_t comment = *reading.scan.half_line_comment;
      return Place{comment, line_end(comment)};
    }
    for (const Statement& statement : reading.statements) {
      if (statement.tokens.empty()) continue;
      const size_t begin = statement.tokens.front().begin;
      const size_t end = std::min(reading.scan.slots[statement.number].end + 1, text.size());
      if (failure_.code == quote_open) {
        // The quote may be one of a comment in front of the statement.
        if (at >= end) continue;
        return Place{std::min(begin, at), line_end(at)};
      }
      if (at > end || (at == end && !is_cut(reading))) continue;
      const bool reaches_on = at + 1 == end && statement.number + 1 < reading.statements.size();
      return Place{begin, reaches_on ? end_of_next(reading, statement.number) : end};
    }
    if (failure_.code == quote_open) return Place{at, line_end(at)};
    return std::nullopt;
  }

  bool is_cut(const Reading& reading) const {
    return failure_.code == unfinished && reading.scan.is_unfinished;
  }

  size_t line_end(size_t at) const {
    return std::min(found_.rest.find_first_of("\r\n", at), found_.rest.size());
  }

  /// A ';' at fault has torn a statement in two, unless the next one has a name of its own.
  size_t end_of_next(const Reading& reading, size_t number) const {
    const size_t own = reading.scan.slots[number].end + 1;
    const Statement& next = reading.statements[number + 1];
    if (next.tokens.empty() || next.is_named() || next.form == Form::constant) return own;
    return std::min(reading.scan.slots[number + 1].end + 1, found_.rest.size());
  }

  bool leave_out(const Reading& reading, Place place) {
    std::string stand_in;
    for (const Statement& statement : reading.statements) {
      if (statement.tokens.empty() || statement.tokens.front().begin < place.begin ||
          statement.tokens.front().begin >= place.end)
        continue;
      for (const std::string& name : names_declared_by(statement)) {
        lost_names_.insert(name);
        const bool is_taken = is_of_name(failure_.code) || is_field(name) || is_function(name);
        if (!is_taken) stand_in += name + ":C;";
      }
    }
    checked_ = std::min(checked_, place.begin);
    const bool is_second = !left_out_.insert(place.begin).second;
    if (is_second) stand_in.clear();
    return write(place, stand_in) || !is_second;
  }

  /// The words in front of a ':' or of a '=' at the start.
  static std::vector<std::string> names_declared_by(const Statement& statement) {
    std::vector<std::string> names;
    const size_t first = statement.form == Form::constant ? 1 : 0;
    if (const Token* const token = statement.token(first); token != nullptr) {
      // A full-width colon is a letter of the name.
      const auto foreign = std::ranges::find_if(token->text, is_beyond_ascii);
      const bool holds_sign = foreign != token->text.begin() && foreign != token->text.end();
      if (holds_sign) names.emplace_back(token->text.begin(), foreign);
    }
    for (size_t i = 1; i < statement.tokens.size(); ++i) {
      const Token& token = statement.tokens[i];
      const bool declares = token.kind == TokenKind::colon || (i <= 2 && token.is_sign("="));
      const Token& before = statement.tokens[i - 1];
      if (!declares || before.kind != TokenKind::word) continue;
      if (std::ranges::find(names, before.text) == names.end()) names.push_back(before.text);
    }
    return names;
  }

  /// Line ends stay; false if nothing was there but blanks.
  bool write(Place place, std::string_view stand_in) {
    changed_ = place;
    std::string& text = found_.rest;
    const std::string before = text.substr(place.begin, place.end - place.begin);
    const auto room =
        static_cast<size_t>(std::ranges::count_if(before, [](char c) { return !is_line_end(c); }));
    if (stand_in.size() > room) stand_in = {};
    for (size_t i = place.begin; i < place.end; ++i) {
      if (is_line_end(text[i])) continue;
      text[i] = stand_in.empty() ? ' ' : stand_in.front();
      if (!stand_in.empty()) stand_in.remove_prefix(1);
    }
    return text.compare(place.begin, before.size(), before) != 0;
  }

  const Input& input_;
  Failure failure_;
  AllErrors found_;
  std::set<std::string, std::less<>> lost_names_;
  Place changed_;              ///< what has been left out last
  size_t checked_ = 0;         ///< what stands in front of this offset compiles
  std::set<size_t> left_out_;  ///< where the statements that were left out begin
};

}  // namespace

AllErrors find_all_errors(const Input& input, const Failure& first) {
  return ErrorSearch(input, first).run();
}

}  // namespace quor_advice
