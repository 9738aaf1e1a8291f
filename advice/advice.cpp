#include "advice.h"

#include <algorithm>
#include <set>
#include <utility>

#include "explain.h"
#include "further.h"
#include "letters.h"
#include "parameter_faults.h"
#include "warnings.h"

namespace quor_advice {
namespace {

constexpr int64_t quote_open = 5;
constexpr int64_t unfinished = 14;
constexpr size_t most_findings = 100;  ///< nobody reads more of one script

/// A problem with what a finding adds to it.
struct Noted {
  Severity severity;
  int64_t code;
  Problem problem;
};

bool overlaps(Place a, Place b) { return a.begin < b.end && b.begin < a.end; }

/// From offsets to lines and columns.
class Placer {
 public:
  explicit Placer(const Reading& reading)
      : script_(reading.script), line_starts_(reading.line_starts) {}

  Finding finding(const Noted& noted) const {
    const Problem& problem = noted.problem;
    Finding finding{noted.severity, 0, 0, 0, noted.code, problem.sentence, problem.suggestion};
    const size_t begin = std::min(problem.place.begin, script_.size());
    const auto next = std::ranges::upper_bound(line_starts_, begin);
    const size_t line = static_cast<size_t>(next - line_starts_.begin());
    const size_t start = line_starts_[line - 1];
    const size_t line_end = std::min(script_.find_first_of("\r\n", begin), script_.size());
    const size_t end = std::clamp(problem.place.end, begin, line_end);
    finding.line = line;
    finding.column = count_characters(script_.substr(start, begin - start)) + 1;
    finding.length = std::max<size_t>(count_characters(script_.substr(begin, end - begin)), 1);
    return finding;
  }

 private:
  std::string_view script_;
  std::vector<size_t> line_starts_;
};

class Adviser {
 public:
  explicit Adviser(const Input& input)
      : input_(input),
        reading_(read_script(input.script, input.parameters)),
        failure_(read_failure(input.report)) {
    if (failure_.code == 0) failure_ = read_failure(input.answer);
    reading_.has_seconds = (input.period & 0xFF00) == 0x3100;
  }

  std::vector<Finding> run() {
    const Placer placer(reading_);
    if (failure_.code != 0 && input_.compile) {
      note_all_errors();
    } else if (failure_.code != 0) {
      noted_.push_back({Severity::error, failure_.code, explain(reading_, failure_)});
      failed_at_ = noted_.front().problem.place.begin;
    }
    note_warnings();
    std::vector<Finding> findings;
    std::ranges::stable_sort(noted_, {},
                             [](const Noted& noted) { return noted.problem.place.begin; });
    const bool contradicts = input_.run && contradicts_period(*input_.run, input_.period);
    if (contradicts) {
      findings.push_back(
          {Severity::warning, 0, 0, 0, 0,
           "there are several bars a day, but their period is said to be a day or longer",
           "name the period of the bars"});
    }
    for (const Noted& noted : noted_) findings.push_back(placer.finding(noted));
    return findings;
  }

 private:
  /// What is left without the faulty statements is looked through like a sound script.
  void note_all_errors() {
    AllErrors all = find_all_errors(input_, failure_, std::move(reading_));
    for (ToldError& error : all.errors) {
      noted_.push_back({Severity::error, error.code, std::move(error.problem)});
    }
    is_incomplete_ = true;
    rest_ = std::move(all.rest);
    reading_ = read_script(rest_, input_.parameters);
    note_stand_ins();
    failure_ = all.last;
    failed_at_ = noted_.back().problem.place.begin;
  }

  /// The statements of the rest that aren't the author's.
  void note_stand_ins() {
    for (const Statement& statement : reading_.statements) {
      if (statement.tokens.empty()) continue;
      const size_t begin = statement.tokens.front().begin;
      const size_t end = reading_.scan.slots[statement.number].end;
      const bool is_own =
          input_.script.substr(begin, end - begin) == reading_.script.substr(begin, end - begin);
      if (!is_own) reading_.stand_ins.insert(statement.number);
    }
  }

