#include "completion.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "call_forms.h"
#include "letters.h"
#include "src/tables/fields.h"
#include "src/tables/icon_table.h"
#include "symbols.h"
#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

/// What closes a snippet's place stands there with a backslash.
std::string as_snippet(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '$' || c == '}' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

/// "MA(${1:X}, ${2:N})" of "MA(X,N)"; a text keeps its quotes around the place.
std::string snippet_of(const CallForm& form) {
  if (form.arguments.empty()) return as_snippet(form.text);
  std::string out = as_snippet(form.text.substr(0, form.arguments.front().begin));
  int number = 0;
  for (const Place& place : form.arguments) {
    std::string_view argument = form.text.substr(place.begin, place.end - place.begin);
    if (argument == "...") continue;
    const bool is_text = argument.size() > 1 && argument.starts_with('\'');
    if (is_text) argument = argument.substr(1, argument.size() - 2);
    const std::string hole = "${" + std::to_string(++number) + ':' + as_snippet(argument) + '}';
    out += (number > 1 ? ", " : "") + (is_text ? "'" + hole + "'" : hole);
  }
  return out + ')';
}

/// The form of a call without the condition that stands in front of short forms.
std::string insert_of(const WordHelp& help) {
  for (const CallForm& form : call_forms(help)) {
    if (form.text.starts_with(help.word)) return snippet_of(form);
  }
  return std::string(help.word);
}

Completion of_word(const WordHelp& help) {
  return {std::string(help.word), CompletionKind::function, std::string(help.form),
          std::string(help.summary), insert_of(help)};
}

Completion plain(std::string_view word, CompletionKind kind, std::string_view detail) {
  return {std::string(word), kind, std::string(detail), {}, as_snippet(word)};
}

void add_functions(std::vector<Completion>& items, bool takes_acting) {
  for (const WordHelp& help : word_help()) {
    if (takes_acting || !acts(help.word)) items.push_back(of_word(help));
  }
}

void add_fields(std::vector<Completion>& items) {
  for (const quor::Field& field : quor::ReservedFieldTable) {
    if (is_function(field.word)) continue;  // it says more there
    // A word with its shorter one: CLOSE, C.
    std::string detail = "bar field";
    for (const std::string_view word : words_of_field(static_cast<uint32_t>(field.id))) {
      if (word != field.word) detail += ", the same as " + std::string(word);
    }
    items.push_back(plain(field.word, CompletionKind::field, detail));
  }
}

/// The script's names that are declared above a statement, and constants wherever they stand.
void add_names(const Reading& reading, size_t statement, std::vector<Completion>& items) {
  std::set<std::string, std::less<>> taken;
  const auto symbols = symbols_of(reading);
  for (const auto& [name, value] : reading.constants) {
    items.push_back(plain(name, CompletionKind::constant, number_text(value)));
    taken.insert(name);
  }
  for (const Symbol& symbol : symbols) {
    if (symbol.statement >= statement || !taken.insert(symbol.name).second) continue;
    const Statement& declaration = reading.statements[symbol.statement];
    items.push_back(plain(symbol.name, CompletionKind::line,
                          reading.text(declaration, declaration.expression)));
  }
}

void add_colours(std::vector<Completion>& items) {
  for (const std::string_view word : words_among(Vocabulary::colour))
    items.push_back(plain(word, CompletionKind::colour, "colour"));
}

void add_styles(std::vector<Completion>& items) {
  add_colours(items);
  for (const std::string& word : style_words())
    items.push_back(plain(word, CompletionKind::style, "style item"));
}

/// What stands behind the comma of a condition or a value.
void add_short_forms(std::vector<Completion>& items) {
  constexpr std::array<std::string_view, 4> forms[] = {
      {"NOTICE", "NOTICE('${1:name}')", "a notice", "of 1 to 10 characters"},
      {"SOUND", "SOUND('${1:A}')", "a sound", "one of A to J"},
      {"ICON", "ICON(${1:1}, '${2:ICO1}')", "a sign", "at the high, for 0 at the low"},
      {"WORD", "WORD(${1:1}, '${2:text}')", "a text", "at the high, for 0 at the low"},
      {"STICK", "STICK", "sticks", "from 0 to the value"},
  };
  for (const auto& [label, insert, detail, about] : forms) {
    items.push_back({std::string(label), CompletionKind::form, std::string(detail),
                     std::string(about), std::string(insert)});
  }
  for (const std::string_view word : words_among(Vocabulary::short_form)) {
    if (!is_trade_word(word)) continue;
    const WordHelp* const help = find_word_help(word);
    items.push_back(plain(word, CompletionKind::form, "trade signal"));
    if (help != nullptr) items.back().about = help->summary;
  }
}

void add_signs(std::vector<Completion>& items) {
  size_t number = 0;
  for (const std::string_view face : quor::IconTextSet) {
    const std::string label = "ICO" + std::to_string(++number);
    items.push_back(plain(label, CompletionKind::text, face));
  }
}

void add_sounds(std::vector<Completion>& items) {
  for (char letter = 'A'; letter <= 'J'; ++letter)
    items.push_back(plain({&letter, 1}, CompletionKind::text, "a sound"));
}

/// Where a sign or a text of a short form stands.
void add_sides(std::vector<Completion>& items) {
  items.push_back(plain("1", CompletionKind::text, "at the high"));
  items.push_back(plain("0", CompletionKind::text, "at the low"));
}

/// What stands at the place, to which the words belong that can follow.
class Completer {
 public:
  Completer(const Reading& reading, size_t offset) : reading_(reading), offset_(offset) {
    completions_.replaced = {offset, offset};
    const auto number = statement_at(reading, offset);
    number_ = number.value_or(reading.statements.size());
    statement_ = number ? &reading.statements[*number] : nullptr;
  }

  Completions run() {
    if (is_in_comment(reading_, offset_)) return completions_;
    if (const Quoted* const quoted = quoted_at()) {
      complete_text(*quoted);
    } else {
      complete_word();
      if (reading_.script.substr(offset_).starts_with('(')) keep_parentheses();
    }
    return completions_;
  }

 private:
  std::vector<Completion>& items() { return completions_.items; }

  const Quoted* quoted_at() const {
    const auto found = std::ranges::find_if(reading_.scan.quoted, [this](const Quoted& quoted) {
      return quoted.begin < offset_ && offset_ <= quoted.end.value_or(absent);
    });
    return found == reading_.scan.quoted.end() ? nullptr : &*found;
  }

  /// What is written in the quotes up to the place, behind a mark.
  void replace_from(size_t begin) { completions_.replaced = {begin, offset_}; }

  void complete_text(const Quoted& quoted) {
    const size_t begin = quoted.begin + 1;
    const std::string_view written = reading_.script.substr(begin, offset_ - begin);
    if (quoted.mark == '"') {
      const size_t mark = written.rfind('$');
      replace_from(mark == absent ? begin : begin + mark + 1);
      if (mark != absent) return add_fields(items());
      for (const std::string_view unit : {"MIN$1$", "HOUR$1$", "DAY$1$", "WEEK$1$", "MONTH$1$"})
        items().push_back(plain(unit, CompletionKind::text, "a longer period"));
      return;
    }
    replace_from(begin);
    const std::string_view word = called_around(quoted.begin);
    if (word == "DRAWICON" || word == "DRAWLASTBARICON" || word == "ICON") add_signs(items());
    if (word == "SOUND" || word == "PLAYSOUND") add_sounds(items());
    if (word == "GETPRICE" || word == "GETSTOCKPRICE") {
      for (const std::string_view field : words_among(Vocabulary::quote))
        items().push_back(plain(field, CompletionKind::text, "field of a quote"));
    }
  }

  /// The word of the innermost parentheses that are open at a place; short forms have no help.
  std::string_view called_around(size_t place) const {
    std::vector<std::string_view> open;
    for (size_t i = 1; statement_ != nullptr && i < statement_->tokens.size(); ++i) {
      const Token& token = statement_->tokens[i];
      if (token.begin >= place) break;
      if (token.kind == TokenKind::open) open.emplace_back(statement_->tokens[i - 1].text);
      if (token.kind == TokenKind::close && !open.empty()) open.pop_back();
    }
    return open.empty() ? std::string_view() : open.back();
  }

  void complete_word() {
    size_t depth = 0;
    size_t commas = 0;
    size_t begun = 0;  // tokens in front of the word
    bool is_named = false;
    if (statement_ != nullptr) {
      for (const Token& token : statement_->tokens) {
        if (token.begin >= offset_) break;
        if (token.end >= offset_ &&
            (token.kind == TokenKind::word || token.kind == TokenKind::number)) {
          completions_.replaced = {token.begin, offset_};
          if (token.kind == TokenKind::number) return;
          break;
        }
        ++begun;
        if (token.kind == TokenKind::open) ++depth;
        if (token.kind == TokenKind::close && depth > 0) --depth;
        if (token.kind == TokenKind::comma && depth == 0) ++commas;
        if (token.kind == TokenKind::colon && depth == 0) is_named = true;
      }
    }
    if (depth == 0 && commas > 0) {
      if (!is_named) add_short_forms(items());
      return add_styles(items());
    }
    const bool is_fresh = begun == 0;
    if (const auto call = call_around(reading_, completions_.replaced.begin)) {
      const std::string_view argument = argument_of(*call);
      if (argument == "SIDE") return add_sides(items());
      if (argument.starts_with("COLOR")) add_colours(items());
    }
    add_names(reading_, number_, items());
    add_fields(items());
    add_functions(items(), is_fresh);
    if (is_fresh) {
      for (Completion& form : statement_forms()) items().push_back(std::move(form));
    }
  }

  /// What the form of a call calls the argument that is written; empty where it has several.
  static std::string_view argument_of(const CallAt& call) {
    const auto forms = call_forms(*call.help);
    if (forms.size() != 1 || call.argument >= forms[0].arguments.size()) return {};
    const Place& place = forms[0].arguments[call.argument];
    return forms[0].text.substr(place.begin, place.end - place.begin);
  }

  /// Those that stand there aren't written again, and a pattern of a whole statement is of no use.
  void keep_parentheses() {
    std::erase_if(items(),
                  [](const Completion& item) { return item.kind == CompletionKind::keyword; });
    for (Completion& item : items()) item.insert = as_snippet(item.label);
  }

  const Reading& reading_;
  size_t offset_;
  size_t number_ = 0;
  const Statement* statement_ = nullptr;
  Completions completions_;
};

}  // namespace

