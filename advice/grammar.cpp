#include "grammar.h"

#include <set>
#include <string_view>
#include <vector>

#include "src/tables/fields.h"
#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

struct Rule {
  std::string scope;
  std::string match;
};

constexpr std::string_view word_begin = R"((?i)(?<![\p{L}\p{N}_]))";
constexpr std::string_view word_end = R"((?![\p{L}\p{N}_]))";

/// One of the words, and not as part of another.
std::string any_of(const std::vector<std::string>& given) {
  const std::set<std::string> words(given.begin(), given.end());
  std::string all;
  for (const std::string& word : words) all += (all.empty() ? "" : "|") + word;
  return std::string(word_begin) + '(' + all + ')' + std::string(word_end);
}

std::vector<std::string> functions() {
  std::vector<std::string> words = {"GETPRICE", "GETSTOCKPRICE", "CJLVOL", "SETSTYLECOLOR"};
  for (const WordHelp& help : word_help()) words.emplace_back(help.word);
  for (const std::string_view word : words_among(Vocabulary::short_form)) words.emplace_back(word);
  std::erase_if(words, [](const std::string& word) { return is_style(word); });
  return words;
}

std::vector<std::string> fields() {
  std::vector<std::string> words;
  for (const quor::Field& field : quor::ReservedFieldTable) {
    if (!is_function(field.word)) words.emplace_back(field.word);
  }
  return words;
}

std::vector<std::string> styles() {
  std::vector<std::string> words = style_words();
  for (const std::string_view word : words_among(Vocabulary::colour)) words.emplace_back(word);
  words.emplace_back("COLOR#?[0-9A-F]{6,8}");
  return words;
}

std::string json_string(std::string_view text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') json += '\\';
    json += c;
  }
  return json + '"';
}

std::string json_of(const Rule& rule) {
  return "{ \"name\": " + json_string(rule.scope) + ", \"match\": " + json_string(rule.match) +
         " }";
}

std::string json_of_span(std::string_view scope, std::string_view begin, std::string_view end) {
  return "{ \"name\": " + json_string(scope) + ", \"begin\": " + json_string(begin) +
         ", \"end\": " + json_string(end) + " }";
}

}  // namespace

std::string textmate_grammar() {
  const std::string name = R"([\p{L}_][\p{L}\p{N}_]*)";
  const Rule rules[] = {
      {"keyword.other.const.quor", std::string(word_begin) + R"(CONST(?=\s))"},
      {"variable.other.definition.quor", name + R"((?=\s*:))"},
      {"keyword.operator.logical.quor", R"((?i)(?<=\s)(AND|OR)(?=\s))"},
      {"support.constant.style.quor", any_of(styles())},
      {"support.function.quor", any_of(functions())},
      {"support.variable.field.quor", any_of(fields())},
      {"constant.numeric.quor", R"((?<![\p{L}\p{N}_])(\d+(\.\d*)?|\.\d+)([eE][-+]?\d+)?)"},
      {"variable.other.quor", name},
      {"keyword.operator.assignment.quor", R"(:=|:)"},
      {"keyword.operator.quor", R"(<>|<=|>=|!=|==|&&|\|\||[-+*/%=<>&|!])"},
      {"punctuation.separator.quor", R"(,)"},
      {"punctuation.terminator.statement.quor", R"(;)"},
      {"punctuation.section.parens.quor", R"([()])"},
  };
  std::vector<std::string> patterns = {
      json_of({"comment.line.double-slash.quor", "//.*$"}),
      json_of_span("comment.block.quor", R"(/\*)", R"(\*/)"),
      json_of_span("comment.block.braces.quor", R"(\{)", R"(\})"),
      json_of_span("string.quoted.single.quor", "'", "'"),
      json_of_span("string.quoted.double.quor", "\"", "\""),
  };
  for (const Rule& rule : rules) patterns.push_back(json_of(rule));
  std::string json =
      "{\n  \"name\": \"Quor\",\n  \"scopeName\": \"source.quor\",\n"
      "  \"fileTypes\": [\"quor\"],\n  \"patterns\": [\n";
  for (const std::string& pattern : patterns) {
    json += "    " + pattern + (&pattern == &patterns.back() ? "\n" : ",\n");
  }
  return json + "  ]\n}\n";
}

}  // namespace quor_advice
