// Findings through the face for C: structures with their texts and changes, and bad calls.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "advice/advice.h"
#include "advice/code_help.h"
#include "quor_advice.h"
#include "quor_advice.hpp"
#include "quor_parser.h"
#include "support/advice_cases.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr int32_t five_minutes = 0x3005;

char* compile(void* context, const char* script, uint32_t script_length, uint32_t* report_length) {
  ++*static_cast<int*>(context);
  TestHost host;
  host.set_info(five_minutes, "600000", "USHA");
  return get_pre_parse_res(host.handle(), script, "", "", script_length, 0, 0, report_length);
}

/// The findings of a script, and what they point at.
class Findings {
 public:
  explicit Findings(const std::string& script, bool can_compile = true) {
    TestHost host;
    host.set_info(five_minutes, "600000", "USHA");
    const std::string report = report_of(host, script, "");
    quor_advice_input input = QUOR_ADVICE_INPUT;
    input.script = script.data();
    input.script_length = static_cast<uint32_t>(script.size());
    input.report = report.data();
    input.report_length = static_cast<uint32_t>(report.size());
    input.period = five_minutes;
    if (can_compile) input.compile = compile;
    input.release = release_ptr_val;
    input.context = &compiles;
    findings_ = quor_advise(&input);
  }
  ~Findings() { quor_findings_free(findings_); }
  Findings(const Findings&) = delete;
  Findings& operator=(const Findings&) = delete;

  const quor_findings* get() const { return findings_; }
  uint32_t count() const { return quor_findings_count(findings_); }
  const quor_finding& at(uint32_t index) const { return *quor_findings_at(findings_, index); }
  std::string_view json() const {
    uint32_t length = 0;
    const char* const text = quor_findings_json(findings_, &length);
    return {text, length};
  }

  int compiles = 0;

 private:
  quor_findings* findings_ = nullptr;
};

TEST(AdviceFace, gives_places_sentences_and_changes) {
  const std::string script = "均:C;\r\nA:EMMA(均,12);B:C,BOLD;";
  const Findings findings(script);
  ASSERT_EQ(findings.count(), 2U);
  const quor_finding& error = findings.at(0);
  EXPECT_EQ(error.severity, QUOR_ADVICE_ERROR);
  EXPECT_EQ(error.code, 2);
  EXPECT_EQ(error.line, 2U);
  EXPECT_EQ(error.column, 3U);
  EXPECT_EQ(error.length, 4U);
  EXPECT_EQ(script.substr(error.begin, error.end - error.begin), "EMMA");
  EXPECT_STREQ(error.sentence, "nothing defines EMMA");
  EXPECT_STREQ(error.suggestion, "did you mean EMA?");
  ASSERT_EQ(error.fix_count, 1U);
  EXPECT_EQ(error.fixes[0].begin, error.begin);
  EXPECT_EQ(error.fixes[0].end, error.end);
  EXPECT_STREQ(error.fixes[0].text, "EMA");
  EXPECT_STREQ(error.fixes[0].title, "write EMA");
  const quor_finding& warning = findings.at(1);
  EXPECT_EQ(warning.severity, QUOR_ADVICE_WARNING);
  EXPECT_EQ(warning.code, 0);
  EXPECT_EQ(warning.fix_count, 2U) << "another word, and none";
  EXPECT_GT(findings.compiles, 0);
  EXPECT_EQ(quor_findings_at(findings.get(), 2), nullptr);
}

/// All mistakes of the tests have the same findings as in C++.
TEST(AdviceFace, says_what_advice_says) {
  size_t compared = 0;
  for (const AdviceCase& each : load_advice_cases(QUOR_ADVICE "/mistakes.txt")) {
    if (!each.parameters.empty() || each.bars > 0 || each.period != five_minutes) continue;
    const auto expected = findings_of(each);
    const Findings findings(each.script);
    EXPECT_EQ(findings.json(), quor_advice::json_text(expected)) << each.script;
    ASSERT_EQ(findings.count(), expected.size());
    for (uint32_t i = 0; i < findings.count(); ++i) {
      EXPECT_EQ(findings.at(i).sentence, expected[i].sentence);
      EXPECT_LE(findings.at(i).end, each.script.size());
    }
    ++compared;
  }
  EXPECT_GE(compared, 250U);
}

TEST(AdviceFace, does_without_a_compiler) {
  const Findings findings("A:EMMA(C,12);B:MIA(C,3);", false);
  ASSERT_EQ(findings.count(), 1U) << "the first error alone";
  EXPECT_EQ(findings.at(0).fix_count, 1U);
  EXPECT_EQ(findings.compiles, 0);
}

