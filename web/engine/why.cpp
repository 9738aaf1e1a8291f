#include "why.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "advice/letters.h"
#include "advice/reading.h"
#include "advice/vocabulary.h"
#include "advice/word_help.h"
#include "host/studio/refusal.h"
#include "shown.h"

namespace quor_host {
namespace {

using quor_advice::Call;
using quor_advice::Range;
using quor_advice::Reading;
using quor_advice::Statement;
using quor_advice::Token;
using quor_advice::TokenKind;

constexpr size_t longest_way = 12;  ///< from line to line
/// Of the script with all parts, beside that which is seen.
constexpr size_t most_cells = 50'000'000;

/// A part of an expression that has values of its own.
struct Part {
  Range range;
  const Call* call = nullptr;  ///< none for a name, and for what stands in parentheses
  bool is_group = false;
};

/// What operators take, from the left.
std::vector<Part> parts_of(const Statement& statement, Range range) {
  std::vector<Part> parts;
  for (size_t i = range.begin; i < range.end; ++i) {
    const Token& token = statement.tokens[i];
    const auto call = std::ranges::find(statement.calls, i, &Call::word);
    if (token.kind == TokenKind::open && statement.partners[i] < range.end) {
      parts.push_back({{i + 1, statement.partners[i]}, nullptr, true});
      i = statement.partners[i];
    } else if (token.kind == TokenKind::word && call != statement.calls.end() &&
               call->close < range.end) {
      parts.push_back({{i, call->close + 1}, &*call});
      i = call->close;
    } else if (token.kind == TokenKind::word || token.kind == TokenKind::reference) {
      parts.push_back({{i, i + 1}});
    }
  }
  return parts;
}

std::string_view word_of(const Statement& statement, const Part& part) {
  return statement.tokens[part.range.begin].text;
}

/// Whether what stands in a range is more than text, which has no value.
bool has_value(const Statement& statement, Range range) {
  return !range.empty() && statement.tokens[range.begin].kind != TokenKind::text;
}

/// The parts of a statement with their values: each becomes a line of its own, behind the script.
class Parts {
 public:
  Parts(const Desk& desk, const Reading& reading, const Statement& statement)
      : reading_(reading), statement_(statement) {
    collect(statement.expression);
    std::string script = desk.run->task().script + '\n';
    const std::string stem = free_stem();
    for (size_t i = 0; i < ranges_.size(); ++i) {
      script += stem + std::to_string(i) + ":=" + reading.text(statement, ranges_[i]) + ";\n";
    }
    calculate(desk, {std::move(script), desk.run->task().parameters});
    for (size_t i = 0; is_known() && i < ranges_.size(); ++i) {
      const auto& lines = run_->script().lines();
      const auto line =
          std::ranges::find(lines, stem + std::to_string(i), &quor::engine::Line::name);
      values_.push_back(line == lines.end() ? std::span<const double>()
                                            : run_->column(line->column));
    }
  }

  bool is_known() const { return run_ != nullptr; }

  /// Of a part; none for one that isn't known.
  std::span<const double> of(Range range) const {
    for (size_t i = 0; i < values_.size(); ++i) {
      if (ranges_[i].begin == range.begin && ranges_[i].end == range.end) return values_[i];
    }
    return {};
  }

 private:
  void collect(Range range) {
    for (const Part& part : parts_of(statement_, range)) {
      ranges_.push_back(part.range);
      if (part.is_group) collect(part.range);
      if (part.call == nullptr) continue;
      for (const Range argument : part.call->arguments) {
        if (!has_value(statement_, argument)) continue;
        ranges_.push_back(argument);
        collect(argument);
      }
    }
  }

  /// With which no name of the script begins.
  std::string free_stem() const {
    std::string stem = "WHY";
    const auto names = reading_.names();
    while (
        std::ranges::any_of(names, [&stem](const auto& name) { return name.starts_with(stem); })) {
      stem += 'Y';
    }
    return stem;
  }

