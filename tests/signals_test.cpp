// Trade signals, notices and sounds: what reaches the host's handlers, columns and records.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

/// Bars that open at 0, so that `C>O` holds where the close is positive.
Bars bars(std::string_view closes) {
  Bars result;
  result["C"] = series(closes);
  result["O"] = Series(result["C"].size(), 0.0);
  return result;
}

/// Seconds since 1970 by the clock of the library; `std::time` may lag behind it.
int64_t now() { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); }

std::vector<uint32_t> signal_rows() {
  std::vector<uint32_t> rows;
  for (const Signal& signal : events().signals) rows.push_back(signal.row);
  return rows;
}

/// Compiles a script that must be sound and takes the bars.
void prepare(TestHost& host, std::string_view script, const Bars& rows) {
  const Report report = host.compile(script);
  ASSERT_EQ(report.code, 0) << report.text;
  host.feed(rows);
  clear_events();
}

TEST(TradeSignal, HandsItsArgumentsOverInOrder) {
  TestHost host;
  set_parser_instance_uuid(host.handle(), 77);
  prepare(host, "\nA:=C;\nC>O,SPK(3);", bars("-1 2"));
  const int64_t before = now();
  ASSERT_EQ(host.run(0, true), success);
  ASSERT_EQ(events().signals.size(), 1U);
  const Signal& signal = events().signals[0];
  EXPECT_GE(signal.time, before);
  EXPECT_LE(signal.time, now());
  EXPECT_EQ(signal.bar, 20240101000001);
  EXPECT_EQ(signal.row, 1U);
  EXPECT_EQ(signal.uuid, 77U);
  EXPECT_EQ(signal.column_id, 20000U);
  EXPECT_EQ(signal.action, 5U);
  EXPECT_EQ(signal.quantity, 3);
  EXPECT_TRUE(same(host.column(20000), {0, 1}));
  EXPECT_EQ(host.shapes(),
            R"([{"TitleVisible":0,"Digit":-1,"ShapeName":"FuturesTradeShape","Field1Id":20000,)"
            R"_("Field1Text":"C>O,SPK(3)","Field1VisibleId":-1,"ZIndex":-1,"trade_count":3,)_"
            R"("NoticeLineNumber":2,"Style":"FuturesTradeShape"}])");
}

TEST(TradeSignal, EachWordHasItsActionCode) {
  const char* words[] = {"BK", "BP", "SK", "SP", "BPK", "SPK", "CLOSEOUT"};
  for (uint32_t action = 0; action < std::size(words); ++action) {
    TestHost host;
    prepare(host, std::string("C>O,") + words[action] + ";", bars("1"));
    ASSERT_EQ(host.run(0, true), success);
    ASSERT_EQ(events().signals.size(), 1U) << words[action];
    EXPECT_EQ(events().signals[0].action, action) << words[action];
    EXPECT_EQ(events().signals[0].quantity, -1) << words[action];
    EXPECT_NE(host.shapes().find(R"("trade_count":0,)"), std::string::npos);
  }
}

TEST(TradeSignal, FiresAtEveryEvaluationOfATrueBar) {
  TestHost host;
  prepare(host, "C,BK;", bars("0 1 0.9 2 -1 null"));
  ASSERT_EQ(host.run(0, false), success);
  EXPECT_EQ(signal_rows(), std::vector<uint32_t>{});
  // Truncated, 0.9 is 0; a null truncates to a number other than 0.
  EXPECT_TRUE(same(host.column(20000), {0, 1, 0, 1, 1, 1}));
  ASSERT_EQ(host.run(0, true), success);
  EXPECT_EQ(signal_rows(), (std::vector<uint32_t>{1, 3, 4, 5}));
  ASSERT_EQ(host.run(5, true), success);
  EXPECT_EQ(signal_rows(), (std::vector<uint32_t>{1, 3, 4, 5, 5}));
}

TEST(TradeSignal, ACallByTheScriptFixesItsQuantityAtCompileTime) {
  TestHost host;
  // The quantity is read before any row is there, truncated for the host.
  prepare(host, "A:BK(C>O,'Long',7/2);", bars("1 1"));
  ASSERT_EQ(host.run(0, true), success);
  ASSERT_EQ(events().signals.size(), 2U);
  EXPECT_EQ(events().signals[1].quantity, 3);
  EXPECT_NE(host.shapes().find(R"("Field1Text":"Long")"), std::string::npos);
  EXPECT_NE(host.shapes().find(R"("trade_count":3)"), std::string::npos);
  // The word gives no value: its start value as an operand stands.
  EXPECT_TRUE(same(host.line("A"), {0, 0}));
}

