#include "call_forms.h"

#include <algorithm>

#include "letters.h"
#include "symbols.h"

namespace quor_advice {
namespace {

CallForm read_form(std::string_view text) {
  CallForm form{text, {}};
  const size_t open = text.find('(');
  const size_t close = text.rfind(')');
  if (open == absent || close == absent) return form;
  for (size_t begin = open + 1; begin < close;) {
    const size_t end = std::min(text.find(',', begin), close);
    form.arguments.push_back({begin, end});
    begin = end + 1;
  }
  return form;
}

std::string_view trimmed(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

/// The pieces of a text between separators.
std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> pieces;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(separator, begin), text.size());
    pieces.push_back(trimmed(text.substr(begin, end - begin)));
    begin = end + separator.size();
  }
  return pieces;
}

/// Short forms that are no words of their own; they are told of as such.
const WordHelp* find_call_help(std::string_view word) {
  constexpr auto side = "SIDE: 1 at the high, 0 at the low; 'ICO3': one of 33 signs";
  static const WordHelp rows[] = {
      {"ICON", "COND,ICON(SIDE,'ICO3')", 2, 2, "A sign at the bars where COND holds.", side, "",
       "C>O,ICON(1,'ICO3');"},
      {"WORD", "COND,WORD(SIDE,'TEXT')", 2, 2, "A text at the bars where COND holds.",
       "SIDE: 1 at the high, 0 at the low; 'TEXT': what is written", "", "C>O,WORD(1,'up');"},
  };
  const auto* const row = std::ranges::find(rows, word, &WordHelp::word);
  return row == std::end(rows) ? find_word_help(word) : row;
}

}  // namespace

std::vector<CallForm> call_forms(const WordHelp& help) {
  std::vector<CallForm> forms;
  for (const std::string_view text : split(help.form, " or ")) {
    if (text.find('(') != absent) forms.push_back(read_form(text));
  }
  return forms;
}

std::string_view argument_help(const WordHelp& help, std::string_view argument) {
  for (const std::string_view piece : split(help.arguments, ";")) {
    const size_t colon = piece.find(':');
    if (colon == absent) continue;
    const auto names = split(piece.substr(0, colon), ",");
    if (std::ranges::find(names, argument) != names.end()) return trimmed(piece.substr(colon + 1));
  }
  return {};
}

std::optional<CallAt> call_around(const Reading& reading, size_t offset) {
  const auto number = statement_at(reading, offset);
  if (!number) return std::nullopt;
  const Statement& statement = reading.statements[*number];
  std::vector<CallAt> open;
  for (size_t i = 0; i < statement.tokens.size(); ++i) {
    const Token& token = statement.tokens[i];
    if (token.end > offset) break;
    if (token.kind == TokenKind::open) {
      const bool is_call = i > 0 && statement.tokens[i - 1].kind == TokenKind::word;
      open.push_back({is_call ? find_call_help(statement.tokens[i - 1].text) : nullptr, *number,
                      is_call ? i - 1 : i, 0});
    } else if (token.kind == TokenKind::close && !open.empty()) {
      open.pop_back();
    } else if (token.kind == TokenKind::comma && !open.empty()) {
      ++open.back().argument;
    }
  }
  while (!open.empty() && open.back().help == nullptr) open.pop_back();
  return open.empty() ? std::nullopt : std::optional(open.back());
}

std::optional<CallHint> call_hint_at(const Reading& reading, size_t offset) {
  const auto call = call_around(reading, offset);
  if (!call) return std::nullopt;
  CallHint hint{call->help, call_forms(*call->help), 0, 0, {}};
  hint.word = place_of(reading.statements[call->statement].tokens[call->word]);
  if (hint.forms.empty()) return std::nullopt;
  while (hint.form + 1 < hint.forms.size() &&
         hint.forms[hint.form].arguments.size() <= call->argument)
    ++hint.form;
  const size_t count = hint.forms[hint.form].arguments.size();
  hint.argument = count == 0 ? 0 : std::min(call->argument, count - 1);
  return hint;
}

}  // namespace quor_advice
