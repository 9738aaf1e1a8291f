// A script over all securities.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "studio.h"

namespace {

struct ScanTest : testing::Test {
  ScanTest() {
    for (unsigned i = 0; i < 5; ++i) {
      folder.write("s" + std::to_string(i) + ".csv", made_bars(400, i));
    }
    studio = std::make_unique<Studio>(std::vector<std::string>{"--bars", folder.path()});
    studio->enter();
  }

  /// The path of a scan that was begun.
  std::string begin(const Json& request) const {
    const Reply reply = studio->post("/api/scans", request);
    EXPECT_EQ(reply.status, 201) << reply.body;
    return "/api/scans/" + reply.json().value("id", "");
  }
  /// Asks until the scan is at its end.
  Json wait_for(const std::string& scan) const {
    Json answer;
    for (int i = 0; i < 600; ++i) {
      answer = studio->get(scan).json();
      if (!answer["running"]) return answer;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ADD_FAILURE() << "the scan doesn't end";
    return answer;
  }

  Folder folder;
  std::unique_ptr<Studio> studio;
};

TEST_F(ScanTest, a_scan_has_the_rows_of_the_command_line) {
  folder.write("bad.csv", "no bars");
  const std::string scan = begin({{"script", "A:MA(C,N);"},
                                  {"parameters", Json::parse(R"([{"name":"n","value":5}])")},
                                  {"where", "C>A"},
                                  {"last", 3}});
  const Json answer = wait_for(scan);
  EXPECT_EQ(answer["done"], 6);
  EXPECT_EQ(answer["failures"].size(), 1U);
  EXPECT_EQ(answer["failures"][0]["security"], "bad");
  std::filesystem::remove(folder.path("bad.csv"));
  const Outcome outcome = run_quor({"scan", "-e", "A:MA(C,N);", folder.path(), "--set", "N=5",
                                    "--where", "C>A", "--last", "3", "--period", "day", "--json"});
  const Json expected = Json::parse(outcome.output);
  ASSERT_EQ(answer["rows"].size(), expected["rows"].size()) << expected;
  EXPECT_GE(expected["rows"].size(), 3U);
  std::map<std::string, double> found;
  for (const Json& row : answer["rows"]) {
    found[row["security"].dump() + row["text"].dump()] = row["values"][0];
  }
  for (const Json& row : expected["rows"]) {
    EXPECT_EQ(found[row["security"].dump() + row["date"].dump()], row["A"]) << row;
  }
  EXPECT_EQ(studio->get(scan + "?since=6").json()["rows"], Json::array());
}

TEST_F(ScanTest, a_scan_refuses_scripts_that_serve_for_no_security) {
  for (const Json& request :
       {Json({{"script", "A:EMMA(C,5);"}}), Json({{"script", "A:C;"}, {"where", "B>1"}}),
        Json({{"script", "A:C;"}, {"where", "A;B"}}), Json({{"script", "A:\"600000$CLOSE\";"}}),
        Json({{"script", "A:C;"}, {"last", 0}})}) {
    EXPECT_EQ(studio->post("/api/scans", request).status, 400) << request;
  }
  EXPECT_EQ(studio->get("/api/scans/none").status, 404);
}

TEST_F(ScanTest, a_scan_ends_when_it_is_cancelled_closed_or_one_of_many) {
  std::string slow;
  for (int i = 0; i < 30; ++i) slow += "A" + std::to_string(i) + ":SUM(STD(C,200),200);";
  for (int i = 0; i < 60; ++i) folder.write("t" + std::to_string(i) + ".csv", made_bars(3000));
  const std::string cancelled = begin({{"script", slow}});
  EXPECT_EQ(studio->post(cancelled + "/cancel", Json::object()).json()["cancelled"], true);
  EXPECT_LT(wait_for(cancelled)["done"], 65);
  const std::string closed = begin({{"script", slow}});
  EXPECT_EQ(studio->post(closed + "/close", "", "text/plain").status, 204);
  EXPECT_EQ(studio->get(closed).status, 404);
  EXPECT_EQ(studio->post(closed + "/cancel", Json::object()).status, 404);
  for (int i = 0; i < 7; ++i) begin({{"script", "A:C;"}});
  EXPECT_EQ(studio->get(cancelled).status, 200);
  begin({{"script", "A:C;"}});
  EXPECT_EQ(studio->get(cancelled).status, 404) << "the oldest one gives way";
}

}  // namespace