  void calculate(const Desk& desk, Task task) {
    const size_t line_count = desk.run->script().lines().size() + ranges_.size();
    if (line_count * desk.row_count() > most_cells) {
      throw Refusal(413, "the script has too many lines to look into over so many bars");
    }
    auto run = std::make_unique<Run>(std::move(task), desk.around, desk.security->period);
    if (run->is_sound() && run->calculate(desk.bars())) run_ = std::move(run);
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Range> ranges_;
  std::unique_ptr<Run> run_;  ///< none if the parts can't be calculated alone
  std::vector<std::span<const double>> values_;
};

class Inquiry {
 public:
  Inquiry(const Desk& desk, size_t row)
      : desk_(desk),
        row_(row),
        reading_(
            quor_advice::read_script(desk.run->task().script, desk.run->script().parameters())) {}

  Json about(const quor::engine::Line& line) {
    say(line.name + " has no value at " + shown_row(row_) + "; " +
        first_value(desk_.run->column(line.column)) + ".");
    auto next = std::optional(static_cast<size_t>(line.statement));
    while (next && *next < reading_.statements.size() && visited_.size() < longest_way) {
      if (!visited_.insert(*next).second) break;
      const Statement& statement = reading_.statements[*next];
      const Parts parts(desk_, reading_, statement);
      next.reset();
      if (!parts.is_known()) {
        say("What it is made of can't be calculated by itself.");
      } else {
        next = follow(statement, parts, statement.expression);
      }
    }
    return std::move(sentences_);
  }

 private:
  void say(std::string sentence) { sentences_.push_back(std::move(sentence)); }

  std::string shown_row(size_t row) const {
    return "row " + std::to_string(row) + " (" + time_text(desk_, desk_.bars().keys[row]) + ")";
  }

  bool is_null(std::span<const double> values) const {
    return row_ < values.size() && std::isnan(values[row_]);
  }

  std::string first_value(std::span<const double> values) const {
    const auto found = std::ranges::find_if(values, [](double x) { return !std::isnan(x); });
    if (found == values.end()) {
      return "it has none at any of the " + std::to_string(desk_.row_count()) + " bars";
    }
    return "its first one stands at " + shown_row(static_cast<size_t>(found - values.begin()));
  }

  /// From an expression to the part that has no value here. Gives the statement of a line that is
  /// read, to go on with.
  std::optional<size_t> follow(const Statement& statement, const Parts& parts, Range range) {
    for (const Part& part : parts_of(statement, range)) {
      if (!is_null(parts.of(part.range))) continue;
      if (part.is_group) return follow(statement, parts, part.range);
      return part.call != nullptr ? about_call(statement, parts, part)
                                  : about_name(statement, part);
    }
    say("None of what " + reading_.text(statement, range) + " reads is null at this bar.");
    return {};
  }

  std::optional<size_t> about_name(const Statement& statement, const Part& part) {
    const std::string name(word_of(statement, part));
    const std::string shown = reading_.text(statement, part.range);
    const auto line = reading_.lines.find(name);
    if (line != reading_.lines.end()) {
      const Statement& other = reading_.statements[line->second];
      say(shown + " has no value there: it is " + reading_.text(other, other.expression) + ".");
      return line->second;
    }
    if (statement.tokens[part.range.begin].kind == TokenKind::reference) {
      say(shown + " has no value there" + about_other(name));
    } else if (name == "NULL" || name == "DRAWNULL") {
      say(shown + " stands there, which is null.");
    } else if (is_missing(name)) {
      say("The bars have no " + shown + ".");
    } else if (quor_advice::is_field(name)) {
      say("The bar has no value for " + shown + ".");
    } else {
      say(shown + " has no value there." + null_rule(name));
    }
    return {};
  }

