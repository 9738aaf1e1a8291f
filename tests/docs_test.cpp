// The guide for script authors is complete, and what it shows is true: every word and every code
// stands in it, every example compiles, and every script in its table of errors raises its code.
#include <gtest/gtest.h>

#include <cctype>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "advice/code_help.h"
#include "advice/word_index.h"
#include "core/status.h"
#include "support/advice_cases.h"
#include "support/test_host.h"
#include "vocabulary/function_sets.h"

namespace quor_test {
namespace {

constexpr uint32_t five_minutes = 0x3005;
constexpr size_t absent = std::string::npos;

std::string text_of(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string guide() { return text_of(QUOR_DOCS "/language.md"); }

std::vector<std::string> lines_of(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// The words in capitals of all passages between backquotes.
std::set<std::string> words_in_code(const std::string& text) {
  std::set<std::string> words;
  std::string word;
  bool in_code = false;
  for (const char c : text) {
    const bool joins = std::isupper(static_cast<unsigned char>(c)) || std::isdigit(c);
    if (joins && in_code) word += c;
    if (joins) continue;
    if (!word.empty()) words.insert(std::exchange(word, {}));
    if (c == '`') in_code = !in_code;
  }
  return words;
}

/// What stands between backquotes at the end of a table row, if it is a script.
std::optional<std::string> example_of(std::string_view row) {
  if (!row.starts_with("|") || !row.ends_with("` |")) return std::nullopt;
  row.remove_suffix(3);
  return std::string(row.substr(row.rfind('`') + 1));
}

/// "| 2004 | ...": the number in the first cell.
std::optional<int64_t> code_of(std::string_view row) {
  int64_t code = 0;
  if (!row.starts_with("| ")) return std::nullopt;
  const auto [stop, error] = std::from_chars(row.data() + 2, row.data() + row.size(), code);
  if (error != std::errc() || *stop != ' ') return std::nullopt;
  return code;
}

int64_t code_for(const std::string& script, std::string& message) {
  TestHost host;
  host.set_info(five_minutes, "600000", "TEST");
  const Report report = host.compile(script);
  message = report.message;
  return report.code;
}

std::vector<std::string> fenced_scripts(const std::string& text) {
  constexpr std::string_view fence = "```quor\n";
  std::vector<std::string> scripts;
  for (size_t at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
    at += fence.size();
    scripts.push_back(text.substr(at, text.find("```", at) - at));
  }
  return scripts;
}

std::string error_table(const std::string& text) {
  const size_t at = text.find("\n## Errors");
  return at == std::string::npos ? "" : text.substr(at);
}

TEST(Docs, language_names_every_word) {
  const std::set<std::string> words = words_in_code(guide());
  for (const quor::FunctionRow& row : quor::FunctionIdTable()) {
    EXPECT_TRUE(words.contains(std::string(row.word))) << row.word;
  }
}

TEST(Docs, language_ends_with_the_index_of_words) {
  EXPECT_TRUE(guide().ends_with("-->\n" + quor_advice::word_index()))
      << "tools/word-index.sh writes it anew";
}

TEST(Docs, language_explains_every_code) {
  std::set<int64_t> codes;
  for (const std::string& line : lines_of(error_table(guide()))) {
    if (const auto code = code_of(line)) codes.insert(*code);
  }
  const int64_t last_of_compile = error_code(quor::Status::branch_as_argument);
  const int64_t last_of_run = error_code(quor::Status::signal_looks_ahead);
  std::set<int64_t> expected;
  for (int64_t code = 0; code <= last_of_compile; ++code) expected.insert(code);
  for (int64_t code = 2000; code <= last_of_run; ++code) expected.insert(code);
  expected.erase(2005);  // the one number in between that nothing uses
  expected.insert(error_code(quor::Status::exception));
  for (const int64_t code : expected) EXPECT_TRUE(codes.contains(code)) << code;

  // And so does the help that hosts show, where the library's own text may be empty.
  std::vector<int64_t> told = {0};
  for (const quor_advice::CodeHelp& help : quor_advice::code_help()) {
    told.push_back(help.code);
    EXPECT_EQ(quor_advice::find_code_help(help.code), &help);
    EXPECT_FALSE(help.meaning.empty() || help.cure.empty()) << help.code;
  }
  EXPECT_EQ(told, std::vector<int64_t>(expected.begin(), expected.end()));
  EXPECT_EQ(quor_advice::find_code_help(2005), nullptr);
}

TEST(Docs, language_shows_scripts_that_compile) {
  const std::string text = guide();
  std::vector<std::string> scripts = fenced_scripts(text);
  EXPECT_FALSE(scripts.empty());
  for (const std::string& line : lines_of(text)) {
    const auto example = example_of(line);
    if (example && example->ends_with(";") && !code_of(line)) scripts.push_back(*example);
  }
  std::string message;
  for (const std::string& script : scripts) {
    EXPECT_EQ(code_for(script, message), 0) << script << '\n' << message;
    EXPECT_EQ(findings_text(script), "") << script;
  }
}

TEST(Docs, language_shows_scripts_that_raise_their_codes) {
  std::string message;
  for (const std::string& line : lines_of(error_table(guide()))) {
    const auto code = code_of(line);
    const auto example = example_of(line);
    if (!code || !example) continue;
    EXPECT_EQ(code_for(*example, message), *code) << *example << '\n' << message;
  }
}

/// They run over bars of hours, in and out of days, and no line of them stays null. The first table
/// leads to each.
TEST(Docs, tasks_show_scripts_that_run) {
  const std::string text = text_of(QUOR_DOCS "/tasks.md");
  const std::vector<std::string> scripts = fenced_scripts(text);
  EXPECT_GE(scripts.size(), 20U);
  for (const std::string& script : scripts) {
    AdviceCase task;
    task.script = script;
    task.period = 0x303C;
    task.bars = 400;
    task.is_hourly = true;
    std::string told;
    for (const auto& finding : findings_of(task)) told += finding.sentence + '\n';
    EXPECT_EQ(told, "") << script;
  }
  for (const std::string& line : lines_of(text)) {
    if (!line.starts_with("## ") || line == "## A first hour" || line.find("writing") != absent)
      continue;
    EXPECT_NE(text.find("[" + line.substr(3) + "](#"), absent) << line;
  }
}

TEST(Docs, cookbook_shows_every_sample) {
  const std::string page = text_of(QUOR_DOCS "/cookbook.md");
  size_t samples = 0;
  std::string message;
  for (const auto& entry : std::filesystem::directory_iterator(QUOR_SAMPLES "/cookbook")) {
    const std::string script = text_of(entry.path());
    EXPECT_NE(page.find("```quor\n" + script + "```\n"), std::string::npos) << entry.path();
    EXPECT_EQ(code_for(script, message), 0) << entry.path() << '\n' << message;
    ++samples;
  }
  EXPECT_EQ(samples, fenced_scripts(page).size());
}

/// The front page shows a sample without its comments, beside its picture.
TEST(Docs, front_page_shows_a_sample) {
  std::string script;
  for (const std::string& line : lines_of(text_of(QUOR_SAMPLES "/cookbook/donchian.quor"))) {
    if (!line.starts_with("//")) script += line + '\n';
  }
  const std::string page = text_of(QUOR_DOCS "/../README.md");
  EXPECT_EQ(fenced_scripts(page), std::vector<std::string>{script});
  EXPECT_NE(page.find("gallery/donchian-"), absent);
}

/// "TempBrushKey.#CC3030": the value behind the key that a script's line has.
std::string colour_value(const std::string& word) {
  TestHost host;
  host.compile("A:C," + word + ";");
  const std::string shapes = host.shapes();
  const size_t mark = shapes.find("TempBrushKey.#");
  return mark == std::string::npos ? "none" : shapes.substr(mark + 13, 7);
}

/// "#CC3030": the value that comes next behind the word.
std::string value_behind(const std::string& text, const std::string& word, std::string_view mark) {
  const size_t at = text.find(mark, text.find(word));
  return at == std::string::npos ? "none" : text.substr(at + mark.size() - 1, 7);
}

TEST(Docs, colours_have_the_values_of_the_records) {
  const std::string text = guide();
  const std::string table = text.substr(text.find("\n### Colours"));
  const std::string picture = text_of(QUOR_DOCS "/colours.svg");
  const std::string hosts = text_of(QUOR_DOCS "/host.md");
  size_t colours = 0;
  for (const std::string& word : words_in_code(table)) {
    const std::string value = word.starts_with("COLOR") ? colour_value(word) : "none";
    if (value == "none") continue;
    ++colours;
    EXPECT_EQ(value_behind(table, '`' + word + '`', "#"), value) << word;
    EXPECT_EQ(value_behind(hosts, '`' + word + '`', "#"), value) << word;
    EXPECT_EQ(value_behind(picture, '>' + word + '<', ">#"), value) << word;
  }
  EXPECT_EQ(colours, 15U);
}

}  // namespace
}  // namespace quor_test
