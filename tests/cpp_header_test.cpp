// The header for hosts in C++: what it makes of answers, bars and handlers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "engine/engine.h"
#include "quor_parser.hpp"
#include "support/word_statements.h"

namespace {

constexpr uint64_t first_key = 20240102000000;

quor::Row bar(uint64_t key, double close) { return {key, {{quor::close_column, close}}}; }

TEST(CppHeader, ReportsAndAnswersComeByValue) {
  quor::Parser parser;
  const quor::Answer sound = parser.compile("A:C;");
  EXPECT_TRUE(sound);
  EXPECT_EQ(sound.message, "");
  EXPECT_EQ(sound.statement, -1);

  const quor::Answer unknown = parser.compile("A:C;B:AVRAGE(C);");
  EXPECT_FALSE(unknown);
  EXPECT_EQ(unknown.code, 2);
  EXPECT_EQ(unknown.message, "AVRAGE");
  EXPECT_EQ(unknown.statement, 1);
  EXPECT_EQ(unknown.text.front(), '{');

  // Messages aren't escaped and may look like the keys around them.
  const quor::Answer hostile = quor::detail::read_answer(
      R"({"ErrCode":4,"ExtraMsg":"","ErrLine":9,"ErrCode":0","ErrLine":"3"})");
  EXPECT_EQ(hostile.code, 4);
  EXPECT_EQ(hostile.message, R"(","ErrLine":9,"ErrCode":0)");
  EXPECT_EQ(hostile.statement, 3);
  // A run that an exception ends has its text in the place of the statement.
  ASSERT_TRUE(parser.compile("A:C;B:STD(C,0-5);"));
  parser.feed({bar(first_key, 1), bar(first_key + 1000000, 2)});
  const quor::Answer exception = parser.calculate(0);
  EXPECT_EQ(exception.code, 4000);
  EXPECT_EQ(exception.message, "vector too long");
  EXPECT_EQ(exception.statement, -1);
  const quor::Answer digits =
      quor::detail::read_answer(R"({"ErrCode":4000,"ExtraMsg":"","ErrLine":"2 "x"} left"})");
  EXPECT_EQ(digits.message, R"(2 "x"} left)");
  EXPECT_EQ(digits.statement, -1);
  // No statement belongs to these; the report says 0 all the same.
  EXPECT_EQ(parser.compile("A:C;B:C>O,BK;").statement, -1);
  EXPECT_EQ(parser.compile("A:C;C>O,ICON(1,X);").statement, -1);
  for (const char* text : {"", "{", "\"ErrCode\":0", "\"ErrCode\":0,\"ExtraMsg\":\""}) {
    EXPECT_EQ(quor::detail::read_answer(text).code, -1) << text;
  }
}

TEST(CppHeader, BarsGoInAndColumnsComeOut) {
  quor::Parser parser;
  ASSERT_TRUE(parser.compile("TWICE:=C*N;", R"([{"PARAM_NAME":"N","DEFAULT":2}])"));
  const double tenth = 0.1;
  const double null = std::nan("");
  parser.feed({bar(first_key + 1000000, null), bar(first_key, tenth),
               bar(first_key + 2000000, std::numeric_limits<double>::infinity())});
  parser.set_cell(first_key + 2000000, quor::close_column, 3);
  ASSERT_TRUE(parser.calculate(0));

  EXPECT_EQ(parser.row_count(), 3U);
  EXPECT_EQ(parser.column_count(), 3U);
  EXPECT_EQ(parser.row_of(first_key + 2000000), 2U);
  EXPECT_EQ(parser.row_of(7), std::nullopt);
  EXPECT_EQ(parser.column_of("THRICE"), std::nullopt);
  const uint32_t column = parser.column_of("TWICE").value();
  const std::vector<double> twice = parser.values("TWICE");
  ASSERT_EQ(twice.size(), 3U);
  EXPECT_EQ(twice[0], tenth * 2);
  EXPECT_TRUE(std::isnan(twice[1]));
  EXPECT_EQ(twice[2], 6.0);
  EXPECT_EQ(parser.values(column, 2), std::vector<double>{6.0});
  EXPECT_TRUE(parser.values(column, 3).empty());
  EXPECT_EQ(parser.field_value(2, quor::close_column), 3.0);
  EXPECT_TRUE(std::isnan(parser.value(std::numeric_limits<uint32_t>::max(), column)));
  EXPECT_EQ(parser.values_json(column, 2, 2), R"({"count":2,"data":[null,6.000000]})");

  parser.clear();
  EXPECT_EQ(parser.row_count(), 0U);
  parser.feed_json(R"([{"1":20240102000000,"11":5}])");
  EXPECT_EQ(parser.values(quor::close_column), std::vector<double>{5.0});
}

