// Statements, expressions, calls, constants and settings, as the report and the results show them.
#include <gtest/gtest.h>

#include <string>

#include "support/test_host.h"
#include "tables/field_table.h"

namespace quor_test {
namespace {

TEST(Compile, AScriptOnItsWayThrough) {
  TestHost host;
  const Report report = host.compile("MA5:MA(C,5),COLORRED;");
  EXPECT_EQ(report.text,
            R"({"MaxPeriodCount":5,"CrossSecurityList":[],"CrossPeriodList":[],)"
            R"("ExtraKLineFieldList":[11],"RealtimeFieldList":[],"ErrCode":0,)"
            R"("IsNeedRequestExtraData":"false","IsContainsNoticeFunction":"false","ExtraMsg":"",)"
            R"("IsNeedRequestTradeDay":"false","ErrLine":0})");
  // MA's own column, then the line's visibility column; MA's count column comes with the first bar.
  EXPECT_EQ(host.id_of("MA5"), 20000);
  EXPECT_EQ(host.shapes(),
            R"([{"TitleVisible":1,"Digit":-1,"ShapeName":"PolylineShape","Field1Id":20000,)"
            R"("Field1Text":"MA5","Field1VisibleId":20001,"ZIndex":2,)"
            R"("LineColor":"TempBrushKey.#CC3030","ConditionColor":"Brush.Gray9",)"
            R"("Style":"Polyline","LineWidth":1.000000,"LineShapeStyle":"SOLIDLINE",)"
            R"("Field2Id":-1,"Field2VisibleId":-1,"Ratio":1.000000,"IsContinuousLine":0,)"
            R"("Field3Id":-1,"Field3VisibleId":-1}])");
  host.feed({{"C", series("1 2 3 4 5 6")}});
  EXPECT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("MA5")), "null null null null 3 4");
  EXPECT_EQ(to_text(host.column(20001)), "1 1 1 1 1 1");
  EXPECT_EQ(host.functions(), R"(["MA","POLYLINE"])");
  EXPECT_EQ(host.variable_fields(), "[11,20000]");
}

TEST(Compile, ReportsOfTheSmallestScripts) {
  TestHost host;
  const std::string empty_report =
      R"({"MaxPeriodCount":0,"CrossSecurityList":[],"CrossPeriodList":[],)"
      R"("ExtraKLineFieldList":[1],"RealtimeFieldList":[],"ErrCode":0,)"
      R"("IsNeedRequestExtraData":"false","IsContainsNoticeFunction":"false","ExtraMsg":"",)"
      R"("IsNeedRequestTradeDay":"false","ErrLine":0})";
  for (const char* script : {"A:1;", " {note}\n\n", "CONST N:5;", "\t"}) {
    EXPECT_EQ(host.compile(script).text, empty_report) << script;
  }
  EXPECT_EQ(host.compile("A:1;\n\n\nB:C+D;").text,
            R"({"MaxPeriodCount":0,"CrossSecurityList":[],"CrossPeriodList":[],)"
            R"("ExtraKLineFieldList":[],"RealtimeFieldList":[],"ErrCode":2,)"
            R"("IsNeedRequestExtraData":"","IsContainsNoticeFunction":"","ExtraMsg":"D",)"
            R"("IsNeedRequestTradeDay":"","ErrLine":3})");
}

