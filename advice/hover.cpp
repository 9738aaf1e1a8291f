#include "hover.h"

#include <algorithm>

#include "colours.h"
#include "letters.h"
#include "src/tables/fields.h"
#include "src/tables/icon_table.h"
#include "symbols.h"
#include "topic_help.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

std::string fenced(std::string_view text) { return "```quor\n" + std::string(text) + "\n```"; }

/// The signs of Markdown as they stand.
std::string plain(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (std::string_view("*_<[`\\").find(c) != absent) out += '\\';
    out += c;
  }
  return out;
}

/// The comment that ends right above a statement, or stands behind it on its line.
std::string comment_of(const Reading& reading, Place whole) {
  std::string comment;
  for (const Aside& aside : reading.scan.asides) {
    const size_t line = reading.line_of(aside.end);
    const bool is_above =
        aside.end <= whole.begin && line + 1 >= reading.line_of(whole.begin) &&
        reading.script.substr(aside.end, whole.begin - aside.end).find_first_not_of(" \t\r\n") ==
            absent;
    const bool is_behind =
        aside.begin >= whole.end && reading.line_of(aside.begin) == reading.line_of(whole.end);
    if (!is_above && !is_behind) continue;
    std::string_view text = reading.script.substr(aside.begin, aside.end - aside.begin);
    const size_t begin = text.find_first_not_of("/*{ \t");
    const size_t end = text.find_last_not_of("/*} \t\r\n");
    if (begin == absent || end == absent || end < begin) continue;
    comment += (comment.empty() ? "" : "  \n") + plain(text.substr(begin, end + 1 - begin));
    if (is_behind) break;
  }
  return comment;
}

/// What stands in the items of a line that says how it is drawn.
std::string drawing_of(const Reading& reading, const Statement& statement) {
  if (statement.form != Form::line) return "calculated, not drawn";
  std::string items;
  bool is_hidden = false;
  for (const Range& item : statement.items) {
    if (item.empty()) continue;
    const std::string text = reading.text(statement, item);
    is_hidden = is_hidden || to_upper(text) == "NODRAW";
    items += (items.empty() ? "" : ", ") + text;
  }
  if (is_hidden) return "a line whose drawing is hidden";
  return items.empty() ? "a line that is drawn, in the next automatic colour"
                       : "a line that is drawn: " + items;
}

std::string about_symbol(const Reading& reading, const Symbol& symbol) {
  const Statement& statement = reading.statements[symbol.statement];
  std::string text = fenced(reading.text(symbol.whole));
  if (symbol.kind == SymbolKind::constant) {
    text += "\n\nA constant of the script: " + number_text(reading.constants.at(symbol.name)) + '.';
  } else {
    text += "\n\n" + plain(symbol.name) + ": " + plain(drawing_of(reading, statement)) + '.';
    const auto value = reading.constant_lines.find(symbol.name);
    if (value != reading.constant_lines.end())
      text += " It is " + number_text(value->second) + " on every bar.";
  }
  const std::string comment = comment_of(reading, symbol.whole);
  return comment.empty() ? text : text + "\n\n" + comment;
}

std::string about_name(const Reading& reading, const std::string& name) {
  const auto symbols = symbols_of(reading);
  if (const Symbol* const symbol = find_symbol(symbols, name))
    return about_symbol(reading, *symbol);
  return "A parameter of the script: " + number_text(reading.constants.at(name)) + '.';
}

/// The line of a topic whose term names a word.
std::string_view topic_line(std::string_view topic, std::string_view word) {
  const TopicHelp* const help = find_topic_help(topic);
  if (help == nullptr) return {};
  for (const TopicLine& line : help->lines) {
    const std::string term = ' ' + std::string(line.term) + ' ';
    const bool names = term.find(' ' + std::string(word) + ' ') != absent ||
                       term.find(' ' + std::string(word) + ',') != absent ||
                       term.find(',' + std::string(word) + '(') != absent;
    if (names) return line.meaning;
  }
  return {};
}

std::string about_field(std::string_view word) {
  std::string text = "Bar field " + std::string(word);
  const auto* const field = std::ranges::find(quor::ReservedFieldTable, word, &quor::Field::word);
  for (const std::string_view other : words_of_field(static_cast<uint32_t>(field->id))) {
    if (other != word) text += ", the same as " + std::string(other);
  }
  const std::string_view meaning = topic_line("fields", word);
  return text + (meaning.empty() ? "." : ": " + std::string(meaning) + '.');
}

