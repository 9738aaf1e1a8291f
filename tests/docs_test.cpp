// The guide for script authors is complete, and what it shows is true: every word and every code
// stands in it, every example compiles, and every script in its table of errors raises its code.
#include <gtest/gtest.h>

#include <cctype>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/status.h"
#include "support/advice_cases.h"
#include "support/test_host.h"
#include "tables/function_table.h"

namespace quor_test {
namespace {

constexpr uint32_t five_minutes = 0x3005;

std::string guide() {
  std::ifstream file(QUOR_DOCS "/language.md");
  return {std::istreambuf_iterator<char>(file), {}};
}

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

TEST(Docs, language_explains_every_code) {
  std::set<int64_t> codes;
  for (const std::string& line : lines_of(error_table(guide()))) {
    if (const auto code = code_of(line)) codes.insert(*code);
  }
  std::set<int64_t> expected;
  for (int64_t code = 0; code <= quor::status_branch_as_argument; ++code) expected.insert(code);
  for (int64_t code = 2000; code <= quor::status_signal_looks_ahead; ++code) expected.insert(code);
  expected.erase(2005);  // the one number in between that nothing uses
  expected.insert(quor::status_exception);
  for (const int64_t code : expected) EXPECT_TRUE(codes.contains(code)) << code;
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

}  // namespace
}  // namespace quor_test
