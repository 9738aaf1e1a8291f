// Requests that no page of ours would send, and more of them than one can do.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "studio.h"

namespace {

namespace fs = std::filesystem;

struct HostileTest : testing::Test {
  HostileTest() {
    folder.write("a.csv", made_bars(300));
    folder.write("mine.quor", "A:C;");
    start({});
  }

  void start(std::vector<std::string> more) {
    more.insert(more.end(), {"--bars", folder.path()});
    studio.reset();
    studio = std::make_unique<Studio>(std::move(more));
    studio->enter();
  }
  std::string open() {
    std::string session = studio->open();
    EXPECT_EQ(studio->post(session + "/bars", {{"security", "a"}}).status, 200);
    return session;
  }

  Folder folder;
  std::unique_ptr<Studio> studio;
};

TEST_F(HostileTest, malformed_requests_are_refused) {
  const std::string session = open();
  const struct {
    std::string path;
    std::string body;
    int status;
  } cases[] = {
      {"/script", "", 400},
      {"/script", "{", 400},
      {"/script", "[]", 400},
      {"/script", "{}", 400},
      {"/script", R"({"script":5})", 400},
      {"/script", "{\"script\":\"A:C;\xFF\"}", 400},
      {"/script", R"({"script":"A:C;","parameters":{}})", 400},
      {"/script", R"({"script":"A:C;","parameters":[5]})", 400},
      {"/script", R"({"script":"A:C;","parameters":[{"name":"N"}]})", 400},
      {"/script", R"({"script":"A:C;","parameters":[{"name":"N","value":1e999}]})", 400},
      {"/script", R"({"script":"A:C;","parameters":[{"name":"A\"B","value":1}]})", 400},
      {"/script", std::string(100000, '['), 400},
      {"/bars", R"({"security":"../a"})", 404},
      {"/bars", R"({"security":"a.csv"})", 404},
      {"/bars", R"({"security":""})", 404},
      {"/bars", R"({"security":"a","period":"often"})", 400},
      {"/other", "{}", 404},
      {"/play/", "{}", 404},
  };
  for (const auto& [path, body, status] : cases) {
    const Reply reply = studio->post(session + path, body, "application/json");
    EXPECT_EQ(reply.status, status) << path << ' ' << body.substr(0, 80);
    EXPECT_TRUE(reply.json()["error"].is_string());
  }
  EXPECT_EQ(studio->post(session + "/bars", {{"security", "a"}}).status, 200);
  EXPECT_EQ(studio->post(session + "/script", R"({"script":"A:C;"})", "text/plain").status, 415);
  EXPECT_EQ(studio->post(session + "/bars", "--x", "multipart/form-data; boundary=x").status, 415);
  for (const char* const query : {"from=-1", "from=1e3", "to=x", "points=99999999999999999999999",
                                  "columns=a", "columns=-5", "columns=1e300"}) {
    EXPECT_EQ(studio->get(session + "/view?" + query).status, 400) << query;
  }
  EXPECT_EQ(studio->get(session + "/view?columns=77777,4000000").status, 200);
  EXPECT_EQ(studio->get(session + "/values").status, 404);
  EXPECT_EQ(studio->get(session + "/export.csv").status, 409);
}

TEST_F(HostileTest, bars_that_are_none_leave_those_before) {
  const std::string session = open();
  for (const std::string& csv :
       {std::string(), std::string("x"), std::string("date,close\n2024-01-01\n"),
        std::string("date,close\n2024-01-01,x\n"), std::string("date,close\n1,1\n"),
        std::string("date,close\n"), std::string(5000, '"'), std::string(1000, '\0'),
        std::string("date,close\n2024-01-01,1\n2024-01-01,2\n")}) {
    const Reply reply = studio->post(session + "/bars", csv, "text/csv");
    EXPECT_EQ(reply.status, 400) << csv.substr(0, 50);
    EXPECT_TRUE(reply.json()["error"].is_string());
  }
  EXPECT_EQ(studio->get(session + "/values?row=299").status, 200);
}

TEST_F(HostileTest, what_is_too_large_is_refused) {
  const std::string session = open();
  const std::string megabyte(size_t{1} << 20U, 'A');
  EXPECT_EQ(studio->post(session + "/script", {{"script", megabyte}}).status, 413);
  EXPECT_EQ(studio->post(session + "/script", {{"script", megabyte + megabyte}}).status, 413);
  EXPECT_EQ(studio->post("/api/scripts/b.quor", {{"text", megabyte}}).status, 413);
  const std::string many((size_t{64} << 20U) + 1, '1');
  EXPECT_EQ(studio->post(session + "/bars", many, "text/csv").status, 413);
  EXPECT_NE(studio->get("/" + std::string(20000, 'a')).status, 200);
  EXPECT_EQ(studio->get(session + "/values?row=0").status, 200);
}

