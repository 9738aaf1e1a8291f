#include "fixes.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "advice.h"
#include "excerpt.h"
#include "letters.h"
#include "symbols.h"

namespace quor_advice {
namespace {

/// The rest of a text behind a phrase in it; nothing if it isn't there.
std::optional<std::string_view> behind(std::string_view text, std::string_view phrase) {
  const size_t found = text.find(phrase);
  if (found == absent) return std::nullopt;
  return text.substr(found + phrase.size());
}

/// 'X' without its quotes, which stand around signs.
std::string_view without_quotes(std::string_view text) {
  const bool is_quoted = text.size() > 2 && text.starts_with('\'') && text.ends_with('\'');
  return is_quoted ? text.substr(1, text.size() - 2) : text;
}

class Fixer {
 public:
  Fixer(const Input& input, const Finding& finding)
      : input_(input),
        finding_(finding),
        reading_(read_script(input.script, input.parameters)),
        place_(place_of(reading_, finding)) {}

  std::vector<Fix> run() {
    if (finding_.line == 0) return {};
    add_meant_word();
    add_missing_sign();
    const bool can_try = static_cast<bool>(input_.compile);
    if (can_try) {
      add_written_text();
      add_removal();
      add_declarations();
      try_all();
    }
    return std::move(fixes_);
  }

 private:
  void add(Place place, std::string text, std::string title) {
    fixes_.push_back({place, std::move(text), std::move(title)});
  }

  void replace(std::string_view text) {
    add(place_, std::string(text), "write " + std::string(text));
  }

  /// did you mean EMA?
  void add_meant_word() {
    const auto meant = behind(finding_.suggestion, "did you mean ");
    if (meant && meant->ends_with('?'))
      replace(without_quotes(meant->substr(0, meant->size() - 1)));
  }

  /// a ',' is missing in front of COLORRED; a ';' is missing behind C; write ';' here
  void add_missing_sign() {
    if (finding_.suggestion == "write ';' here")
      add({place_.begin, place_.begin}, ";", finding_.suggestion);
    const std::string& sentence = finding_.sentence;
    for (const std::string_view sign : {",", ";", ")", "("}) {
      const std::string front = "a '" + std::string(sign) + "' is missing ";
      if (!sentence.starts_with(front)) continue;
      const bool is_front = sentence.substr(front.size()).starts_with("in front");
      const size_t at = is_front ? place_.begin : place_.end;
      add({at, at}, std::string(sign), "write '" + std::string(sign) + "' here");
    }
  }

  /// write MA(C,5)
  void add_written_text() {
    const auto rest = behind(finding_.suggestion, "write ");
    if (!rest) return;
    for (const std::string_view stop :
         {"", ",", ";", " or ", " for ", " in front", " between", " to "}) {
      const size_t end = stop.empty() ? rest->size() : rest->find(stop);
      if (end == absent || end == 0) continue;
      const std::string_view text = without_quotes(rest->substr(0, end));
      const bool is_text = text.find("condition") == absent && text.find("value") == absent;
      if (is_text) replace(text);
    }
  }

  /// take it away: with the comma in front of an item.
  void add_removal() {
    const bool is_idle = finding_.suggestion.find("take it away") != absent ||
                         finding_.suggestion.find("take the ") != absent ||
                         finding_.sentence.find("has no effect") != absent;
    if (!is_idle) return;
    Place place = place_;
    const Token* const token = token_at(reading_, place.begin);
    if (token != nullptr) {
      const Statement& statement = reading_.statements[*statement_at(reading_, token->begin)];
      const auto index = static_cast<size_t>(token - statement.tokens.data());
      const bool has_comma = index > 0 && statement.tokens[index - 1].kind == TokenKind::comma;
      if (has_comma) place.begin = statement.tokens[index - 1].begin;
    }
    add(place, "", "take it away");
  }

  /// declare it above, such as MA5:=MA(C,5); or as a constant: CONST M:number;
  void add_declarations() {
    const auto number = statement_at(reading_, place_.begin);
    if (!number || reading_.statements[*number].tokens.empty()) return;
    const size_t begin = reading_.statements[*number].tokens.front().begin;
    const std::string end = input_.script.find("\r\n") == absent ? "\n" : "\r\n";
    if (const auto line = behind(finding_.suggestion, "declare it above, such as ")) {
      add({begin, begin}, std::string(*line) + end, "declare it above: " + std::string(*line));
    }
    const auto constant = behind(finding_.suggestion, "as a constant: CONST ");
    const size_t colon = constant ? constant->find(":number") : absent;
    if (colon == absent) return;
    const std::string name(constant->substr(0, colon));
    add({0, 0}, "CONST " + name + " : 5;" + end, "declare " + name + " as a constant, 5 at first");
  }