TEST(TradeSignal, RefusesScriptsThatLookAhead) {
  TestHost host;
  const Report ahead = host.compile("A:=REFX(C,1);\nC>O,CLOSEOUT;");
  EXPECT_EQ(ahead.code, 2016);
  EXPECT_EQ(ahead.message, "CLOSEOUT");
  EXPECT_EQ(ahead.line, 1);
  // The flag is the script's: it counts wherever the word stands, and goes with the script.
  EXPECT_EQ(host.compile("C>O,BK;A:=REFX(C,1);").code, 2016);
  EXPECT_EQ(host.compile("C>O,BK;").code, 0);
}

TEST(Notice, HandsItsArgumentsAndTheRowOver) {
  TestHost host;
  set_parser_instance_uuid(host.handle(), 78);
  Bars rows = bars("null 10.5");
  rows["O"] = series("null 1");
  prepare(host, "c>o,notice('Gap');", rows);
  const int64_t before = now();
  ASSERT_EQ(host.run(0, true), success);
  ASSERT_EQ(events().notices.size(), 1U);
  const Notice& notice = events().notices[0];
  EXPECT_GE(notice.time, before);
  EXPECT_LE(notice.time, now());
  EXPECT_EQ(notice.column_id, 20000U);
  EXPECT_EQ(notice.uuid, 78U);
  // The columns in the order in which the compile made them: the key, the notice's own field, then
  // what its condition reads.
  EXPECT_EQ(notice.text, R"({"1":20240101000001.000000,"199":null,"11":10.500000,"7":1.000000})");
  EXPECT_EQ(host.shapes(),
            R"([{"TitleVisible":0,"Digit":-1,"ShapeName":"NoticeShape","Field1Id":20000,)"
            R"_("Field1Text":"c>o,notice('Gap')","Field1VisibleId":-1,"ZIndex":-1,)_"
            R"("NoticeMessage":"Gap","NoticeLineNumber":0,"Style":"NoticeShape"}])");
}

TEST(Notice, IsToldInTheReport) {
  TestHost host;
  const Report report = host.compile("C>O,NOTICE('Gap');");
  EXPECT_EQ(report.contains_notice, "true");
  EXPECT_EQ(report.fields, (std::vector<int64_t>{7, 11, 199}));
  EXPECT_EQ(host.compile("A:=C;").contains_notice, "false");
}

/// A host on which a notice runs bar by bar.
class NoticeRun : public testing::Test {
 protected:
  void start(std::string_view script, std::string_view closes) {
    prepare(host_, script, bars(closes));
  }
  /// Runs from a row and gives how many notices came.
  size_t run(uint32_t row, bool fire = true) {
    clear_events();
    EXPECT_EQ(host_.run(row, fire), success);
    return events().notices.size();
  }
  /// Sets the close of one bar and runs from it.
  size_t bar(size_t row, double close) {
    host_.feed_json(rows_json({{"C", {close}}, {"O", {0}}}, 0, 1, {host_.key_of(row)}));
    return run(static_cast<uint32_t>(row));
  }
  std::string holds() const { return to_text(host_.column(20000)); }
  std::string sent() const { return to_text(host_.column(20001)); }

  TestHost host_;
};

TEST_F(NoticeRun, OncePerRunOfTrueBars) {
  start("C>O,NOTICE('X');", "0 1 1 0 1");
  EXPECT_EQ(run(0), 2U);
  EXPECT_EQ(holds(), "0 1 1 0 1");
  EXPECT_EQ(sent(), "0 1 1 0 1");
  // A bar that is calculated again has had its notice.
  EXPECT_EQ(run(4), 0U);
  EXPECT_EQ(run(0), 0U);
}