TEST_F(HostileTest, scripts_are_saved_in_their_folder_alone) {
  const auto save = [this](const std::string& name, bool replaces) {
    return studio->post("/api/scripts/" + name, {{"text", "B:O;"}, {"overwrite", replaces}}).status;
  };
  Folder outside;
  outside.write("other.quor", "A:H;");
  fs::create_directory(folder.path("folder.quor"));
  std::vector<std::string> names{"..%2Fx.quor", "%2Ftmp%2Fx.quor", "..%5Cx.quor", ".quor",
                                 ".x.quor",     "x.txt",           "a.csv",       "x",
                                 "x%00.quor",   "x%0A.quor",       "C:x.quor",    "folder.quor"};
  names.push_back(std::string(101, 'x') + ".quor");
#ifndef _WIN32  // where nobody but an administrator makes links
  fs::create_symlink(outside.path("other.quor"), folder.path("link.quor"));
  names.emplace_back("link.quor");
#endif
  for (const std::string& name : names) {
    const int status = save(name, true);
    EXPECT_TRUE(status == 400 || status == 404 || status == 409) << name << ": " << status;
    EXPECT_NE(studio->get("/api/scripts/" + name).status, 200) << name;
  }
  EXPECT_EQ(outside.read("other.quor"), "A:H;");
  EXPECT_EQ(folder.read("a.csv"), made_bars(300));
  EXPECT_EQ(save("mine.quor", false), 409);
  EXPECT_EQ(folder.read("mine.quor"), "A:C;");
  EXPECT_EQ(save("mine.quor", true), 201);
  EXPECT_EQ(folder.read("mine.quor"), "B:O;");
  EXPECT_EQ(save("new%20one.quor", false), 201);
  EXPECT_EQ(studio->get("/api/scripts/new%20one.quor").json()["text"], "B:O;");
  EXPECT_EQ(studio->get("/api/start").json()["scripts"], Json({"mine.quor", "new one.quor"}));
  for (const char* const name :
       {"a.csv", "mine.quor", "new one.quor", "folder.quor", "link.quor"}) {
    fs::remove(folder.path(name));
  }
  EXPECT_TRUE(fs::is_empty(folder.path()));
  // Saved anew, a script in another encoding would be spoilt.
  folder.write("other.quor", "{\xBE\xF9\xCF\xDF}A:C;");
  const Reply other = studio->get("/api/scripts/other.quor");
  EXPECT_EQ(other.status, 400);
  EXPECT_TRUE(other.json()["error"].get<std::string>().ends_with(
      "other.quor: the text isn't UTF-8 but most likely GB18030 (GBK); save it as UTF-8"));
}

TEST_F(HostileTest, a_slow_session_blocks_no_other) {
  const std::string slow = studio->open();
  const std::string other = open();
  studio->post(slow + "/bars", made_bars(20000), "text/csv");
  std::string script;
  for (int i = 0; i < 30; ++i) {
    script += "A" + std::to_string(i) + ":STD(C," + std::to_string(1500 + i) + ");";
  }
  std::atomic<int> refused{0};
  std::atomic<int> done{0};
  std::vector<std::thread> pages;
  for (int i = 0; i < 8; ++i) {
    pages.emplace_back([&] {
      const int status = studio->post(slow + "/script", {{"script", script}}).status;
      EXPECT_TRUE(status == 200 || status == 429) << status;
      ++(status == 200 ? done : refused);
    });
  }
  // Whenever one is refused, three are under way: a second of work each, whatever else is going on.
  while (refused == 0 && done < 8) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_GE(refused, 1);
  const int done_before = done;
  EXPECT_TRUE(studio->post(other + "/script", {{"script", "A:MA(C,5);"}}).json()["sound"]);
  EXPECT_EQ(studio->get(other + "/values?row=10").status, 200);
  EXPECT_LT(done - done_before, 3) << "the other session has waited";
  for (std::thread& page : pages) page.join();
  EXPECT_GE(done, 3);
}

TEST_F(HostileTest, sessions_are_few_and_end_when_left_alone) {
  start({"--idle", "1"});
  std::vector<std::string> sessions;
  for (int i = 0; i < 16; ++i) sessions.push_back(studio->open());
  EXPECT_EQ(studio->post("/api/sessions", "", "text/plain").status, 503);
  std::this_thread::sleep_for(std::chrono::milliseconds(2500));
  EXPECT_EQ(studio->get(sessions.front() + "/events").status, 404);
  const std::string session = studio->open();
  EXPECT_EQ(studio->post(session + "/close", "", "text/plain").status, 204);
  EXPECT_EQ(studio->get(session + "/events").status, 404);
}

}  // namespace
