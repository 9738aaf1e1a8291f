// The layout of scripts: how it looks, that it is its own layout, and that it changes nothing that
// a script calculates, draws or raises.
#include "advice/formatting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "advice/word_help.h"
#include "support/advice_cases.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

using quor_advice::format_script;

struct LayoutCase {
  std::string_view written;
  std::string_view laid_out;
};

TEST(Formatting, has_one_layout) {
  const LayoutCase cases[] = {
      {"", ""},
      {" \n\n", "\n"},
      {"A:C;B:=ma( c ,5 ),colorred , DOT;", "A : C;\nB := ma(c, 5), colorred, DOT;\n"},
      {"b : = ema(a, 10);", "b := ema(a, 10);\n"},
      {"CONST   N:-5;\nCONST S:1E-5;", "CONST N : -5;\nCONST S : 1E-5;\n"},
      {"A:-C+2*-3-(-O)/H%2;", "A : -C + 2 * -3 - (-O) / H % 2;\n"},
      {"A:C>=O and H==L||O!=C;", "A : C >= O and H == L || O != C;\n"},
      {"A\n:\nMA\n(\nC\n,\n5\n)\n;", "A : MA(C, 5);\n"},
      {"C>O,NOTICE('a  b,c');", "C > O, NOTICE('a  b,c');\n"},
      {"A:\"DAY$1$CLOSE\";", "A : \"DAY$1$CLOSE\";\n"},
      // Words that stand apart read as one, and are seen apart.
      {"m  5:c;", "m 5 : c;\n"},
      // Empty statements and further blank lines go, one blank line stays.
      {"\n\nA:C;;\n\n\n\nB:O;;;\n\n", "A : C;\n\nB : O;\n"},
      {"A:C;\r\nB:O;\r\n", "A : C;\r\nB : O;\r\n"},
      {"A:C;\rB:O;", "A : C;\nB : O;\n"},
      // Comments stay beside what they stand beside.
      {"// top\t \n\nA:C; // end\n{ one }B:O;{ two }\n",
       "// top\n\nA : C; // end\n{ one }\nB : O; { two }\n"},
      {"A:C{why}+O /* how */;", "A : C {why} + O /* how */;\n"},
      {"/* one\n   two */A:C;{open", "/* one\n   two */\nA : C; {open\n"},
      {"A:C;}B:O;", "A : C; }\nB : O;\n"},
      // What reads otherwise with blanks moved stays as written: a minus behind a tab or a comment
      // is a sign, a comment inside a word or over a line end.
      {"A:B\t-C;B:c;", "A:B\t-C;\nB : c;\n"},
      {"A:B\nAND C;", "A:B\nAND C;\n"},
      {"A:(B,\n{ x\n y } C);", "A:(B,\n{ x\n y } C);\n"},
      {"A:{x}=C;", "A:{x}=C;\n"},
      // A line end at the end of a script heals some of them, which is the author's to do.
      {"A:C; /* end */", "A : C; /* end */"},
      // A statement with a mistake in its form stays as well: what looks like a long one may be
      // two.
      {"A:C;B:MA(C", "A : C;\nB:MA(C\n"},
      {"A:MA(C,5)\nB:MA(C,10);D:c;", "A:MA(C,5)\nB:MA(C,10);\nD : c;\n"},
      {"A:MA(C,5)+);", "A:MA(C,5)+);\n"},
  };
  for (const auto& [written, laid_out] : cases) {
    EXPECT_EQ(format_script(written).text, laid_out) << written;
  }
}

TEST(Formatting, breaks_what_is_too_long) {
  const LayoutCase cases[] = {
      {"MTR:=SUM(MAX(MAX(HIGHEST-LOWEST,ABS(HIGHEST-REF(CLOSE,1))),ABS(REF(CLOSE,1)-LOWEST)),"
       "NUMBER_OF);",
       "MTR := SUM(\n"
       "    MAX(MAX(HIGHEST - LOWEST, ABS(HIGHEST - REF(CLOSE, 1))), ABS(REF(CLOSE, 1) - "
       "LOWEST)),\n"
       "    NUMBER_OF);\n"},
      {"FOUND:CLOSE>REF(CLOSE,1) AND VOLUME_OF_BAR>REF(VOLUME_OF_BAR,1) AND "
       "(CLOSE-REF(CLOSE,1))*100>LEAST,NODRAW;",
       "FOUND : CLOSE > REF(CLOSE, 1)\n"
       "    AND VOLUME_OF_BAR > REF(VOLUME_OF_BAR, 1)\n"
       "    AND (CLOSE - REF(CLOSE, 1)) * 100 > LEAST, NODRAW;\n"},
      // Items that fit nowhere else stand on a line of their own.
      {"A:MA(CLOSE,5)+MA(CLOSE,10)+MA(CLOSE,20)+MA(CLOSE,30)+MA(CLOSE,60),COLORRED,LINETHICK2,"
       "PRECIS2;",
       "A : MA(CLOSE, 5) + MA(CLOSE, 10) + MA(CLOSE, 20) + MA(CLOSE, 30) + MA(CLOSE, 60),\n"
       "    COLORRED, LINETHICK2, PRECIS2;\n"},
      // A wide letter takes two places.
      {"均线均线均线均线均线:=均线均线均线均线均线均线均线均线均线均线+"
       "均线均线均线均线均线均线均线均线均线均线;",
       "均线均线均线均线均线 := 均线均线均线均线均线均线均线均线均线均线\n"
       "    + 均线均线均线均线均线均线均线均线均线均线;\n"},
  };
  for (const auto& [written, laid_out] : cases) {
    EXPECT_EQ(format_script(written).text, laid_out);
  }
}