std::string about_style(std::string_view word) {
  if (const auto code = colour_code(word)) {
    const std::string digits =
        colour_texts(*code).rbegin()[1].substr(std::string_view("COLOR").size());
    return "The colour #" + digits + ", for a style item or an argument.";
  }
  std::string_view meaning = topic_line("styles", word);
  const size_t letters = word.find_last_not_of("0123456789") + 1;
  const std::string bounds = bounds_of_style(word);
  if (meaning.empty() && !bounds.empty()) {
    meaning = topic_line("styles", std::string(word.substr(0, letters)) + "1");
  }
  if (meaning.empty()) meaning = topic_line("colours", word);
  std::string text = "Style item " + std::string(word);
  if (!bounds.empty()) text += ", of " + bounds;
  return text + (meaning.empty() ? "." : ": " + std::string(meaning) + '.');
}

std::string about_short_form(std::string_view word) {
  const std::string_view meaning = topic_line("short forms", word);
  return meaning.empty() ? std::string() : "A short form: " + std::string(meaning) + '.';
}

std::string about_word(const Statement& statement, size_t index) {
  const std::string& word = statement.tokens[index].text;
  const bool is_item = index >= statement.expression.end;
  if (is_item && is_style(word)) return about_style(word);
  if (const WordHelp* const help = find_word_help(word)) return help_markdown(*help);
  if (word == "CONST") return "A constant, valid in the whole script; it keeps six decimals.";
  if (is_field(word)) return about_field(word);
  if (is_style(word)) return about_style(word);
  return is_short_form(word) ? about_short_form(word) : word_from_elsewhere(word);
}

/// The sign that a text such as 'ICO3' or a number of DRAWICON names; empty for anything else.
std::string about_sign(const Statement& statement, size_t index) {
  const Token& token = statement.tokens[index];
  const auto is_around = [&](const Call& call) {
    const std::string& word = statement.tokens[call.word].text;
    const bool takes_sign = word == "DRAWICON" || word == "DRAWLASTBARICON" || word == "ICON";
    return takes_sign && !call.arguments.empty() && call.arguments.back().begin == index &&
           call.arguments.back().size() == 1;
  };
  if (std::ranges::none_of(statement.calls, is_around)) return {};
  std::string_view number = token.text;
  while (number.starts_with('\'')) number.remove_prefix(1);
  while (number.ends_with('\'')) number.remove_suffix(1);
  if (number.starts_with("ICO")) number.remove_prefix(3);
  const auto position = to_number(number);
  if (!position || *position < 1 || *position >= std::size(quor::IconTextSet) + 1) return {};
  return "The sign " + std::string(quor::IconTextSet[static_cast<size_t>(*position) - 1]) + '.';
}

}  // namespace

std::optional<Hover> hover_at(const Reading& reading, size_t offset) {
  if (is_in_comment(reading, offset)) return std::nullopt;
  if (const auto name = name_at(reading, offset))
    return Hover{name->place, about_name(reading, name->name)};
  const Token* const token = token_at(reading, offset);
  if (token == nullptr) return std::nullopt;
  const Statement& statement = reading.statements[*statement_at(reading, token->begin)];
  const auto index = static_cast<size_t>(token - statement.tokens.data());
  std::string text =
      token->kind == TokenKind::word ? about_word(statement, index) : about_sign(statement, index);
  return text.empty() ? std::nullopt : std::optional(Hover{place_of(*token), std::move(text)});
}

std::string help_markdown(const WordHelp& help) {
  std::string text = fenced(help.form) + "\n\n" + plain(help.summary);
  if (!help.arguments.empty()) {
    text += "\n\n";
    for (std::string_view rest = help.arguments; !rest.empty();) {
      const size_t end = std::min(rest.find("; "), rest.size());
      text += "- " + plain(rest.substr(0, end)) + '\n';
      rest.remove_prefix(std::min(end + 2, rest.size()));
    }
  }
  if (!help.nulls.empty()) text += "\n\nFirst value and null: " + plain(help.nulls);
  return text + "\n\n" + fenced(help.example);
}

}  // namespace quor_advice
