#include "call_forms.h"

#include <algorithm>

#include "letters.h"
#include "symbols.h"

namespace quor_advice {
namespace {

CallForm form_of(std::string_view text) {
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

}  // namespace

std::vector<CallForm> call_forms(const WordHelp& help) {
  std::vector<CallForm> forms;
  for (const std::string_view text : split(help.form, " or ")) {
    if (text.find('(') != absent) forms.push_back(form_of(text));
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
      open.push_back({is_call ? find_word_help(statement.tokens[i - 1].text) : nullptr, *number,
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

}  // namespace quor_advice
