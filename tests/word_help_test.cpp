// What the table of words tells an author is what the compiler does: it holds exactly the words of
// the library, its examples compile, and its numbers of arguments are the ones that are taken.
#include "advice/word_help.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "advice/topic_help.h"
#include "advice/vocabulary.h"
#include "core/status.h"
#include "support/advice_cases.h"
#include "support/test_host.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor_test {
namespace {

using quor_advice::word_help;
using quor_advice::WordHelp;

constexpr int far_too_many = 40;

int64_t code_for(const std::string& script) {
  TestHost host;
  host.set_info(0x3005, "600000", "TEST");
  return host.compile(script).code;
}

/// A script with the word in its form, with that many arguments.
std::string script_with(const WordHelp& help, int arguments) {
  std::string script = help.form.starts_with("COND,") ? "C>O," : "X:=";
  if (help.word == "RGB") script.clear();  // refused in an expression, whatever the number
  script += std::string(help.word) + "(";
  const std::string argument = help.word == "NOTICE" ? "'a'" : "1";
  for (int i = 0; i < arguments; ++i) script += (i > 0 ? "," : "") + argument;
  return script + ");";
}

TEST(WordHelp, holds_the_words_of_the_library) {
  std::vector<std::string_view> words;
  for (const quor::FunctionRow& row : quor::FunctionIdTable()) words.push_back(row.word);
  std::ranges::sort(words);
  std::vector<std::string_view> told;
  for (const WordHelp& help : word_help()) told.push_back(help.word);
  EXPECT_EQ(told, words);
}

TEST(WordHelp, knows_the_period_of_each_word) {
  quor::build_function_registry();
  for (const quor::FunctionRow& row : quor::FunctionIdTable()) {
    const auto* told = quor_advice::find_period(row.word);
    const size_t period = quor::find_function(row.word)->traits().first_period;
    EXPECT_EQ(told == nullptr ? quor::Traits::none : told->index, period) << row.word;
  }
}

TEST(WordHelp, finds_a_word_in_any_case) {
  ASSERT_NE(quor_advice::find_word_help("ma"), nullptr);
  EXPECT_EQ(quor_advice::find_word_help("Ma")->form, "MA(X,N)");
  EXPECT_EQ(quor_advice::find_word_help("MAX1")->word, "MAX1");
  EXPECT_EQ(quor_advice::find_word_help("M"), nullptr);
  EXPECT_EQ(quor_advice::find_word_help(""), nullptr);
}

TEST(WordHelp, examples_compile_and_show_their_word) {
  for (const WordHelp& help : word_help()) {
    const std::string example(help.example);
    EXPECT_EQ(code_for(example), quor::error_code(quor::Status::ok)) << example;
    EXPECT_NE(help.example.find(help.word == "SOUND" ? "SOUND(" : help.word), std::string::npos)
        << example;
  }
}

TEST(WordHelp, tells_words_without_parentheses) {
  for (const WordHelp& help : word_help()) {
    const bool bare = help.form == help.word;
    EXPECT_EQ(bare, quor::BareFunctionSet().contains(help.word)) << help.word;
    EXPECT_TRUE(!bare || help.most == 0) << help.word;
  }
}

/// Whether the compile says of the second statement, the word's call, that this number is wrong.
bool is_wrong_count(const WordHelp& help, int arguments) {
  TestHost host;
  host.set_info(0x3005, "600000", "TEST");
  const Report report = host.compile("\n" + script_with(help, arguments));
  if (report.code != quor::error_code(quor::Status::argument_count)) return false;
  EXPECT_EQ(report.message, help.word);
  EXPECT_EQ(report.line, 1) << help.word;
  return true;
}

TEST(WordHelp, numbers_of_arguments_are_those_that_compile) {
  for (const WordHelp& help : word_help()) {
    if (help.form == help.word) continue;
    const int end = help.most < 0 ? far_too_many : help.most + 1;
    for (int count = std::max(help.least, 1); count < end; ++count) {
      EXPECT_FALSE(is_wrong_count(help, count)) << help.word << ' ' << count;
    }
    if (help.most >= 0) {
      EXPECT_TRUE(is_wrong_count(help, end)) << help.word;
    }
    // A notice without its name is refused for its form.
    if (help.least > 0 && help.word != "NOTICE") {
      EXPECT_TRUE(is_wrong_count(help, help.least - 1)) << help.word;
    }
  }
}

/// How many arguments the first form in the text shows.
int shown_arguments(std::string_view form) {
  const size_t open = form.find('(');
  if (open == std::string_view::npos) return 0;
  const std::string_view arguments = form.substr(open, form.find(')') - open);
  return static_cast<int>(std::ranges::count(arguments, ',')) + 1;
}

TEST(WordHelp, forms_show_as_many_arguments_as_are_needed) {
  for (const WordHelp& help : word_help()) {
    const int shown = shown_arguments(help.form);
    const bool is_open = help.most < 0 && help.least == 0;  // nothing is counted
    EXPECT_TRUE(is_open || shown >= help.least) << help.form;
    EXPECT_TRUE(help.most < 0 || shown <= help.most) << help.form;
  }
}

/// Words in capitals of a text, letters and digits.
std::vector<std::string> words_of(std::string_view text) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    const bool joins = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (joins) words.back() += c;
    if (!joins && !words.back().empty()) words.emplace_back();
  }
  return words;
}

