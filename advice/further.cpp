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
bool is_no_line_end(char c) { return !is_line_end(c); }

/// Codes that say that nothing defines the word of their message.
bool is_unknown_word(int64_t code) { return code == 1 || code == 2; }

/// Codes of a name that can't be declared: nothing stands in for it.
bool is_of_name(int64_t code) { return code == 12 || code == 13 || code == 2004; }

/// Codes that depend on more than the statement and what it reads.
bool is_of_script(int64_t code) { return code == quote_open || code == unfinished; }

class ErrorSearch {
 public:
  ErrorSearch(const Input& input, Failure first, Reading reading)
      : input_(input), failure_(std::move(first)), reading_(std::move(reading)) {
    found_.rest = input.script;
    reading_.script = found_.rest;
  }

  AllErrors run() {
    for (size_t round = 0; failure_.code != 0 && round < most_rounds; ++round) {
      if (found_.errors.size() == most_errors) break;
      if (!take() || !input_.compile) break;
      failure_ = next_failure();
    }
    found_.last = failure_;
    return std::move(found_);
  }

 private:
  /// Notes the error and leaves its statement out; false if there is no way on.
  bool take() {
    Problem problem = explain(reading_, failure_);
    const std::optional<Place> place = place_at_fault(problem);
    if (!is_consequence(problem)) found_.errors.push_back({failure_.code, std::move(problem)});
    return place && leave_out(*place);
  }

  /// What the library refuses next. As a compile of a long script takes its time, it is looked
  /// through in pieces first; that the whole compiles is the proof.
  Failure next_failure() {
    if (!is_same_elsewhere_) read_changed();
    while (const auto stretch = stretch_from(reading_, checked_)) {
      Failure failure = read_failure(input_.compile(stretch->excerpt.script));
      if (failure.code == 0) {
        checked_ = stretch->end;
        continue;
      }
      const auto& numbers = stretch->excerpt.numbers;
      if (is_of_script(failure.code) || !failure.statement || *failure.statement >= numbers.size())
        break;
      const size_t number = numbers[*failure.statement];
      const Statement& statement = reading_.statements[number];
      const bool is_ahead =
          !statement.tokens.empty() && statement.tokens.front().begin >= stretch->begin;
      if (!is_ahead) break;
      failure.statement = number;
      checked_ = statement.tokens.front().begin;
      return failure;
    }
    read_changed();
    return read_failure(input_.compile(found_.rest));
  }

  void read_changed() {
    if (changed_.begin == changed_.end) return;
    reading_ = read_again(std::move(reading_), found_.rest, input_.parameters, changed_);
    changed_ = {};
    is_same_elsewhere_ = true;
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
  std::optional<Place> place_at_fault(const Problem& problem) const {
    const size_t at = problem.place.begin;
    const std::string& text = found_.rest;
    if (failure_.code == unfinished && reading_.scan.half_line_comment) {
      const size_t comment = *reading_.scan.half_line_comment;
      return Place{comment, line_end(comment)};
    }
    for (const Statement& statement : reading_.statements) {
      if (statement.tokens.empty()) continue;
      const size_t begin = statement.tokens.front().begin;
      const size_t end = std::min(reading_.scan.slots[statement.number].end + 1, text.size());
      if (failure_.code == quote_open) {
        // The quote may be one of a comment in front of the statement.
        if (at >= end) continue;
        return Place{std::min(begin, at), line_end(at)};
      }
      if (at > end || (at == end && !is_cut())) continue;
      const bool reaches_on = at + 1 == end && statement.number + 1 < reading_.statements.size();
      return Place{begin, reaches_on ? end_of_next(statement.number) : end};
    }
    if (failure_.code == quote_open) return Place{at, line_end(at)};
    return std::nullopt;
  }

  bool is_cut() const { return failure_.code == unfinished && reading_.scan.is_unfinished; }

  size_t line_end(size_t at) const {
    return std::min(found_.rest.find_first_of("\r\n", at), found_.rest.size());
  }

  /// A ';' at fault has torn a statement in two, unless the next one has a name of its own.
  size_t end_of_next(size_t number) const {
    const size_t own = reading_.scan.slots[number].end + 1;
    const Statement& next = reading_.statements[number + 1];
    if (next.tokens.empty() || next.is_named() || next.form == Form::constant) return own;
    return std::min(reading_.scan.slots[number + 1].end + 1, found_.rest.size());
  }

  bool leave_out(Place place) {
    std::string stand_in;
    std::vector<size_t> numbers;
    bool is_replaced = true;
    for (const Statement& statement : reading_.statements) {
      if (statement.tokens.empty() || statement.tokens.front().begin < place.begin ||
          statement.tokens.front().begin >= place.end)
        continue;
      numbers.push_back(statement.number);
      for (const std::string& name : names_declared_by(statement)) {
        lost_names_.insert(name);
        const bool is_taken = is_of_name(failure_.code) || is_field(name) || is_function(name);
        if (!is_taken) stand_in += name + ":C;";
        is_replaced = is_replaced && !is_taken && name == statement.name;
      }
    }
    checked_ = std::min(checked_, place.begin);
    const bool is_second = !left_out_.insert(place.begin).second;
    if (is_second || stand_in.size() > room_in(place)) {
      stand_in.clear();
      is_replaced = false;
    }
    const bool was_more_than_blank = write(place, stand_in);
    if (is_replaced && numbers.size() == 1) {
      is_replaced = put(reading_.statements[numbers.front()], place.begin, stand_in);
    }
    is_same_elsewhere_ = is_same_elsewhere_ && is_replaced && numbers.size() == 1;
    return was_more_than_blank || !is_second;
  }

  /// Reads the stand-in in the statement's place; false if a line end parts it.
  bool put(Statement& statement, size_t begin, const std::string& stand_in) {
    if (found_.rest.compare(begin, stand_in.size(), stand_in) != 0) return false;
    const size_t number = statement.number;
    statement = {};
    if (!stand_in.empty()) {
      Reading small = read_script(stand_in, {});
      if (small.statements.size() != 1) return false;
      statement = std::move(small.statements.front());
      for (Token& token : statement.tokens) {
        token.begin += begin;
        token.end += begin;
      }
      reading_.scan.slots[number].end = begin + stand_in.size() - 1;
    }
    statement.number = number;
    return true;
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

  /// Bytes that aren't line ends, which stay.
  size_t room_in(Place place) const {
    const std::string_view text = std::string_view(found_.rest).substr(0, place.end);
    return static_cast<size_t>(std::ranges::count_if(text.substr(place.begin), is_no_line_end));
  }

  /// False if nothing was there but blanks.
  bool write(Place place, std::string_view stand_in) {
    const bool is_first = changed_.begin == changed_.end;
    changed_ =
        is_first ? place
                 : Place{std::min(changed_.begin, place.begin), std::max(changed_.end, place.end)};
    std::string& text = found_.rest;
    const std::string before = text.substr(place.begin, place.end - place.begin);
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
  Reading reading_;
  Place changed_;                  ///< what has been left out since the reading
  bool is_same_elsewhere_ = true;  ///< the reading tells of all statements that are not left out
  size_t checked_ = 0;             ///< what stands in front of this offset compiles
  std::set<size_t> left_out_;      ///< where the statements that were left out begin
};

}  // namespace

AllErrors find_all_errors(const Input& input, const Failure& first, Reading reading) {
  return ErrorSearch(input, first, std::move(reading)).run();
}

}  // namespace quor_advice