  std::vector<Finding> findings_of(std::string_view script) const {
    const std::string report = input_.compile(script);
    Input input = input_;
    input.script = script;
    input.report = report;
    input.answer = {};
    return advise(input);
  }

  /// Whether it is the finding that is to be mended.
  bool is_meant(const Finding& finding) const { return finding.sentence == finding_.sentence; }

  /// The finding's statement with those that it reads, and where in this text it begins: enough to
  /// try changes on, and soon compiled.
  void make_excerpt() {
    const auto number = statement_at(reading_, place_.begin);
    if (!number || reading_.statements[*number].tokens.empty()) return;
    Excerpt excerpt = excerpt_of(reading_, {*number});
    const auto own = std::ranges::find(excerpt.numbers, *number) - excerpt.numbers.begin();
    moved_ = {reading_.statements[*number].tokens.front().begin,
              excerpt.begins[static_cast<size_t>(own)]};
    trial_ = std::move(excerpt.script);
  }

  /// Leaves those that are of use, each once.
  void try_all() {
    if (fixes_.empty()) return;
    make_excerpt();
    before_ = findings_of(trial_);
    const auto is_same = [this](const Finding& finding) { return is_meant(finding); };
    if (std::ranges::none_of(before_, is_same)) {
      trial_ = input_.script;
      moved_ = {};
      before_ = findings_of(trial_);
    }
    std::vector<Fix> good;
    for (Fix& fix : fixes_) {
      const bool is_known = std::ranges::any_of(good, [&fix](const Fix& other) {
        return other.text == fix.text && other.place.begin == fix.place.begin;
      });
      if (!is_known && is_of_use(fix)) good.push_back(std::move(fix));
    }
    fixes_ = std::move(good);
  }

  /// The finding is gone, there are no more errors than before, and nothing is to be said about
  /// what is written now. What the mistake has hidden may come to light elsewhere.
  bool is_of_use(const Fix& fix) const {
    std::string script = trial_;
    // What is put in front of everything stays there.
    const size_t begin = fix.place.end == 0 ? 0 : fix.place.begin - moved_.from + moved_.to;
    if (begin > script.size()) return false;
    script.replace(begin, fix.place.end - fix.place.begin, fix.text);
    const auto after = findings_of(script);
    const auto is_same = [this](const Finding& finding) { return is_meant(finding); };
    const auto is_error = [](const Finding& finding) {
      return finding.severity == Severity::error;
    };
    if (std::ranges::count_if(after, is_same) >= std::ranges::count_if(before_, is_same))
      return false;
    if (std::ranges::count_if(after, is_error) > std::ranges::count_if(before_, is_error))
      return false;
    const Reading reading = read_script(script, input_.parameters);
    return std::ranges::none_of(after, [&](const Finding& finding) {
      const Place place = place_of(reading, finding);
      return finding.line > 0 && place.begin < begin + fix.text.size() && begin < place.end;
    });
  }

  /// From an offset of the script to one of the text that is tried on.
  struct Moved {
    size_t from = 0;
    size_t to = 0;
  };

  const Input& input_;
  const Finding& finding_;
  Reading reading_;
  Place place_;
  std::vector<Fix> fixes_;
  std::string trial_;  ///< what changes are tried on
  Moved moved_;
  std::vector<Finding> before_;  ///< of that
};

}  // namespace

Place place_of(const Reading& reading, const Finding& finding) {
  if (finding.line == 0 || finding.line > reading.line_starts.size()) return {};
  const auto walk = [&reading](size_t offset, size_t characters) {
    for (; characters > 0 && offset < reading.script.size(); --characters) {
      offset += front_character(reading.script.substr(offset));
    }
    return offset;
  };
  const size_t begin = walk(reading.line_starts[finding.line - 1], finding.column - 1);
  const std::string_view rest = reading.script.substr(begin);
  const size_t line_end = begin + std::min(rest.find_first_of("\r\n"), rest.size());
  return {begin, std::min(walk(begin, finding.length), line_end)};
}

std::vector<Fix> fixes_of(const Input& input, const Finding& finding) {
  return Fixer(input, finding).run();
}

}  // namespace quor_advice
