#include "grammar.h"

#include <algorithm>
#include <iterator>

#include "support/word_statements.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor_fuzz {
namespace {

/// Longer expressions would rather be made anew.
constexpr size_t longest_part = 32;

constexpr std::string_view odd_numbers[] = {
    "0",   "1",   "0-1",      "0-3", "2.5", "0.4",           "17",   "33",
    "O-O", "C-2", "BARPOS/9", "C>O", "65",  "MOD(BARPOS,5)", "1000", "NULL"};
constexpr std::string_view operators[] = {"+", "-", "*", "/", ">", "<=", "=", " AND ", " OR "};

/// What a word makes of chance or of the clock is another value the next time.
bool is_certain(std::string_view word) {
  return word != "RAND" && word != "CURRENTTIME" && word != "CURRENTDATE";
}

bool has_value(std::string_view word) { return !quor::OutputFunctionSet().contains(word); }

/// Whether other bars than its own tell in a call of the word, or it doesn't look at all of its
/// arguments.
bool has_story(std::string_view word) {
  const quor::BaseFunc& function = *quor::find_function(word);
  const quor::ColumnTraits traits = function.column_traits();
  return !function.by_columns() || traits.leaves_state || traits.revisits || traits.passes_over;
}

std::vector<std::string_view> words_where(bool (*holds)(std::string_view)) {
  std::vector<std::string_view> words;
  for (const auto& row : quor::FunctionIdTable()) {
    if (is_certain(row.word) && holds(row.word)) words.push_back(row.word);
  }
  return words;
}

bool is_text(std::string_view argument) {
  return argument.starts_with('\'') || argument.starts_with("COLOR");
}

}  // namespace

std::string Grammar::script() {
  std::string script;
  const size_t lines = 1 + bytes_.below(5);
  for (size_t i = 0; i < lines; ++i) script += line("L" + std::to_string(i));
  return script;
}

std::string Grammar::line(const std::string& name) {
  static const auto standing =
      words_where([](std::string_view word) { return quor::OutputFunctionSet().contains(word); });
  const size_t kind = bytes_.below(64);
  if (kind < 4) {
    const std::string_view word = standing[bytes_.below(standing.size())];
    return quor_test::statement_of(word, arguments(word, 2));
  }
  if (kind == 4) return "SET(" + parts_[bytes_.below(6)] + "," + expression(1) + ");";
  // A line that comes to names only another line.
  const std::string text = kind < 12 ? parts_.back() : expression(3);
  parts_.push_back(name);
  return name + (bytes_.below(2) == 0 ? ":=" : ":") + text + ";";
}

std::string Grammar::expression(int depth) {
  static const auto plain_words =
      words_where([](std::string_view word) { return has_value(word) && !has_story(word); });
  static const auto story_words =
      words_where([](std::string_view word) { return has_value(word) && has_story(word); });
  const size_t kind = bytes_.below(8);
  if (kind == 0 || depth == 0 || calls_left_ == 0) return part();
  std::string text;
  if (kind == 1) {
    text = "(" + expression(depth - 1);
    text += operators[bytes_.below(std::size(operators))];
    text += expression(depth - 1) + ")";
  } else {
    const auto& words = kind == 2 ? plain_words : story_words;
    const std::string_view word = words[bytes_.below(words.size())];
    text = quor_test::call_of(word, arguments(word, depth));
  }
  if (text.size() <= longest_part) parts_.push_back(text);
  return text;
}

std::string Grammar::arguments(std::string_view word, int depth) {
  --calls_left_;
  auto arguments = quor_test::split_arguments(quor_test::arguments_of(word));
  for (std::string& each : arguments) each = argument(each, depth - 1);
  return quor_test::join_arguments(arguments);
}

std::string Grammar::argument(const std::string& usual, int depth) {
  if (usual.empty() || is_text(usual)) return usual;
  const bool is_number = usual[0] >= '0' && usual[0] <= '9';
  const size_t kind = bytes_.below(8);
  if (is_number) {
    if (kind == 0) return expression(depth);
    if (kind == 1) return std::string(odd_numbers[bytes_.below(std::size(odd_numbers))]);
    return kind <= 3 ? std::to_string(bytes_.byte()) : usual;
  }
  if (kind == 0) return usual;
  const size_t comparison = usual.find_first_of("<>");
  if (comparison == std::string::npos || kind == 1) return expression(depth);
  return "(" + expression(depth) + ")" + usual[comparison] + expression(depth);
}

}  // namespace quor_fuzz