TEST_F(NoticeRun, ABarThatForms) {
  start("C>O,NOTICE('X');", "0");
  EXPECT_EQ(run(0), 0U);
  EXPECT_EQ(bar(1, 0), 0U);
  EXPECT_EQ(bar(1, 1), 1U);  // turns true
  EXPECT_EQ(bar(1, 2), 0U);  // stays true
  EXPECT_EQ(bar(1, 0), 0U);  // turns false, which arms it
  EXPECT_EQ(bar(1, 1), 1U);
  EXPECT_EQ(bar(2, 1), 0U);  // the bar before was true and had its notice
  EXPECT_EQ(bar(2, 0), 0U);
  EXPECT_EQ(bar(2, 3), 1U);  // its own false value counts, not the bar before
  EXPECT_EQ(bar(3, 0), 0U);
  EXPECT_EQ(bar(4, 1), 1U);
  EXPECT_EQ(holds(), "0 1 1 0 1");
  EXPECT_EQ(sent(), "0 1 1 0 1");
}

TEST_F(NoticeRun, AQuietRunArmsEveryTrueBar) {
  start("C>O,NOTICE('X');", "1 1 0 1");
  EXPECT_EQ(run(0, false), 0U);
  EXPECT_EQ(holds(), "1 1 0 1");
  EXPECT_EQ(sent(), "0 0 0 0");
  // Each bar holds 0 of its own, so the bar before it isn't asked.
  EXPECT_EQ(run(0), 3U);
  EXPECT_EQ(sent(), "1 1 0 1");
}

TEST_F(NoticeRun, OnlyAConditionThatTruncatesToOneHolds) {
  start("C,NOTICE('X');", "2 1.9 -1 0.9 null 1");
  EXPECT_EQ(run(0), 2U);
  EXPECT_EQ(holds(), "0 1 0 0 0 1");
  EXPECT_EQ(sent(), "0 1 0 0 0 1");
}

TEST_F(NoticeRun, AWholeSeriesStatementIsSilentBelowTheFirstRow) {
  start("TOTALBARSCOUNT>0&&C>O,NOTICE('X');", "1 0 1 1 0 1");
  // The statement runs from row 0; rows below 3 leave nothing sent, so row 3 gives its notice.
  EXPECT_EQ(run(3), 2U);
  EXPECT_EQ(holds(), "1 0 1 1 0 1");
  EXPECT_EQ(sent(), "0 0 0 1 0 1");
}

TEST(Notice, RefusesAScriptThatLooksAhead) {
  TestHost host;
  const Report report = host.compile("\nC>O,NOTICE('a');A:=REFX(C,1);");
  EXPECT_EQ(report.code, 2015);
  EXPECT_EQ(report.message, "NOTICE");
  EXPECT_EQ(report.line, 1);
  EXPECT_EQ(report.contains_notice, "");
}

TEST(Sound, NamesOfTheFiles) {
  const auto record = [](const std::string& file, uint32_t column_id) {
    return R"([{"TitleVisible":0,"Digit":-1,"ShapeName":"SoundShape","Field1Id":-1,"Field1Text":")" +
           file + R"(","Field1VisibleId":)" + std::to_string(column_id) +
           R"(,"ZIndex":-1,"Style":"SoundShape"}])";
  };
  TestHost host;
  const std::pair<const char*, const char*> sounds[] = {
      {"C>O,SOUND('A');", "Alarm01.wav"},      {"C>O,SOUND('J');", "Alarm010.wav"},
      {"C>O,SOUND('K');", "$Alarm01.wav"},     {"C>O,SOUND('AB');", "$Alarm01.wav"},
      {"C>O,SOUND('a.wav');", "$Alarm01.wav"}, {"PLAYSOUND(C>O,'C');", "Alarm03.wav"},
      {"PLAYSOUND(C>O,'b');", "$Alarm01.wav"}, {"PLAYSOUND(C>O,'');", "$Alarm01.wav"},
      {"1*SOUND('b');", "Alarm02.wav"},
  };
  for (const auto& [script, file] : sounds) {
    const Report report = host.compile(script);
    ASSERT_EQ(report.code, 0) << script << report.text;
    EXPECT_EQ(host.shapes(), record(file, 20000)) << script;
  }
}

TEST(Sound, MarksTheBarsAtWhichItPlays) {
  TestHost host;
  prepare(host, "PLAYSOUND(C,'A');", bars("0 1 -0.5 null"));
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.column(20000)), "-10000 1 1 1");

  prepare(host, "A:=SOUND('A');", bars("0 null"));
  ASSERT_EQ(host.run(), success);
  // The line's own column comes first and holds no value of the word.
  EXPECT_EQ(to_text(host.column(20000)), "0 0");
  EXPECT_EQ(to_text(host.column(20001)), "1 1");
}

}  // namespace
}  // namespace quor_test