TEST(Compile, Refusals) {
  const struct {
    const char* script;
    int64_t code;
    const char* message;
    int64_t line;
  } cases[] = {
      {"A:B;", 2, "B", 0},
      {"A:1;\nB:=A+X;", 2, "X", 1},
      {"A:1E-5;", 2, "1E", 0},
      {"'ABC';", 2, "'ABC'", 0},
      {"A:~99999;", 2, "~99999", 0},
      {"COLORRED;", 2, "COLORRED", 0},
      {"XMA(C,5);", 2, "XMA", 0},
      {"XMA(:MA(C,5);", 2, "XMA", 0},
      {"A:MA(X,5);", 1, "X", 0},
      {"A:REF(A,1);", 1, "A", 0},
      {"A:MA(C,LINETHICK10);", 1, "LINETHICK10", 0},
      {"A:MA(C,LINETHICK00);", 1, "LINETHICK00", 0},
      {"A:MA(C,LINETHICK9.5);", 1, "LINETHICK9.5", 0},
      {"A:MA(C,LINETHICK0.4);", 0, "LINETHICK0.4", 0},
      {"A:MA;", 6, "MA", 0},
      {"A:MA(C,5;", 6, "MA", 0},
      {"A:MA(C);", 7, "MA", 0},
      {"A:1;\nB:MA(C,5,6);", 7, "MA", 1},
      {"MA:1;", 12, "MA", 0},
      {"MA:=1;", 12, "MA", 0},
      {"DATE1:DATE;", 12, "DATE1", 0},
      {"A~:1;", 13, "A~", 0},
      {"A:=1;A:=2;", 2004, "A", 1},
      {"CLOSE:1;", 2004, "CLOSE", 0},
      {"a:=1;\nA:2;", 2004, "A", 1},
      {"DRAWTEXT(1,C,'X')+DRAWTEXT(1,C,'Y');", 2014, "DRAWTEXT(1@C@'X')+DRAWTEXT(1@C@'Y')", 0},
      {"A:=1+;", 4, "", 0},
      {"A:=(1+;", 4, "", 0},
      {"A:=1);", 4, "", 0},
      {"A:=1+2);", 4, "", 0},
      {"A:=1;B:=(A);", 0, "", 0},
      {"A:=(MA(C,5)+1)*-;", 2000, "", 0},
      {"A:1:2;", 2, "1:2", 0},
      {"CONST A:1:2;", 2, "1:2", 0},
      {"A:1", 14, "", 0},
      {"A:'1;", 5, "", 0},
  };
  for (const auto& [script, code, message, line] : cases) {
    TestHost host;
    const Report report = host.compile(script);
    EXPECT_EQ(report.code, code) << script;
    EXPECT_EQ(report.message, message) << script;
    EXPECT_EQ(report.line, line) << script;
  }
}

TEST(Compile, ABareWordIsFoundInsideALongerName) {
  TestHost host;
  const Report report = host.compile("MYDATE:=1;B:=MYDATE+DATE;");
  EXPECT_EQ(report.code, 2);
  EXPECT_TRUE(report.message.starts_with("MY~")) << report.message;
}

TEST(Compile, ConstantsAndParameters) {
  TestHost host;
  // Every CONST takes effect for the whole script and beats a parameter of its name.
  const Report report = host.compile(
      "A:=N;\nB:=X;\nD:=Z;\nE:=P;\nF:=Y;\nconst N:20;CONST X:-1.5;CONST Z:ABC;CONST Y:1E-5;",
      R"([{"param_name":"n","default":10},{"PARAM_NAME":"P","DEFAULT":2.5},
          {"PARAM_NAME":"Q"},{"PARAM_NAME":"R","DEFAULT":"1"},7])");
  ASSERT_EQ(report.code, 0) << report.text;
  host.feed({{"1", series("1")}});
  EXPECT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "20");
  EXPECT_EQ(to_text(host.line("B")), "-1.5");
  EXPECT_EQ(to_text(host.line("D")), "0");
  EXPECT_EQ(to_text(host.line("E")), "2.5");
  EXPECT_EQ(to_text(host.line("F")), "1e-05") << "a constant is inlined with six decimals";
  for (const char* name : {"Q", "R"}) {
    EXPECT_EQ(
        host.compile(std::string("A:=") + name + ";", R"([{"PARAM_NAME":"R","DEFAULT":"1"}])").code,
        2);
  }
  EXPECT_EQ(host.compile("A:=P;", R"({"PARAM_NAME":"P","DEFAULT":5})").code, 2);
  EXPECT_EQ(host.compile("A:=P;", R"([{"PARAM_NAME":"P","DEFAULT":5)").code, 2);
}

TEST(Compile, NamesShareTheColumnOfWhatTheyName) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=C;B:=MA(C,2);D:=B;E:=-5;F:=5;G:=均线;").code, 2);
  ASSERT_EQ(host.compile("A:=C;B:=MA(C,2);D:=B;E:=-5;F:=5;均线:=A;").code, 0);
  EXPECT_EQ(host.id_of("A"), 11);
  EXPECT_EQ(host.id_of("B"), 20000);
  EXPECT_EQ(host.id_of("D"), 20000);
  EXPECT_EQ(host.id_of("E"), 20001);
  EXPECT_EQ(host.id_of("均线"), 11);
  EXPECT_EQ(host.id_of("a"), -1);
}