  /// Where a quote is open or the end is missing, what follows can't be read. Of the statement that
  /// the error is in, the error says enough.
  bool is_readable(const Statement& statement) const {
    if (failure_.code == 0 || statement.tokens.empty()) return true;
    const bool is_cut = failure_.code == quote_open || failure_.code == unfinished;
    const size_t end = reading_.scan.slots[statement.number].end;
    if (is_cut && failure_.statement) return statement.number < *failure_.statement;
    // A ";" at fault leaves half of its statement to the next one.
    const bool goes_on =
        statement.number > 0 && reading_.scan.slots[statement.number - 1].end == failed_at_;
    const bool holds_place = statement.tokens.front().begin <= failed_at_ && failed_at_ <= end;
    return !goes_on && !holds_place && failure_.statement != statement.number;
  }

  void note_warnings() {
    const RunFacts* const run = input_.run ? &*input_.run : nullptr;
    for (const Statement& statement : reading_.statements) {
      if (noted_.size() >= most_findings) return;
      if (is_readable(statement)) note(statement_warnings(reading_, statement, run));
    }
    const bool is_sound = failure_.code == 0 && !is_incomplete_;
    if (is_sound) note(supply_warnings(reading_, input_));
    if (is_sound && run != nullptr) note_null_lines();
    const bool is_cut = failure_.code == quote_open || failure_.code == unfinished;
    if (!is_cut && !has_no_statement()) note(script_warnings(reading_));
  }

  /// Whether all statements are left out.
  bool has_no_statement() const {
    return is_incomplete_ && std::ranges::all_of(reading_.statements, [](const Statement& s) {
             return s.form == Form::empty;
           });
  }

  /// A line whose statement has a warning is null for that reason.
  void note_null_lines() {
    auto problems = run_warnings(reading_, input_);
    std::erase_if(problems, [this](const Problem& problem) {
      const auto next =
          std::ranges::lower_bound(reading_.scan.slots, problem.place.begin, {}, &Slot::end);
      return std::ranges::any_of(noted_, [&](const Noted& noted) {
        const size_t begin = noted.problem.place.begin;
        return begin >= problem.place.begin && next != reading_.scan.slots.end() &&
               begin <= next->end;
      });
    });
    note(std::move(problems));
  }

  /// Of several problems at one place the first one says enough.
  void note(std::vector<Problem> problems) {
    for (Problem& problem : problems) {
      if (noted_.size() >= most_findings) return;
      const bool is_told = std::ranges::any_of(noted_, [&problem](const Noted& noted) {
        return overlaps(noted.problem.place, problem.place);
      });
      if (!is_told) noted_.push_back({Severity::warning, 0, std::move(problem)});
    }
  }

  const Input& input_;
  Reading reading_;
  Failure failure_;
  size_t failed_at_ = 0;        ///< the place of the error
  bool is_incomplete_ = false;  ///< faulty statements are left out of the reading
  std::string rest_;            ///< what is read then
  std::vector<Noted> noted_;
};

}  // namespace

std::vector<Finding> advise(const Input& input) { return Adviser(input).run(); }

ScriptNames names_in(std::string_view script) {
  const Reading reading = read_script(script, {});
  ScriptNames names;
  std::set<std::string_view> seen;
  for (const Statement& statement : reading.statements) {
    if (statement.form == Form::constant && !statement.name.empty())
      names.constants.push_back(statement.name);
    const bool declares = statement.is_named() && !statement.name.empty();
    if (declares && reading.lines.find(statement.name)->second == statement.number)
      names.lines.push_back(statement.name);
    for (const Token& token : statement.tokens) {
      if (token.kind == TokenKind::word && seen.insert(token.text).second)
        names.words.push_back(token.text);
    }
  }
  return names;
}

std::vector<ParameterFault> parameter_faults(std::string_view script,
                                             const std::vector<std::string>& names) {
  const Reading reading = read_script(script, {});
  const Placer placer(reading);
  std::vector<ParameterFault> faults;
  for (const std::string& name : names) {
    const auto fault = find_name_fault(reading, name);
    if (!fault) continue;
    Finding finding = placer.finding({Severity::error, 0, fault->problem});
    if (!fault->has_place) finding.line = finding.column = finding.length = 0;
    faults.push_back({name, fault->is_idle, std::move(finding)});
  }
  return faults;
}

}  // namespace quor_advice