TEST(CppHeader, TellsWhatAScriptUses) {
  quor::Parser parser;
  parser.add_field("SPREADHPP", 4711);
  ASSERT_TRUE(parser.compile("MA(SPREADHPP,2),NOTICE('n');"));
  EXPECT_EQ(parser.functions(), (std::vector<std::string>{"MA", "NOTICE"}));
  EXPECT_EQ(parser.fields(), (std::vector<uint32_t>{199, 4711}));
}

TEST(CppHeader, ReportsTellWhatIsNeededAndDrawn) {
  quor::Parser parser;
  const quor::Report report = parser.compile(
      "A:MA(C,20),COLORRED,LINETHICK2,PRECIS3; B:=O; D:\"600000$HIGH\",COLORSTICK; E:REF(A,1),DOT;"
      "F:C,CIRCLEDOT,COLORBLUE; POLYLINE(C>O,L,COLORRED); C>O,NOTICE('n'); "
      "G:GETPRICE('NEW')+DATE;");
  ASSERT_TRUE(report) << report.text;
  EXPECT_EQ(report.look_back, 20);
  EXPECT_TRUE(report.has_notices);
  EXPECT_TRUE(report.needs_calendar);
  EXPECT_FALSE(report.needs_market_constants);
  for (const uint32_t field : {7U, 9U, quor::close_column})
    EXPECT_EQ(std::count(report.fields.begin(), report.fields.end(), field), 1) << field;

  ASSERT_EQ(report.references.size(), 2U);
  EXPECT_EQ(report.references[0].kind, quor::Reference::Kind::security);
  EXPECT_EQ(report.references[0].source, "600000");
  EXPECT_EQ(report.references[0].field, "8");
  EXPECT_EQ(report.references[1].kind, quor::Reference::Kind::quote);
  EXPECT_NE(report.references[0].column, report.references[1].column);

  std::string lines;
  for (const quor::Line& line : report.lines()) {
    EXPECT_EQ(line.column, parser.column_of(line.name)) << line.name;
    EXPECT_TRUE(line.marks) << line.name;
    lines += line.name + ' ' + line.form + ' ' + line.colour + ' ' + line.dash + ' ' +
             std::to_string(static_cast<int>(line.width)) + ' ' + std::to_string(line.digits) +
             '\n';
  }
  EXPECT_EQ(lines,
            "A Polyline TempBrushKey.#CC3030 SOLIDLINE 2 3\n"
            "D Line Brush.Red6  1 -1\n"
            "E Polyline Brush.Cyan7 DOT 1 -1\n"
            "F TextShape TempBrushKey.#19A0FF  -1 -1\n"
            "G Polyline Brush.Green7 SOLIDLINE 1 -1\n");

  const quor::Report failed = parser.compile("A:C;B:AVRAGE(C);");
  EXPECT_TRUE(failed.lines().empty() && failed.fields.empty());
  EXPECT_EQ(failed.message, "AVRAGE");
}

/// The reader of the header gives what the engine has, whatever stands in the texts of a script.
TEST(CppHeader, ReadsDrawingRecordsAsTheyAre) {
  std::vector<std::string> scripts = {
      "A:C;B:\"600000$HIGH\">C,NOTICE('x');",
      R"(C>O,NOTICE('a"},{"b');DRAWTEXT(C>O,L,'{"x":1,[]}\');)",
      R"(DRAWTEXT(C>O,L,'"');DRAWTEXT(C>O,L,'"');)",
  };
  for (const std::string_view word : quor::OutputFunctionSet())
    scripts.push_back("A:C;" + quor_test::statement_of(word));
  size_t compared = 0;
  for (const std::string& source : scripts) {
    const quor::engine::Script script(source);
    std::string text = "[";
    for (const std::string& record : script.shapes()) text += (text == "[" ? "" : ",") + record;
    const std::vector<quor::Shape> shapes = quor::detail::read_shapes(text + ']');
    const std::vector<quor::engine::Record> records = script.records();
    ASSERT_EQ(shapes.size(), records.size()) << source;
    for (size_t i = 0; i < shapes.size(); ++i) {
      EXPECT_EQ(shapes[i].texts, records[i].texts) << source;
      ASSERT_EQ(shapes[i].numbers.size(), records[i].numbers.size()) << source;
      for (size_t j = 0; j < shapes[i].numbers.size(); ++j) {
        EXPECT_EQ(shapes[i].numbers[j].first, records[i].numbers[j].first);
        EXPECT_NEAR(shapes[i].numbers[j].second, records[i].numbers[j].second, 1e-6) << source;
      }
      ++compared;
    }
  }
  EXPECT_GT(compared, 80U);
}

/// Whatever a text is, reading it ends within it.
TEST(CppHeader, ReadsWhatIsNoDrawList) {
  const std::string whole = R"([{"TitleVisible":1,"Field1Text":"a","Digit":2},{"Style":"x"}])";
  EXPECT_EQ(quor::detail::read_shapes(whole).size(), 2U);
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_LE(quor::detail::read_shapes(std::string_view(whole).substr(0, size)).size(), 2U);
    EXPECT_LE(quor::detail::read_shapes(std::string_view(whole).substr(size)).size(), 2U);
    EXPECT_EQ(quor::detail::read_report(whole.substr(size)).code, -1);
  }
  EXPECT_TRUE(quor::detail::read_list("[1,2").empty());
}

