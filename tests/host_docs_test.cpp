// The guide for client developers is complete and true: every call and every key stands in it, and
// its examples are what the library takes and gives.
#include <gtest/gtest.h>
#include <simdjson.h>

#include <fstream>
#include <iterator>
#include <map>
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
std::vector<std::vector<std::string>> matches(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::vector<std::vector<std::string>> found;
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) {
    found.emplace_back(at->begin(), at->end());
  }
  return found;
}

struct Guide {
  std::string text = read("host.md");
  /// What stands behind each fence, by the words on it. JSON is put back into one line.
  std::map<std::string, std::vector<std::string>> fences;

  Guide() {
    for (const auto& fence : matches(text, "```([^\n]+)\n([^`]*)```")) {
      const char* breaks = fence[1].starts_with("json") ? "\n *" : "$^";
      fences[fence[1]].push_back(std::regex_replace(fence[2], std::regex(breaks), ""));
    }
  }
  const std::string& example(const char* mark, size_t i = 0) const { return fences.at(mark).at(i); }
};

void add_keys(simdjson::dom::element value, std::set<std::string>& keys) {
  if (value.is_array()) {
    for (const auto entry : value.get_array()) add_keys(entry, keys);
  } else if (value.is_object()) {
    for (const auto field : value.get_object()) {
      keys.emplace(field.key);
      add_keys(field.value, keys);
    }
  }
}

TEST(HostDocs, NameEveryCallRecordAndKey) {
  const Guide guide;
  TestHost host;
  const Report report = host.compile(
      "A:C;STICKLINE(1,C,O,1,0);DRAWKLINE(H,O,L,C);DRAWLINE(1,H,1,L,COLORRED);C>O,BK;"
      "DRAWTEXT(1,C,'X');DRAWBMP(1,C,'X');FILLRGN(1,H,L,COLORRED);DRAWGBK1(1,COLORRED);"
      "BACKGROUNDSTYLE(1);PLAYSOUND(1,'A');C>O,NOTICE('X');");
  simdjson::dom::parser parser;
  std::set<std::string> names;
  for (const auto& record : matches(host.shapes(), "\"ShapeName\":\"([^\"]*)\"")) {
    names.insert(record[1]);
  }
  EXPECT_EQ(names.size(), 12U) << "one record of each kind";
  for (const auto& call : matches(read("../include/quor_parser.h"), "\nQUOR_API [^(]*?(\\w+)\\(")) {
    names.insert(call[1]);
  }
  EXPECT_EQ(names.size(), 12U + 27U);
  for (const std::string& json : {report.text, host.run(), host.data_text(11, 0, 1), host.shapes(),
                                  guide.example("json calendar"), guide.example("json parameters"),
                                  guide.example("json lines")}) {
    add_keys(parser.parse(json), names);
  }
  const std::string prose = std::regex_replace(guide.text, std::regex("```[^`]*```"), "");
  for (const auto& code : matches(prose, "`([^`\n]+)`")) {
    for (const auto& name : matches(code[1], "\\w+")) names.erase(name[0]);
  }
  EXPECT_EQ(names, std::set<std::string>());
}

TEST(HostDocs, ShowASessionAndReports) {
  const Guide guide;
  clear_events();
  TestHost host;
  host.set_info(five_minutes, "IF2403", "CFFEX");
  EXPECT_EQ(host.compile(guide.example("quor"), guide.example("json parameters"),
                         guide.example("json lines"))
                .text,
            guide.example("json report"));
  host.feed_json(guide.example("json rows"));
  EXPECT_EQ(host.run(0, false), guide.example("json answer"));
  host.feed_json(guide.example("json rows", 1));
  EXPECT_EQ(host.run(2, true), success);
  const auto line = static_cast<uint32_t>(host.id_of("MA2"));
  EXPECT_EQ(host.data_text(line, 2, 3), guide.example("json data"));
  EXPECT_EQ(host.shapes(), guide.example("json shapes"));
  ASSERT_EQ(events().notices.size(), 1U);
  EXPECT_EQ(events().notices[0].text, guide.example("json notice"));
  EXPECT_EQ(events().signals.size(), 1U);
  for (const size_t i : {1U, 2U}) {
    EXPECT_EQ(host.compile(guide.example("quor", i)).text, guide.example("json report", i));
  }
  host.feed_json(guide.example("json rows", 2));
  EXPECT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("SPREAD"), series("1.5 2.25"))) << to_text(host.line("SPREAD"));
}

const char* shown_calendar(const char*, const char*, const char*, const char*, int32_t*) {
  static const std::string calendar = Guide().example("json calendar");
  return calendar.c_str();
}

TEST(HostDocs, ShowTheDatesOfBars) {
  std::string rows;
  Series dates;
  for (const auto& row : matches(Guide().text, R"(\| \w+ ([0-9]+-[-: 0-9]+) \| (\d+))")) {
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