int rank_of(CompletionKind kind) {
  // function, field, line, constant, style, colour, text, keyword, form
  constexpr std::array ranks = {2, 1, 0, 0, 1, 0, 0, 3, 0};
  return ranks.at(static_cast<size_t>(kind));
}

Completions complete(const Reading& reading, size_t offset) {
  return Completer(reading, std::min(offset, reading.script.size())).run();
}

std::vector<Completion> statement_forms() {
  constexpr std::array<std::string_view, 4> forms[] = {
      {"CONST", "CONST ${1:N} : ${2:5};", "a constant", "valid in the whole script"},
      {"line", "${1:NAME} : ${2:C}, ${3:COLORRED};", "a line that is drawn", ""},
      {"assignment", "${1:NAME} := ${2:C};", "a line that is only calculated", ""},
      {"notice", "${1:C > O}, NOTICE('${2:name}');", "a notice where a condition holds", ""},
      {"signal", "${1:CROSS(C, O)}, BK(${2:1});", "a trade signal where a condition holds", ""},
      {"mark", "DRAWICON(${1:C > O}, ${2:L}, '${3:ICO1}');", "a sign where a condition holds", ""},
      {"label", "DRAWTEXT(${1:C > O}, ${2:H}, '${3:text}'), ${4:COLORRED};",
       "a text where a condition holds", ""},
      {"sticks", "${1:C - O}, COLORSTICK;", "sticks from 0 to a value", ""},
      {"quote", "${1:NAME} : GETPRICE('${2:NEW}');", "a field of the live quote", ""},
      {"reference", "${1:NAME} : \"${2:600000}\\$${3:CLOSE}\";", "a field of another security", ""},
  };
  std::vector<Completion> all;
  for (const auto& [label, insert, detail, about] : forms) {
    all.push_back({std::string(label), CompletionKind::keyword, std::string(detail),
                   std::string(about), std::string(insert)});
  }
  return all;
}

}  // namespace quor_advice