TEST(Formatting, leaves_what_it_can_not_read) {
  const auto open = format_script("A:C;\r\nB:'x;");
  EXPECT_EQ(open.text, "A:C;\r\nB:'x;");
  EXPECT_EQ(open.unreadable_at, 8U);
  const auto half = format_script("A:C // end\n;");
  EXPECT_EQ(half.text, "A:C // end\n;");
  EXPECT_EQ(half.unreadable_at, 4U);
}

std::vector<AdviceCase> all_scripts() {
  std::vector<AdviceCase> all;
  for (const char* const name : {"/sound.txt", "/findings.txt", "/mistakes.txt"}) {
    for (AdviceCase& script : load_advice_cases(std::string(QUOR_ADVICE) + name)) {
      all.push_back(std::move(script));
    }
  }
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) {
    AdviceCase example;
    example.script = help.example;
    all.push_back(std::move(example));
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(QUOR_SAMPLES)) {
    if (entry.path().extension() != ".quor") continue;
    std::ifstream file(entry.path());
    AdviceCase sample;
    sample.script = {std::istreambuf_iterator<char>(file), {}};
    all.push_back(std::move(sample));
  }
  return all;
}

/// Without the number of the statement that an error is in.
std::string without_places(const std::string& answer) {
  return std::regex_replace(answer, std::regex("\"ErrLine\":\"?-?[0-9]*"), "");
}

/// All that the library tells of a script: the report and, if it compiles, the answer of a run, its
/// drawings and every cell. Where a statement stands moves with the layout.
std::string told_of(const AdviceCase& script) {
  clear_events();
  TestHost host;
  host.set_info(static_cast<int32_t>(script.period), "600000", "USHA");
  std::string told = without_places(report_of(host, script.script, script.parameters));
  if (told.find("\"ErrCode\":0,") == std::string::npos) return told;
  Bars bars;
  for (size_t i = 0; i < 40; ++i) {
    const double wave = static_cast<double>(i * i % 11) - 5.0;
    bars["O"].push_back(20.0 + wave / 2);
    bars["C"].push_back(20.0 - wave);
    bars["H"].push_back(26.0);
    bars["L"].push_back(14.0);
    bars["V"].push_back(100.0 + wave);
  }
  host.feed(bars);
  told += without_places(host.run(0, true)) + host.shapes();
  const auto names = quor_advice::names_in(script.script);
  // Random numbers are others in every run.
  if (std::ranges::find(names.words, "RAND") != names.words.end()) return told;
  for (const auto& name : names.lines) told += to_text(host.line(name));
  for (const auto& notice : events().notices) told += notice.text;
  return told;
}

TEST(Formatting, changes_nothing_that_is_compiled_or_calculated) {
  size_t changed = 0;
  for (const AdviceCase& script : all_scripts()) {
    AdviceCase laid_out = script;
    laid_out.script = format_script(script.script).text;
    EXPECT_EQ(format_script(laid_out.script).text, laid_out.script) << "laid out twice";
    if (laid_out.script != script.script) ++changed;
    EXPECT_EQ(told_of(laid_out), told_of(script)) << script.script << "\n-- as\n"
                                                  << laid_out.script;
  }
  EXPECT_GE(changed, 600U);
}

/// Pieces in any order, so that marks of comments and quotes meet where no author puts them.
TEST(Formatting, is_its_own_layout_whatever_it_reads) {
  constexpr std::string_view pieces[] = {
      "A",  ":", ":=", "C",  ",", ";", ";",     "\n",   "\n",      " ",    "\t", "(",
      ")",  "-", "+",  "*",  "=", "!", "{",     "}",    "/*",      "*/",   "//", "'",
      "\"", "<", ">",  "&",  "|", "5", " AND ", " or ", "CONST",   "均线", "\r", "\xC2\xA0",
      "@",  "~", ".",  "1E", "[", "]", "\xFF",  "MA(",  "COLORRED"};
  std::mt19937 random(7);
  std::uniform_int_distribution<size_t> piece(0, std::size(pieces) - 1);
  for (int round = 0; round < 20000; ++round) {
    std::string script;
    for (size_t length = 1 + random() % 24; length > 0; --length) script += pieces[piece(random)];
    const std::string once = format_script(script).text;
    ASSERT_EQ(format_script(once).text, once) << testing::PrintToString(script);
  }
}

}  // namespace
}  // namespace quor_test
