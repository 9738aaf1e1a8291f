// What a script's author is told: the mistakes of tests/advice/findings.txt with their places and
// sentences, silence about sound scripts, and the forms in which findings are printed.
#include "advice/advice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/advice_cases.h"

namespace quor_test {
namespace {

using quor_advice::Finding;
using quor_advice::Severity;

std::string file_text(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Findings : public testing::TestWithParam<AdviceCase> {};

TEST_P(Findings, lead_to_the_mistake) {
  std::vector<std::string> told;
  for (const Finding& finding : findings_of(GetParam())) told.push_back(text_of(finding));
  EXPECT_EQ(told, GetParam().findings);
}

INSTANTIATE_TEST_SUITE_P(advice, Findings,
                         testing::ValuesIn(load_advice_cases(QUOR_ADVICE "/findings.txt")));

/// A mistake of mistakes.txt is told at its place, in words that lead on, and nothing else is.
class Mistakes : public testing::TestWithParam<AdviceCase> {};

struct Expected {
  size_t line = 0;
  size_t column = 0;
  std::string words;

  explicit Expected(const std::string& text) {
    char colon = '\0';
    std::istringstream stream(text);
    stream >> line >> colon >> column >> std::ws;
    std::getline(stream, words);
  }
  bool is_met_by(const Finding& finding) const {
    const bool covers = finding.line == line && finding.column <= column &&
                        column < finding.column + finding.length;
    return covers && text_of(finding).find(words) != std::string::npos;
  }
};

TEST_P(Mistakes, are_told_once_where_they_stand) {
  const auto findings = findings_of(GetParam());
  std::string told;
  for (const Finding& finding : findings) told += text_of(finding) + '\n';
  EXPECT_EQ(findings.size(), GetParam().findings.size()) << told;
  for (const std::string& text : GetParam().findings) {
    const Expected expected(text);
    ASSERT_FALSE(expected.words.empty()) << text;
    const auto meets = [&expected](const Finding& finding) { return expected.is_met_by(finding); };
    EXPECT_TRUE(std::ranges::any_of(findings, meets)) << "wanted " << text << "\ntold\n" << told;
  }
}

INSTANTIATE_TEST_SUITE_P(advice, Mistakes,
                         testing::ValuesIn(load_advice_cases(QUOR_ADVICE "/mistakes.txt")));

class Sound : public testing::TestWithParam<AdviceCase> {};

TEST_P(Sound, scripts_have_no_finding_whatever_ends_their_lines) {
  AdviceCase sound = GetParam();
  std::vector<std::string> told;
  for (const Finding& finding : findings_of(sound)) told.push_back(text_of(finding));
  std::string with_carriage_returns;
  for (const char c : sound.script) with_carriage_returns += c == '\n' ? "\r\n" : std::string(1, c);
  sound.script = with_carriage_returns;
  for (const Finding& finding : findings_of(sound)) told.push_back(text_of(finding));
  EXPECT_EQ(told, std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(advice, Sound,
                         testing::ValuesIn(load_advice_cases(QUOR_ADVICE "/sound.txt")));

TEST(Advice, samples_have_no_finding) {
  size_t scripts = load_advice_cases(QUOR_ADVICE "/sound.txt").size();
  for (const auto& entry : std::filesystem::recursive_directory_iterator(QUOR_SAMPLES)) {
    if (entry.path().extension() != ".quor") continue;
    ++scripts;
    EXPECT_EQ(findings_text(file_text(entry.path())), "") << entry.path();
  }
  // With those of sound.txt; the guide's own, some two hundred more, are held by its tests.
  EXPECT_GE(scripts, 270U);
}

TEST(Advice, prints_as_compilers_do) {
  const Finding misspelt{Severity::error, 3, 5, 4, 2, "nothing defines EMMA", "did you mean EMA?"};
  EXPECT_EQ(quor_advice::compiler_text({misspelt}, "A:C;\r\nB:O;\rDIF:EMMA(C,12);", "macd.quor"),
            "macd.quor:3:5: error: nothing defines EMMA (code 2); did you mean EMA?\n"
            "DIF:EMMA(C,12);\n"
            "    ^~~~\n");
  // Under a tab stands a tab, under a wide character two places.
  const Finding wide{Severity::warning, 1, 4, 2, 0, "odd", ""};
  EXPECT_EQ(quor_advice::compiler_text({wide}, "\t均:线x;", "a"),
            "a:1:4: warning: odd\n\t均:线x;\n\t   ^~~\n");
  const Finding placeless{Severity::warning, 0, 0, 0, 0, "odd", "mend it"};
  EXPECT_EQ(quor_advice::compiler_text({placeless}, "A:C;", "a"), "a: warning: odd; mend it\n");
}

TEST(Advice, gives_json) {
  EXPECT_EQ(quor_advice::json_text({}), "[]");
  EXPECT_EQ(quor_advice::json_text({{Severity::error, 1, 2, 3, 5, "a \"b\"\t", "c\\"},
                                    {Severity::warning, 0, 0, 0, 0, "d", ""}}),
            R"([{"severity":"error","line":1,"column":2,"length":3,"code":5,)"
            R"("sentence":"a \"b\"\u0009","suggestion":"c\\"},)"
            "\n "
            R"({"severity":"warning","line":0,"column":0,"length":0,"code":0,)"
            R"("sentence":"d","suggestion":""}])");
}

TEST(Advice, names_what_a_script_declares_and_reads) {
  const auto names = quor_advice::names_in(
      "CONST n:5; m 1:ma(c,n); { x:1; } M1>c,NOTICE('y:1'); A=1; b:=m1; B:C; D\n:=1");
  EXPECT_EQ(names.lines, (std::vector<std::string>{"M1", "B", "D"}));
  EXPECT_EQ(names.constants, std::vector<std::string>{"N"});
  EXPECT_EQ(names.words, (std::vector<std::string>{"CONST", "N", "M", "MA", "C", "M1", "NOTICE",
                                                   "A", "B", "D"}));
}

TEST(Advice, says_what_a_parameter_can_not_be_called) {
  const auto faults = quor_advice::parameter_faults("CONST n:5;\nm:=ma(c,n)+k+date; k2:k",
                                                    {"N", "K", "M", "MA", "C", "DATE"});
  const auto told = [&faults](size_t at) {
    const auto& [name, is_idle, finding] = faults.at(at);
    return name + (is_idle ? " idle " : " ") + std::to_string(finding.line) + ':' +
           std::to_string(finding.column) + ' ' + finding.sentence;
  };
  ASSERT_EQ(faults.size(), 5U);
  EXPECT_EQ(told(0), "N idle 1:7 the script's own CONST N stands");
  EXPECT_EQ(told(1), "M idle 0:0 the script doesn't read M");
  EXPECT_EQ(told(2), "MA idle 0:0 the script doesn't read MA");
  EXPECT_EQ(told(3), "C 2:7 this hides the bar field C");
  EXPECT_EQ(told(4), "DATE idle 2:14 the language's own word DATE stands");
}

/// Lines without a mistake: short chains, each read by a line far below its own.
std::string sound_lines(size_t first, size_t count) {
  std::string text;
  for (size_t i = first; i < first + count; ++i) {
    const std::string number = std::to_string(i);
    const std::string far = std::to_string(i - i % 20);
    text += "ZA" + number + ":=EMA(C,5)" + (i % 20 == 0 ? "" : "-ZA" + far) + ";\n";
    text += "ZB" + number + ":MA(ZA" + number + ",3),COLORRED;\n";
  }
  return text;
}

struct LongScript {
  AdviceCase all;
  size_t compiled_bytes = 0;

  std::vector<std::string> told() {
    std::vector<std::string> told;
    for (const Finding& finding : findings_of(all, &compiled_bytes))
      told.push_back(text_of(finding));
    return told;
  }
};

/// A long script is looked through in pieces. A quote in a comment has it compiled as a whole: both
/// ways find the same.
TEST(Advice, finds_in_pieces_what_the_whole_shows) {
  std::vector<AdviceCase> cases = load_advice_cases(QUOR_ADVICE "/mistakes.txt");
  std::ranges::copy(load_advice_cases(QUOR_ADVICE "/findings.txt"), std::back_inserter(cases));
  std::erase_if(cases, [](const AdviceCase& one) { return !one.parameters.empty(); });
  // The second of a pair reads the first by what is no word of its own.
  for (const char* const text :
       {"C>O,BK;", ":=BK,();X:EMMA(C,3);", "M 5:=C;", "B:M 5+1;X:EMMA(C,3);"}) {
    cases.emplace_back().script = text;
  }
  size_t in_pieces = 0;
  for (size_t i = cases.size() % 2; i + 1 < cases.size(); i += 2) {
    const std::string text = sound_lines(0, 20) + cases[i].script + '\n' + sound_lines(20, 10) +
                             cases[i + 1].script + '\n' + sound_lines(40, 5);
    LongScript script{cases[i]};
    script.all.script = "{xx}\n" + text;
    LongScript whole{cases[i]};
    whole.all.script = "{''}\n" + text;
    EXPECT_EQ(script.told(), whole.told()) << script.all.script;
    if (script.compiled_bytes != whole.compiled_bytes) ++in_pieces;
  }
  EXPECT_GT(in_pieces, 200U);
}

/// An answer while one types: the errors of 500 lines cost little more than three compiles.
TEST(Advice, compiles_little_for_many_errors) {
  LongScript script;
  for (size_t i = 0; i < 20; ++i) {
    script.all.script += sound_lines(i * 12, 12) + "X" + std::to_string(i) + ":EMMA(C,3);\n";
  }
  EXPECT_EQ(script.told().size(), 20U);
  EXPECT_LT(script.compiled_bytes, 4 * script.all.script.size());
}

/// The same where every line reads the one above, so that the last one is made of all.
TEST(Advice, compiles_little_for_many_errors_of_a_chain) {
  LongScript script;
  script.all.script = "L0:=C;\n";
  for (size_t i = 1; i < 480; ++i) {
    const std::string above = "L" + std::to_string(i - 1);
    script.all.script += "L" + std::to_string(i) + ":=" + above + "*0.5+EMA(C,5);\n";
    if (i % 24 == 0) script.all.script += above + ">MISSING" + std::to_string(i) + ",STICK;\n";
  }
  EXPECT_EQ(script.told().size(), 19U);
  EXPECT_LT(script.compiled_bytes, 4 * script.all.script.size());
}

/// Advice costs little and ends, whatever the script: here what nests and repeats without end.
TEST(Advice, takes_any_script) {
  const auto repeated = [](std::string_view text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; ++i) all += text;
    return all;
  };
  for (const char* const part : {"(", "MA(", "MA(C,", "A:(C", "A:B;",       "A:C,;",  "{",
                                 "'", "\"",  "\xE4",  "&&",   "A:=A+A;",    "C,RED,", "1 1 ",
                                 "+", "@",   "IF(C,", "A=B=", "CONST A:1;", "：",     "\t-"}) {
    quor_advice::Input input;
    const std::string script = repeated(part, 5000);
    input.script = script;
    for (
        const char* const report :
        {"", R"("ErrCode":2,"ExtraMsg":"A","IsNeedRequestTradeDay":"","ErrLine":0})",
         R"("ErrCode":4,"ExtraMsg":"","IsNeedRequestTradeDay":"","ErrLine":4999})",
         R"("ErrCode":6,"ExtraMsg":"MA","IsNeedRequestTradeDay":"","ErrLine":0})",
         R"("ErrCode":14,"ExtraMsg":"","IsNeedRequestTradeDay":"","ErrLine":99999999999999999999})"}) {
      input.report = report;
      EXPECT_LE(quor_advice::advise(input).size(), 101U);
      // A library that refuses whatever is left of the script.
      quor_advice::Input refused = input;
      const std::string shorter = repeated(part, 200);
      refused.script = shorter;
      refused.compile = [report](std::string_view) { return std::string(report); };
      EXPECT_LE(quor_advice::advise(refused).size(), 101U);
    }
  }
}

TEST(Advice, reads_reports_that_are_no_json) {
  quor_advice::Input input;
  input.script = "A:C;\nB:\"x\"+D;";
  input.report = R"({"ErrCode":2014,"IsNeedRequestExtraData":"","ExtraMsg":"B:"x"+D",)"
                 R"("IsNeedRequestTradeDay":"","ErrLine":1})";
  const auto findings = quor_advice::advise(input);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(text_of(findings[0]),
            "2:1-7 error 2014: a second drawing or signal in one statement: B:\"x\"+D");
  input.report = "nothing of the kind";
  input.script = "A:C;";
  EXPECT_TRUE(quor_advice::advise(input).empty());
}

}  // namespace
}  // namespace quor_test