TEST(CppHeader, HandlersBelongToTheirParser) {
  std::vector<std::string> heard;
  quor::Parser loud;
  loud.set_tag(5);
  loud.on_notice([&heard](const quor::Notice& notice) {
    heard.push_back("notice of " + std::to_string(notice.tag));
  });
  loud.on_signal([&heard](const quor::Signal& signal) {
    heard.push_back("signal " + std::to_string(signal.action) + " of " +
                    std::to_string(signal.quantity) + " at " + std::to_string(signal.key));
  });
  quor::Parser quiet;
  for (quor::Parser* parser : {&loud, &quiet}) {
    ASSERT_TRUE(parser->compile("C>1,NOTICE('up');C>1,SK(3);"));
    parser->feed({bar(first_key, 2)});
    ASSERT_TRUE(parser->calculate(0, true));
  }
  const std::vector<std::string> expected = {"notice of 5", "signal 2 of 3 at 20240102000000"};
  EXPECT_EQ(heard, expected);

  // They move along, may be taken away, and what they throw stays here.
  quor::Parser moved = std::move(loud);
  EXPECT_FALSE(loud);  // NOLINT(bugprone-use-after-move): its calls do nothing
  EXPECT_EQ(loud.row_count(), 0U);
  loud.on_notice([](const quor::Notice&) {});
  EXPECT_FALSE(loud.compile("A:C;"));
  moved.on_notice([](const quor::Notice&) { throw std::runtime_error("mine"); });
  moved.on_signal(nullptr);
  moved.feed({bar(first_key + 1000000, 1), bar(first_key + 2000000, 2)});
  EXPECT_TRUE(moved.calculate(1, true));
  EXPECT_EQ(heard.size(), 2U);
  quiet = std::move(moved);
  EXPECT_EQ(quiet.row_count(), 3U);
}

TEST(CppHeader, SourcesAreAskedForTheirParser) {
  quor::Parser parser;
  std::vector<std::string> asked;
  parser.set_subject(quor::period_minutes + 5, "HPP", "USHA");
  parser.on_calendar([&asked](const quor::CalendarRequest& request) {
    asked.push_back(std::string(request.market) + ' ' + std::string(request.security) + ' ' +
                    std::to_string(request.first_date.size() + request.last_date.size()));
    return std::string(R"({"status_code":1})");
  });
  parser.on_constant([](std::string_view key, std::string_view market, std::string_view security) {
    return key == "MINPRICE" && market == "USHA" && security == "HPP" ? 0.25 : std::nan("");
  });
  parser.on_trading([&asked](int64_t time, std::string_view, std::string_view security) {
    asked.push_back("trading " + std::string(security));
    return time > 0;
  });
  ASSERT_TRUE(parser.compile("A:=MINPRICE;B:=DATE;D:=SETTLE;"));
  parser.feed({bar(first_key, 2)});
  ASSERT_TRUE(parser.calculate(0));
  EXPECT_EQ(parser.values("A"), std::vector<double>{0.25});
  const std::vector<std::string> expected = {"trading HPP", "USHA HPP 16"};
  EXPECT_EQ(asked, expected);
}

TEST(CppHeader, TheLogIsHeardAsLongAsItsScope) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  const auto into = [](std::vector<std::string>& lines) {
    return [&lines](const quor::LogLine& line) {
      lines.push_back(std::to_string(line.tag) + ' ' + std::string(line.text));
    };
  };
  quor::Parser parser;
  parser.set_tag(6);
  {
    const quor::Log outer(into(first));
    parser.feed_json("nonsense");
    {
      const quor::Log inner(into(second));
      parser.feed_json("nonsense");
    }
    parser.feed_json("nonsense");
  }
  parser.feed_json("nonsense");
  const std::vector<std::string> line = {"6 [ScriptParser::add_row] data_arr json parse error."};
  EXPECT_EQ(first, line);
  EXPECT_EQ(second, line);
}

TEST(CppHeader, EachThreadCallsBackIntoItsOwnParser) {
  const auto play = [](int& heard) {
    quor::Parser parser;
    parser.on_notice([&heard](const quor::Notice&) { ++heard; });
    ASSERT_TRUE(parser.compile("C>1,NOTICE('up');"));
    for (uint32_t row = 0; row < 200; ++row) {
      parser.feed({bar(first_key + row, row % 2 == 0 ? 1 : 2)});
      ASSERT_TRUE(parser.calculate(row, true));
    }
  };
  int one = 0;
  int other = 0;
  std::thread thread([&] { play(one); });
  play(other);
  thread.join();
  EXPECT_EQ(one, 100);
  EXPECT_EQ(other, 100);
}

static_assert(!std::is_copy_constructible_v<quor::Parser>);

}  // namespace
