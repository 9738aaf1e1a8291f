// Bars that come one by one, and the script over all securities.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "studio.h"

namespace {

constexpr auto script =
    "QUICK:MA(C,5);SLOW:MA(C,20);UP:=CROSS(QUICK,SLOW);UP,BK(1);CROSS(SLOW,QUICK),SP(1);"
    "UP,NOTICE('up');";

struct PlayTest : testing::Test {
  PlayTest() {
    for (unsigned i = 0; i < 5; ++i) {
      folder.write("s" + std::to_string(i) + ".csv", made_bars(400, i));
    }
    studio = std::make_unique<Studio>(std::vector<std::string>{"--bars", folder.path()});
    studio->enter();
    session = studio->open();
    studio->post(session + "/bars", {{"security", "s0"}});
    EXPECT_TRUE(studio->post(session + "/script", {{"script", script}}).json()["sound"]);
  }

  Json step(const Json& request) { return studio->post(session + "/play/step", request).json(); }
  /// Asks until the scan is at its end.
  Json wait_for_scan() {
    Json answer;
    for (int i = 0; i < 600; ++i) {
      answer = studio->get(session + "/scan").json();
      if (!answer["running"]) return answer;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ADD_FAILURE() << "the scan doesn't end";
    return answer;
  }

  Folder folder;
  std::unique_ptr<Studio> studio;
  std::string session;
};

TEST_F(PlayTest, comes_to_the_events_and_lines_of_a_whole_run) {
  const Json all = studio->get(session + "/events").json()["events"];
  const std::string lines = studio->get(session + "/export.csv").body;
  for (const int ticks : {1, 5}) {
    studio->post(session + "/play", {{"row", 200}, {"ticks", ticks}});
    Json events = Json::array();
    Json answer;
    do {
      answer = step({{"bars", 30}});
      for (const Json& each : answer["steps"]) {
        for (Json event : each["events"]) {
          const bool is_final = event["final"];
          event.erase("final");
          // A notice comes at the first tick that raises it, and only whole bars raise it always.
          if (is_final && (ticks == 1 || event["word"] != "NOTICE")) events.push_back(event);
        }
      }
    } while (!answer["done"]);
    Json expected = Json::array();
    for (const Json& event : all) {
      if (event["row"] >= 200 && (ticks == 1 || event["word"] != "NOTICE")) {
        expected.push_back(event);
      }
    }
    EXPECT_GE(expected.size(), 5U);
    EXPECT_EQ(events, expected) << ticks;
    EXPECT_EQ(studio->get(session + "/export.csv").body, lines);
    EXPECT_EQ(studio->post(session + "/play/step", Json::object()).status, 409);
  }
  EXPECT_TRUE(studio->post(session + "/play/stop", Json::object()).json()["sound"]);
}

TEST_F(PlayTest, a_bar_forms_within_its_ends) {
  const Json whole = studio->get(session + "/values?row=200").json()["fields"];
  studio->post(session + "/play", {{"row", 200}, {"ticks", 6}});
  EXPECT_EQ(studio->get(session + "/values?row=200").status, 404);
  Json before;
  for (int tick = 1; tick <= 6; ++tick) {
    const Json answer = step({{"ticks", 1}});
    const Json& each = answer["steps"][0];
    const Json& bar = each["bar"];
    EXPECT_EQ(each["tick"], tick);
    EXPECT_EQ(each["final"], tick == 6);
    EXPECT_EQ(answer["rows"], 201);
    EXPECT_EQ(bar["7"], whole["7"]);
    EXPECT_LE(bar["8"], whole["8"]);
    EXPECT_GE(bar["9"], whole["9"]);
    EXPECT_LE(bar["11"], bar["8"]);
    EXPECT_GE(bar["11"], bar["9"]);
    if (tick > 1) {
      EXPECT_GE(bar["8"], before["8"]);
      EXPECT_LE(bar["9"], before["9"]);
      EXPECT_GE(bar["13"], before["13"]);
    }
    EXPECT_EQ(studio->get(session + "/values?row=200").json()["fields"], bar);
    before = bar;
  }
  EXPECT_EQ(before, whole);
  // The script changes, and the place stays.
  const Json answer = studio->post(session + "/script", {{"script", "A:C;"}}).json();
  EXPECT_EQ(answer["rows"], 201);
  EXPECT_EQ(step({{"bars", 1}})["rows"], 202);
}

TEST_F(PlayTest, a_mistake_leaves_the_chart_of_before) {
  const std::string lines = studio->get(session + "/export.csv").body;
  studio->post(session + "/play", {{"row", 200}});
  EXPECT_FALSE(studio->post(session + "/script", {{"script", "A:EMMA(C,5);"}}).json()["sound"]);
  EXPECT_EQ(step({{"bars", 1}})["steps"][0]["values"].size(), 3U);
  EXPECT_FALSE(studio->post(session + "/play/stop", Json::object()).json()["sound"]);
  EXPECT_EQ(studio->get(session + "/export.csv").body, lines);
  const Json other = studio->post(session + "/bars", {{"security", "s1"}}).json();
  EXPECT_FALSE(other["script"]["sound"]);
  EXPECT_NE(studio->get(session + "/export.csv").body, lines);
  EXPECT_EQ(studio->get(session + "/values?row=399").json()["lines"].size(), 3U);
}

TEST_F(PlayTest, refuses_what_it_cant_play) {
  for (const Json& request : {Json({{"row", 0}}), Json({{"row", 400}}), Json({{"row", 1.5}}),
                              Json({{"row", "1"}}), Json({{"row", 5}, {"ticks", 99}})}) {
    EXPECT_EQ(studio->post(session + "/play", request).status, 400) << request;
  }
  EXPECT_EQ(studio->post(session + "/play/step", Json::object()).status, 409);
  studio->post(session + "/play", {{"row", 5}});
  EXPECT_EQ(studio->post(session + "/play/step", {{"bars", 100000}}).status, 400);
}

TEST_F(PlayTest, a_scan_has_the_rows_of_the_command_line) {
  folder.write("bad.csv", "no bars");
  const Reply started =
      studio->post(session + "/scan", {{"script", "A:MA(C,N);"},
                                       {"parameters", Json::parse(R"([{"name":"n","value":5}])")},
                                       {"where", "C>A"},
                                       {"last", 3}});
  ASSERT_EQ(started.status, 202) << started.body;
  EXPECT_EQ(started.json(), Json::parse(R"({"files":6,"lines":["A"]})"));
  const Json answer = wait_for_scan();
  EXPECT_EQ(answer["done"], 6);
  EXPECT_EQ(answer["failures"].size(), 1U);
  EXPECT_EQ(answer["failures"][0]["security"], "bad");
  std::filesystem::remove(folder.path("bad.csv"));
  const Outcome outcome = run_quor({"scan", "-e", "A:MA(C,N);", folder.path(), "--set", "N=5",
                                    "--where", "C>A", "--last", "3", "--period", "day", "--json"});
  const Json expected = Json::parse(outcome.output);
  ASSERT_EQ(answer["rows"].size(), expected["rows"].size()) << expected;
  EXPECT_GE(expected["rows"].size(), 3U);
  std::map<std::pair<std::string, int64_t>, double> found;
  for (const Json& row : answer["rows"]) {
    found[{row["security"], row["key"].get<int64_t>() / 1'000'000}] = row["values"][0];
  }
  for (const Json& row : expected["rows"]) {
    std::string date = row.value("date", "0");
    std::erase(date, '-');
    EXPECT_EQ((found[{row["security"], std::stoll(date)}]), row["A"]) << row;
  }
  EXPECT_EQ(studio->get(session + "/scan?since=6").json()["rows"], Json::array());
}

TEST_F(PlayTest, a_scan_refuses_scripts_that_serve_for_no_security) {
  for (const Json& request :
       {Json({{"script", "A:EMMA(C,5);"}}), Json({{"script", "A:C;"}, {"where", "B>1"}}),
        Json({{"script", "A:C;"}, {"where", "A;B"}}), Json({{"script", "A:\"600000$CLOSE\";"}}),
        Json({{"script", "A:C;"}, {"last", 0}})}) {
    EXPECT_EQ(studio->post(session + "/scan", request).status, 400) << request;
  }
  EXPECT_EQ(studio->get(session + "/scan").status, 409);
}

TEST_F(PlayTest, a_scan_ends_with_its_page) {
  std::string slow;
  for (int i = 0; i < 30; ++i) slow += "A" + std::to_string(i) + ":SUM(STD(C,200),200);";
  for (int i = 0; i < 60; ++i) folder.write("t" + std::to_string(i) + ".csv", made_bars(3000));
  ASSERT_EQ(studio->post(session + "/scan", {{"script", slow}}).status, 202);
  const Json cancelled = studio->post(session + "/scan/cancel", Json::object()).json();
  EXPECT_EQ(cancelled["cancelled"], true);
  EXPECT_LT(wait_for_scan()["done"], 65);
  ASSERT_EQ(studio->post(session + "/scan", {{"script", slow}}).status, 202);
  EXPECT_EQ(studio->post(session + "/close", "", "text/plain").status, 204);
  EXPECT_EQ(studio->get(session + "/scan").status, 404);
  EXPECT_EQ(studio->get("/api/start").status, 200);
}

}  // namespace