  /// Of a reference, "BBB$CLOSE" or "DAY$1$CLOSE", with its quotes or without.
  std::string about_other(std::string_view reference) const {
    const size_t begin = reference.find_first_not_of('"');
    const size_t mark = reference.find('$');
    if (begin == std::string_view::npos || mark == std::string_view::npos) return ".";
    if (reference.find('$', mark + 1) != std::string_view::npos) {
      return desk_.around.takes_forming
                 ? ": the bars make no such period, or have not had this field in it so far."
                 : ": the bars make no such period, or none of it is over by this one.";
    }
    const std::string other = quor_advice::to_upper(reference.substr(begin, mark - begin));
    return desk_.around.others.contains(other)
               ? ": " + other + " has no bar of this date, or not this field."
               : ": no bars of " + other + " are known. Give them in the tab Data.";
  }

  bool is_missing(std::string_view name) const {
    return std::ranges::any_of(desk_.run->missing(), [name](uint32_t field) {
      return std::ranges::count(quor_advice::words_of_field(field), name) > 0;
    });
  }

  std::optional<size_t> about_call(const Statement& statement, const Parts& parts,
                                   const Part& part) {
    const std::string shown = reading_.text(statement, part.range);
    for (const Range argument : arguments_that_count(statement, parts, part)) {
      if (!is_null(parts.of(argument))) continue;
      const std::string text = reading_.text(statement, argument);
      say(shown + " has no value there, and " + text + ", which it reads, has none, either.");
      return follow(statement, parts, argument);
    }
    say(shown +
        " has no value there, though its arguments have: " + first_value(parts.of(part.range)) +
        "." + values_of(statement, parts, part) + null_rule(word_of(statement, part)));
    return {};
  }

  /// Of a choice the one that is chosen; a null condition counts as true.
  std::vector<Range> arguments_that_count(const Statement& statement, const Parts& parts,
                                          const Part& part) const {
    std::vector<Range> arguments;
    std::ranges::copy_if(part.call->arguments, std::back_inserter(arguments),
                         [&](Range range) { return has_value(statement, range); });
    const std::string_view word = word_of(statement, part);
    const bool is_choice = word == "IF" || word == "IFF" || word == "IFELSE";
    if (!is_choice || arguments.size() != 3) return arguments;
    const auto condition = parts.of(arguments[0]);
    const bool is_false = row_ < condition.size() && std::abs(condition[row_]) == 0.0;
    return {arguments[is_false ? 2 : 1]};
  }

  std::string values_of(const Statement& statement, const Parts& parts, const Part& part) const {
    std::string text;
    std::string gaps;
    for (const Range argument : part.call->arguments) {
      const auto values = parts.of(argument);
      const bool is_number =
          argument.size() == 1 && statement.tokens[argument.begin].kind == TokenKind::number;
      if (row_ >= values.size() || is_number) continue;
      const std::string shown = reading_.text(statement, argument);
      text += (text.empty() ? " Here " : ", ") + shown + " is " +
              quor_advice::number_text(values[row_]);
      const auto before = last_null(values);
      if (before) gaps += " " + shown + " was null last at " + shown_row(*before) + ".";
    }
    return text.empty() ? text : text + "." + gaps;
  }

  std::optional<size_t> last_null(std::span<const double> values) const {
    for (size_t row = row_; row-- > 0;) {
      if (std::isnan(values[row])) return row;
    }
    return {};
  }

  static std::string null_rule(std::string_view word) {
    const auto* const help = quor_advice::find_word_help(word);
    if (help == nullptr || help->nulls.empty()) return {};
    return " " + std::string(help->form) + ": " + std::string(help->nulls);
  }

  const Desk& desk_;
  size_t row_;
  Reading reading_;
  std::set<size_t> visited_;  ///< statements
  Json sentences_ = Json::array();
};

}  // namespace

Json why_json(const Desk& desk, size_t line, size_t row) {
  if (row >= desk.row_count()) throw Refusal(404, "there is no such row");
  if (!desk.run || line >= desk.run->script().lines().size()) {
    throw Refusal(404, "there is no such line");
  }
  const auto& one = desk.run->script().lines()[line];
  const auto values = desk.run->column(one.column);
  if (row >= values.size() || !std::isnan(values[row])) {
    throw Refusal(409, "the line has a value at this bar");
  }
  return {{"row", row}, {"sentences", Inquiry(desk, row).about(one)}};
}

}  // namespace quor_host
