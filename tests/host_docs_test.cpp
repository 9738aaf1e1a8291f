// The guide for client developers is complete and true: every call and every key stands in it, and
// its examples are what the library takes and gives.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr uint32_t five_minutes = 0x3005;

std::string read(const std::string& name) {
  std::ifstream file(QUOR_DOCS "/" + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The groups of all matches, each led by the whole match.
std::vector<std::vector<std::string>> matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::vector<std::vector<std::string>> found;
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
    found.emplace_back(at->begin(), at->end());
  }
  return found;
}

/// What stands behind a fence with this mark, in one line.
std::string example(const std::string& mark, size_t i = 0) {
  const auto fences = matches(read("host.md"), "```" + mark + "\n([^`]*)```");
  return std::regex_replace(fences.at(i)[1], std::regex("\n *"), "");
}

TEST(HostDocs, NameEveryCallRecordAndKey) {
  TestHost host;
  const Report report = host.compile(
      "A:C;STICKLINE(1,C,O,1,0);DRAWKLINE(H,O,L,C);DRAWLINE(1,H,1,L,COLORRED);C>O,BK;"
      "DRAWTEXT(1,C,'X');DRAWBMP(1,C,'X');FILLRGN(1,H,L,COLORRED);DRAWGBK1(1,COLORRED);"
      "BACKGROUNDSTYLE(1);PLAYSOUND(1,'A');C>O,NOTICE('X');");
  std::set<std::string> names;
  for (const auto& record : matches(host.shapes(), "\"ShapeName\":\"([^\"]*)\"")) {
    names.insert(record[1]);
  }
  for (const auto& call : matches(read("../include/quor_parser.h"), "\nQUOR_API [^(]*?(\\w+)\\(")) {
    names.insert(call[1]);
  }
  EXPECT_EQ(names.size(), 12U + 27U) << "a record of each kind, and the calls";
  for (const std::string& json :
       {report.text, host.run(), host.data_text(11, 0, 1), host.shapes(), example("json calendar"),
        example("json parameters"), example("json lines")}) {
    for (const auto& key : matches(json, "\"(\\w+)\":")) names.insert(key[1]);
  }
  const std::string prose = std::regex_replace(read("host.md"), std::regex("```[^`]*```"), "");
  for (const auto& code : matches(prose, "`([^`\n]+)`")) {
    for (const auto& name : matches(code[1], "\\w+")) names.erase(name[0]);
  }
  EXPECT_EQ(names, std::set<std::string>());
}

TEST(HostDocs, ShowASessionAndReports) {
  clear_events();
  TestHost host;
  host.set_info(five_minutes, "IF2403", "CFFEX");
  EXPECT_EQ(host.compile(example("quor"), example("json parameters"), example("json lines")).text,
            example("json report"));
  host.feed_json(example("json rows"));
  EXPECT_EQ(host.run(0, false), example("json answer"));
  host.feed_json(example("json rows", 1));
  EXPECT_EQ(host.run(2, true), success);
  const auto line = static_cast<uint32_t>(host.id_of("MA2"));
  EXPECT_EQ(host.data_text(line, 2, 3), example("json data"));
  EXPECT_EQ(host.shapes(), example("json shapes"));
  ASSERT_EQ(events().notices.size(), 1U);
  EXPECT_EQ(events().notices[0].text, example("json notice"));
  EXPECT_EQ(events().signals.size(), 1U);
  for (const size_t i : {1U, 2U}) {
    EXPECT_EQ(host.compile(example("quor", i)).text, example("json report", i));
  }
  host.feed_json(example("json rows", 2));
  EXPECT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("SPREAD"), series("1.5 2.25"))) << to_text(host.line("SPREAD"));
}

const char* shown_calendar(const char*, const char*, const char*, const char*, int32_t*) {
  static const std::string calendar = example("json calendar");
  return calendar.c_str();
}

TEST(HostDocs, ShowTheDatesOfBars) {
  std::string rows;
  Series dates;
  for (const auto& row : matches(read("host.md"), R"(\| \w+ ([0-9]+-[-: 0-9]+) \| (\d+))")) {
    const std::string minute = std::regex_replace(row[1], std::regex("[^0-9]"), "");
    rows += (rows.empty() ? "[{\"1\":" : ",{\"1\":") + minute + "00}";
    dates.push_back(std::stod(row[2]));
  }
  ASSERT_FALSE(dates.empty());
  set_get_trade_dates_callback(shown_calendar);
  TestHost host;
  host.set_info(five_minutes, "IF2403", "SHOWN");
  EXPECT_EQ(host.compile("D:DATE;").code, 0);
  host.feed_json(rows + "]");
  EXPECT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("D"), dates)) << to_text(host.line("D"));
}

}  // namespace
}  // namespace quor_test