TEST(Compile, AnEmptyScriptKeepsTheLastOne) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=MA(C,7);").look_back, 7);
  host.feed({{"C", series("1 2")}});
  EXPECT_EQ(host.compile("").look_back, 7);
  EXPECT_EQ(get_row_num(host.handle()), 2U);
  ASSERT_EQ(host.compile("A:=O;").code, 0);
  EXPECT_EQ(get_row_num(host.handle()), 0U);
  EXPECT_EQ(host.variable_fields(), "[7,7]");
}

TEST(Compile, FieldsThatTheHostDeclares) {
  TestHost host;
  TestHost earlier;
  const std::string mood = new_word("MOOD");
  host.declare_field(mood, 555);
  host.declare_field("CLOSE", 556);
  EXPECT_EQ(host.compile(mood + ":1;").code, 2004);
  ASSERT_EQ(host.compile("A:=" + mood + "+1;B:=CLOSE;").fields, (std::vector<int64_t>{11, 555}));
  host.feed({{"555", series("1 2")}, {"C", series("3 4")}});
  EXPECT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "2 3");
  EXPECT_EQ(to_text(host.line("B")), "3 4");
  EXPECT_EQ(earlier.compile("A:=" + mood + ";").code, 2) << "made before the word";
  TestHost later;
  EXPECT_EQ(later.compile("A:=" + mood + ";").code, 0) << "the word belongs to the process";
  EXPECT_EQ(earlier.compile(mood + ":1;").code, 0);
  EXPECT_EQ(earlier.compile("A:=1;").code, 0);
}

TEST(Compile, AWordDeclaredAnewTakesTheColumnOfTheOldOneIn) {
  TestHost host;
  host.declare_field("CLOSE", 301);
  EXPECT_EQ(get_column_num(host.handle()), 3U) << "1, 11 and 301";
  EXPECT_EQ(host.variable_fields(), "[11]");
  // Another new word brings nothing but itself.
  host.declare_field(new_word("WORDOFITSOWN"), 302);
  EXPECT_EQ(get_column_num(host.handle()), 4U);
}

TEST(Compile, FieldWordsFollowPeriodAndMarket) {
  const struct {
    uint32_t period;
    const char* market;
    const char* word;
    int64_t field;
  } cases[] = {
      {0x4000, "SHFE", "AVPRICE", 72},      {0x4000, "USHA", "AVPRICE", 2656718},
      {0x3005, "SHFE", "AVPRICE", 2656718}, {0x3005, "SHFE", "SETTLE", 2656718},
      {0x5000, "SHFE", "SETTLE", 72},       {0x4000, "USHA", "OPI", 19},
      {0x4000, "SHFE", "OPI", 65},
  };
  for (const auto& [period, market, word, field] : cases) {
    TestHost host;
    host.set_info(period, "X", market);
    const Report report = host.compile(std::string("A:=") + word + "+0;");
    EXPECT_EQ(report.fields, std::vector<int64_t>{field}) << market << ' ' << word;

    // As an argument it is the same field: it is asked for, read and shared.
    const Report of_argument = host.compile(std::string("A:=MA(") + word + ",2);");
    EXPECT_EQ(of_argument.fields, std::vector<int64_t>{field}) << market << ' ' << word;
    host.feed({{std::to_string(field), series("1 3 5")}});
    ASSERT_EQ(host.run(), success);
    EXPECT_EQ(to_text(host.line("A")), "null 2 4") << market << ' ' << word;
  }
}

TEST(Compile, AFieldKeepsItsIdThoughAWordGivesItAColumn) {
  TestHost host;
  host.declare_field("IDNOTSIGNED", 0x90000001);
  ASSERT_EQ(host.compile("A:=DIVERGENCE(IDNOTSIGNED,C,1,3,1);").code, 0);
  host.feed({{"C", series("1 2 3")}});
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(host.compile("A:=IDNOTSIGNED+0;").fields,
            std::vector<int64_t>{static_cast<int32_t>(0x90000001)});
}

TEST(Compile, AnArgumentIsTheParameterOfItsName) {
  TestHost host;
  const Report report =
      host.compile("CONST B:2;B1:=C;A:=MA(L,2);D:=MA(B,2);E:=SUM(B1,1)+LLVBARS(L,4);",
                   R"([{"PARAM_NAME":"L","DEFAULT":7},{"PARAM_NAME":"B1","DEFAULT":4}])");
  ASSERT_EQ(report.code, 0) << report.text;
  EXPECT_EQ(report.fields, std::vector<int64_t>{11});
  host.feed({{"C", series("1 2")}, {"L", series("5 6")}});
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "null 7");
  EXPECT_EQ(to_text(host.line("D")), "null 2");
  EXPECT_EQ(to_text(host.line("E")), "4 5");
}