TEST(TopicHelp, names_words_of_the_language) {
  for (const char* const name : {"fields", "colours", "styles"}) {
    const quor_advice::TopicHelp* const topic = quor_advice::find_topic_help(name);
    ASSERT_NE(topic, nullptr) << name;
    for (const auto& line : topic->lines) {
      if (line.term.find_first_of("(:") != std::string_view::npos) continue;
      for (const std::string& word : words_of(line.term)) {
        if (word.empty()) continue;
        const std::string script =
            std::string(name) == "fields" ? "A:" + word + ";" : "A:C," + word + ";";
        const std::string told = findings_text(script);
        const bool is_known = told.find("no style item") == std::string::npos &&
                              told.find("nothing defines") == std::string::npos &&
                              told.find("no colour") == std::string::npos;
        EXPECT_TRUE(is_known) << word << '\n' << told;
      }
    }
  }
}

TEST(TopicHelp, shows_what_can_be_written) {
  const auto expressions = [](std::string_view text) {
    std::istringstream parts{std::string(text)};
    std::string script;
    for (std::string part; parts >> part;)
      script += "A" + std::to_string(script.size()) + ":" + part + ";";
    return script;
  };
  for (const auto& line : quor_advice::find_topic_help("levels")->lines)
    EXPECT_EQ(findings_text(expressions(line.term)), "") << line.term;
  for (const auto& line : quor_advice::find_topic_help("speed")->lines) {
    const bool is_script = line.term.ends_with(';');
    EXPECT_EQ(is_script ? findings_text(std::string(line.term)) : "", "") << line.term;
  }
}

TEST(TopicHelp, has_each_name_for_one_topic_that_no_word_hides) {
  for (const quor_advice::TopicHelp& topic : quor_advice::topic_help()) {
    std::istringstream others{std::string(topic.others)};
    std::vector<std::string> names{std::string(topic.name)};
    for (std::string name; others >> name;) names.push_back(name);
    for (const std::string& name : names) {
      EXPECT_EQ(quor_advice::find_topic_help(name), &topic) << name;
      EXPECT_EQ(quor_advice::find_word_help(name), nullptr) << name;
    }
  }
}

TEST(TopicHelp, finds_words_by_meaning) {
  using Words = std::vector<std::string_view>;
  const auto is_among = [](const Words& words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
  };
  EXPECT_TRUE(is_among(quor_advice::words_about("average"), "MA"));
  EXPECT_TRUE(is_among(quor_advice::words_about("Greatest"), "HHV"));
  EXPECT_EQ(quor_advice::words_about("cross"), (Words{"CROSS", "CROSSDOWN", "CROSSUP"}));
  EXPECT_EQ(quor_advice::words_about("of"), Words());
  EXPECT_EQ(quor_advice::words_about("rnu"), Words());  // DRAWLASTBARNUMBER
  EXPECT_EQ(quor_advice::find_topic_help("COLORS"), quor_advice::find_topic_help("colours"));
  EXPECT_EQ(quor_advice::find_topic_help("MA"), nullptr);
}

}  // namespace
}  // namespace quor_test
