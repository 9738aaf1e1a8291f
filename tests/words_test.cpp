// Every word of the language answers with a value, a column or a record.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "support/test_host.h"
#include "tables/function_sets.h"
#include "tables/function_table.h"

namespace quor_test {
namespace {

/// A call of every word, by shape: what stands between the parentheses of the words in a row.
const std::map<std::string_view, std::string_view> arguments_of = {
    {"ABS ACOS ASIN ATAN COS SIN TAN EXP LN LOG10 SQRT CEILING FLOOR INTPART FRACPART REVERSE "
     "SQUARE "
     "CUBE LOG ROUND SIGN NOT ISNULL RAND BARSCOUNT GET BARSLAST BARSLASTCOUNT BARSSINCE COST "
     "WINNER TIMETOT0 T0TOTIME",
     "C/O"},
    {"MAX MIN POW MOD MAX1 MIN1 CROSS CROSSUP CROSSDOWN MV", "C,O"},
    {"MA EMA EXPMA EMAWH EMA2 WMA MEMA EXPMEMA SMMA TRMA TSMA STD STDP VAR VARP DEVSQ AVEDEV SLOPE "
     "FORCAST HHV LLV HHVBARS LLVBARS HV LV SUM COUNT HARMEAN REF REFX REFX1 EXIST EVERY UPNDAY "
     "DOWNNDAY NEWHBARS NEWLBARS FILTER BACKSET WAVEPEAK1 WAVEVALLEY1",
     "C,3"},
    {"BARSSINCEN", "C>O,3"},
    {"KURTOSIS", "C,5"},
    {"AMA DMA", "C,0.5"},
    {"TMA", "C,0.5,0.5"},
    {"SMA", "C,3,1"},
    {"ADMA", "C,3,2,5"},
    {"COVAR CORRELATION COEFFICIENTR NEWHBARS1 NEWLBARS1 NDAY", "C,O,3"},
    {"PERCENTILE", "C,3,50"},
    {"SORT SORTPOS", "0,1,C,O"},
    {"NORMPDF", "C,O,2"},
    {"NUMPOW LAST", "C,3,1"},
    {"BETWEEN RANGE IF IFELSE IFF IFN", "C,L,H"},
    {"VALUEWHEN CONDBARS", "C>O,O>C"},
    {"SUMBARS", "C,150"},
    {"SET", "C,C"},
    {"ZIGZAG", "C,1,0"},
    {"PEAK PEAKBARS TROUGH TROUGHBARS", "C,1,1,0"},
    {"WAVEPEAK WAVEVALLEY", "1"},
    {"SAR SARSHOWTYPE SAR1 SAR1SHOWTYPE", "4,0.02,0.2"},
    {"DIVERGENCE", "C,O,2,5,1"},
    {"CODELIKE", "'60'"},
    {"RGB", "255,MAX(1,2),0"},
    {"SOUND", "'A'"},
    {"PLAYSOUND", "C>O,'A'"},
    {"DRAWLINE", "C>O,H,C<O,L,COLORRED"},
    {"DRAWLINE1", "C>O,H,C<O,L,1"},
    {"DRAWLINE3 DRAWLASTBARLINE", "C>O,H,1,C<O,L,2,1"},
    {"DRAWSL", "C>O,H,1,10,1,COLORRED"},
    {"DRAWSL1", "C>O,H,1,10,1"},
    {"VERTLINE DRAWGBK1", "C>O,COLORRED"},
    {"VERTLINE1", "C>O"},
    {"POLYLINE PARTLINE", "C>O,H,COLORRED"},
    {"POLYLINE1 PARTLINE1 HORIZONTALLINE", "C>O,H"},
    {"DRAWCOLORLINE", "C>O,H,COLORRED,COLORBLUE"},
    {"DRAWTEXT DRAWBMP", "C>O,H,'text'"},
    {"DRAWICON", "C>O,H,1"},
    {"DRAWLASTBARTEXT DRAWLASTBARICON", "H,'ICO1'"},
    {"DRAWNUMBER", "C>O,H,C,2,COLORRED"},
    {"DRAWNUMBER1", "C>O,H,C,2"},
    {"DRAWSHIFTNUMBER", "C>O,H,C,2,COLORRED,1,5"},
    {"DRAWLASTBARNUMBER", "H,C,2,COLORRED"},
    {"KTEXT", "C>O,1,H,0,COLORRED,'text'"},
    {"DRAWBKBMP", "C>O,'name'"},
    {"STICKLINE STICKLINE1", "C>O,C,O,2,0"},
    {"DRAWCOLUMNCHART", "C,C>O,C<O"},
    {"DRAWBARLINE DRAWKLINE DRAWKLINE1", "H,O,L,C"},
    {"DRAWCOLORKLINE", "C>O,COLORRED,0"},
    {"DRAWGBK", "C>O,COLORRED,COLORBLUE,0"},
    {"FILLRGN", "C>O,C,O,COLORRED"},
    {"FILLRGN1", "C>O,C,O"},
    {"BACKGROUNDSTYLE", "1"},
    {"ANGLELINE GOLDENLINE", "C>O,L,C<O,H,1"},
    {"DRAWANGLELINE DRAWGOLDENLINE", "C>O,L,C<O,H,1,COLORRED"},
    {"DRAWHORIZONTALLINE", "C>O,H,COLORRED"},
    {"TRENDLINES", "C>O,L,C<O,H"},
    {"DRAWTRENDLINE", "C>O,L,C<O,H,COLORRED"},
    {"WAVERULER", "C>O,L,C<O,H,C>L,O,1"},
    {"DRAWWAVERULER", "C>O,L,C<O,H,C>L,O,1,COLORRED"},
};

/// The call of a word; empty if the table above has forgotten it.
std::string call_of(std::string_view word) {
  if (quor::BareFunctionSet.contains(word)) return std::string(word);
  if (quor::TradeSignalSet.contains(word)) return "C>O," + std::string(word);
  if (word == "NOTICE") return "C>O,NOTICE('name')";
  for (const auto& [words, arguments] : arguments_of) {
    const std::string padded = " " + std::string(words) + " ";
    if (padded.find(" " + std::string(word) + " ") == std::string::npos) continue;
    return std::string(word) + "(" + std::string(arguments) + ")";
  }
  return {};
}

double one(const char*, const char*, const char*) { return 1.0; }

Bars waves() {
  Bars bars;
  for (int row = 0; row < 40; ++row) {
    const double wave = 10 + std::sin(row) + row % 7;
    bars["O"].push_back(wave);
    bars["C"].push_back(wave + (row % 3 - 1));
    bars["H"].push_back(wave + 2);
    bars["L"].push_back(wave - 2);
    bars["V"].push_back(100 + row);
    bars["AMOUNT"].push_back(wave * (100 + row));
  }
  return bars;
}

bool has_value(const Series& series) {
  return std::ranges::any_of(series, [](double value) { return !std::isnan(value); });
}

TEST(Words, EveryOneAnswers) {
  const Bars bars = waves();
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    if (word == "ZIG") continue;
    const std::string call = call_of(word);
    ASSERT_FALSE(call.empty()) << word;
    TestHost host;
    host.set_info(0x3000, "600000", "USHA");
    set_get_extra_data_callback(host.handle(), one);
    const bool acts = quor::OutputFunctionSet.contains(word);
    // SOUND with nothing in front of it is a short form without its condition.
    const bool stands_alone = acts && word != "SOUND";
    const Report report = host.compile((stands_alone ? call : "A:=" + call) + ";");
    ASSERT_EQ(report.code, 0) << call << ' ' << report.text;
    host.feed(bars);
    EXPECT_EQ(host.run(), success) << call;
    if (acts) {
      EXPECT_NE(host.shapes(), "[]") << call;
    } else if (word == "NULL" || word == "DRAWNULL") {
      EXPECT_FALSE(has_value(host.line("A"))) << call;
    } else {
      EXPECT_TRUE(has_value(host.line("A"))) << call;
    }
  }
}

TEST(Words, TheZigzagOfThreeLettersIsRefused) {
  TestHost host;
  const Report report = host.compile("A:=1;\nB:=ZIG(C,5);");
  EXPECT_EQ(report.code, 2006);
  EXPECT_EQ(report.message, "ZIG");
  EXPECT_EQ(report.line, 1);
}

}  // namespace
}  // namespace quor_test