TEST(AdviceFace, bears_bad_calls) {
  quor_advice_input input = QUOR_ADVICE_INPUT;
  EXPECT_EQ(quor_advise(nullptr), nullptr);
  input.version = 0;
  EXPECT_EQ(quor_advise(&input), nullptr) << "a version that isn't known";
  input.version = QUOR_ADVICE_VERSION;
  quor_findings* const empty = quor_advise(&input);
  EXPECT_NE(empty, nullptr);
  EXPECT_EQ(quor_findings_count(empty), 1U) << "that there is no statement";
  uint32_t length = 0;
  EXPECT_EQ(std::string_view(quor_findings_text(empty, &length)).size(), length);
  EXPECT_STREQ(quor_findings_text(empty, nullptr),
               "script:1:1: warning: the script has no statement\n\n^\n");
  quor_findings_free(empty);
  EXPECT_EQ(quor_findings_count(nullptr), 0U);
  EXPECT_EQ(quor_findings_at(nullptr, 0), nullptr);
  EXPECT_STREQ(quor_findings_json(nullptr, &length), "");
  EXPECT_EQ(length, 0U);
  quor_findings_free(nullptr);
  quor_advice_release_text(nullptr);
}

TEST(AdviceFace, has_a_sentence_for_every_code) {
  uint32_t index = 0;
  for (; quor_advice_code(index) != 0; ++index) {
    const int32_t code = quor_advice_code(index);
    EXPECT_EQ(quor_advice_meaning(code), quor_advice::find_code_help(code)->meaning);
    EXPECT_EQ(quor_advice_cure(code), quor_advice::find_code_help(code)->cure);
  }
  EXPECT_EQ(index, quor_advice::code_help().size());
  EXPECT_STREQ(quor_advice_meaning(5), "a quote is left open");
  EXPECT_EQ(quor_advice_meaning(0), nullptr);
  EXPECT_EQ(quor_advice_cure(-1), nullptr);
}

TEST(AdviceFace, lays_scripts_out) {
  uint32_t length = 0;
  char* const text = quor_advice_format("A:C;B:O;", 8, &length);
  EXPECT_STREQ(text, "A : C;\nB : O;\n");
  EXPECT_EQ(length, 14U);
  quor_advice_release_text(text);
  char* const nothing = quor_advice_format(nullptr, 0, nullptr);
  EXPECT_STREQ(nothing, "");
  quor_advice_release_text(nothing);
}

TEST(AdviceFace, comes_by_value_in_cpp) {
  std::string script = "A:EMMA(C,N);B:MIA(C,3);D:\"MIN$1$C\";";
  quor::Setting setting;
  setting.parameters = R"([{"PARAM_NAME":"N","DEFAULT":5}])";
  setting.period = quor::period_minutes + 5;
  std::string told;
  // Every finding with a change is mended by its best one.
  for (int rounds = 0; rounds < 3; ++rounds) {
    const auto findings = quor::Script(script, setting).findings();
    for (const quor::Finding& finding : findings) {
      told += std::to_string(finding.line) + ':' + std::to_string(finding.column) +
              (finding.is_error ? " error " : " warning ") + std::to_string(finding.code) + ' ' +
              finding.sentence + '\n';
    }
    for (const quor::Finding& finding : findings) {
      if (finding.fixes.empty()) continue;
      script = quor::changed(script, finding.fixes[0]);
      break;
    }
  }
  const std::string period = "1:26 error 2009 the period isn't longer than that of the bars\n";
  EXPECT_EQ(told, "1:3 error 2 nothing defines EMMA\n1:15 error 2 nothing defines MIA\n" + period +
                      "1:14 error 2 nothing defines MIA\n1:25" + period.substr(4) + "1:24" +
                      period.substr(4));
  EXPECT_EQ(script, "A:EMA(C,N);B:MA(C,3);D:\"MIN$1$C\";");
  quor::Script stopped("N:=BARSLAST(C>O)-9;A:STD(C,N);");
  EXPECT_TRUE(stopped);
  EXPECT_TRUE(stopped.findings().empty());
  stopped.parser().feed({{20240102000000, {{quor::close_column, 2}, {quor::open_column, 1}}},
                         {20240103000000, {{quor::close_column, 1}, {quor::open_column, 2}}}});
  EXPECT_FALSE(stopped.calculate(0));
  ASSERT_EQ(stopped.findings().size(), 1U) << "what ended the calculation";
  EXPECT_EQ(stopped.findings()[0].code, 4000);
  EXPECT_EQ(stopped.findings()[0].column, 28U);
  EXPECT_EQ(quor::meaning(14), "the statement has no ';' at its end");
  EXPECT_EQ(quor::cure(99), "");
  EXPECT_EQ(quor::laid_out("A:C;"), "A : C;\n");
}

}  // namespace
}  // namespace quor_test