TEST(Compile, ArgumentsWithoutAColumnAreReadById) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=ABS(C+1);B:=SQUARE(C+1)+ABS(AMOUNT);").code, 0);
  host.feed({{"C", series("1 2 3")}});
  EXPECT_EQ(host.run(), success);
  // C+1 is the second variable behind the reserved ones, and its id the complement of their count.
  const int32_t reserved = static_cast<int32_t>(quor::reserved_fields().size());
  EXPECT_EQ(get_field_val_by_index(host.handle(), ~(reserved + 2), 2), 4.0);
  EXPECT_EQ(get_field_val_by_index(host.handle(), 11, 2), 3.0);
  EXPECT_TRUE(get_field_val_by_index(host.handle(), ~(reserved + 200), 2) != 4.0);
}

TEST(Compile, WhatAnArgumentOfAWholeSeriesReadsIsCalculatedFromTheFirstRowToo) {
  TestHost host;
  ASSERT_EQ(host.compile("A:=C*2;B:=C*3;D:=ABS(A+TOTALBARSCOUNT);").code, 0);
  host.feed({{"C", series("1 2 3")}});
  ASSERT_EQ(host.run(), success);
  host.feed({{"C", series("5")}});
  ASSERT_EQ(host.run(2), success);
  EXPECT_EQ(to_text(host.line("D")), "13 7 9");
  EXPECT_EQ(to_text(host.line("A")), "10 4 6");
  EXPECT_EQ(to_text(host.line("B")), "3 6 9") << "nothing reads B";
}

TEST(Compile, AStatementThatNamesAnEarlierCallScansItOnly) {
  TestHost host;
  clear_events();
  ASSERT_EQ(host.compile("C>0,BK;").code, 0);
  host.feed({{"C", series("1")}});
  ASSERT_EQ(host.run(0, true), success);
  ASSERT_EQ(events().signals.size(), 1U) << "signals are on";
  EXPECT_EQ(host.compile("A:=MAX(BK(1,'x'),1);:=BK,();").code, 0);
  EXPECT_EQ(events().signals.size(), 1U) << "a compile gives none";
  // The times, the column of the sum and that of the line without a name; none for a series of 0.
  EXPECT_EQ(host.compile("SUM(0,0);:=SUM,();").code, 0);
  EXPECT_EQ(get_column_num(host.handle()), 3U);
  // A step of 0 is refused where bars are calculated.
  EXPECT_EQ(host.compile("A:=SAR(4,0,0.2);:=SAR,();").code, 0);
  EXPECT_EQ(host.compile("A:=C;:=MA,();").code, 2) << "nothing has the name yet";
}

TEST(Compile, DeepNestingIsRefused) {
  const auto nested = [](int depth) {
    std::string script = "A:=";
    for (int i = 0; i < depth; ++i) script += "ABS(";
    script += 'C';
    for (int i = 0; i < depth; ++i) script += ')';
    return script + ";";
  };
  TestHost host;
  ASSERT_EQ(host.compile(nested(200)).code, 0);
  host.feed({{"C", series("-3")}});
  EXPECT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "3");
  for (const int depth : {300, 3000}) {
    const Report report = host.compile(nested(depth));
    EXPECT_EQ(report.code, 4000);
    EXPECT_EQ(report.message, "expression nested too deeply");
  }
  const std::string open(20000, '(');
  const std::string close(20000, ')');
  ASSERT_EQ(host.compile("A:=" + open + "C" + close + "+0;").code, 0)
      << "parentheses don't nest calls";
}

TEST(Compile, HiddenNamesTypedByAScriptFormNoEndlessRing) {
  for (const char* script : {"A:=ABS(~32+1);", "A:=ABS(~33+1);A:=ABS(~32+1);", "~32+1;", "~31;~31;",
                             "A:=IF(1,~33+1,2);", "B:=MA(~31,~31);"}) {
    TestHost host;
    host.compile(script);
    host.feed({{"C", series("1 2")}});
    host.run();
    for (int id = 20; id < 60; ++id) get_field_val_by_index(host.handle(), ~id, 1);
  }
}

}  // namespace
}  // namespace quor_test
