// Who may come in, what the page is served with, and how the program begins and ends.
#include <gtest/gtest.h>

#include "studio.h"

namespace {

struct GateTest : testing::Test {
  GateTest() { folder.write("a.csv", made_bars(50)); }

  Folder folder;
};

TEST_F(GateTest, the_link_serves_once) {
  Studio studio({"--bars", folder.path()});
  EXPECT_EQ(studio.get("/").status, 403);
  EXPECT_EQ(studio.get("/?token=" + std::string(studio.token().size(), '0')).status, 403);
  const Reply reply = studio.get("/?token=" + studio.token());
  EXPECT_EQ(reply.status, 303);
  EXPECT_EQ(reply.headers.at("Location"), "/");
  const std::string cookie = reply.headers.at("Set-Cookie");
  EXPECT_NE(cookie.find("HttpOnly"), std::string::npos);
  EXPECT_NE(cookie.find("SameSite=Strict"), std::string::npos);
  EXPECT_EQ(studio.get("/?token=" + studio.token()).status, 403) << "a second time";
  const std::string pair = cookie.substr(0, cookie.find(';'));
  EXPECT_EQ(studio.get("/", {{"Cookie", "other=1; " + pair}}).status, 200);
  EXPECT_EQ(studio.get("/", {{"Cookie", pair + "0"}}).status, 403);
}

TEST_F(GateTest, only_the_own_page_may_ask) {
  Studio studio({"--bars", folder.path()});
  studio.enter();
  const std::string port = std::to_string(studio.port());
  const struct {
    Headers headers;
    int status;
  } cases[] = {
      {{}, 200},
      {{{"Origin", "http://127.0.0.1:" + port}}, 200},
      {{{"Host", "localhost:" + port}, {"Origin", "http://localhost:" + port}}, 200},
      {{{"Host", "localhost:" + port}, {"Origin", "http://127.0.0.1:" + port}}, 403},
      {{{"Host", "127.0.0.1"}}, 403},
      {{{"Host", "studio.example:" + port}}, 403},
      {{{"Origin", "http://studio.example"}}, 403},
      {{{"Origin", "http://127.0.0.1:1"}}, 403},
      {{{"Origin", "null"}}, 403},
      {{{"Sec-Fetch-Site", "same-origin"}}, 200},
      {{{"Sec-Fetch-Site", "same-site"}}, 403},
      {{{"Sec-Fetch-Site", "cross-site"}}, 403},
  };
  for (const auto& [headers, status] : cases) {
    EXPECT_EQ(studio.get("/api/files", headers).status, status) << Json(headers);
    const Reply posted = studio.post("/api/scans/none/close", "", "text/plain", headers);
    EXPECT_EQ(posted.status, status == 200 ? 404 : 403) << Json(headers);
  }
}

TEST_F(GateTest, serves_the_page_and_nothing_else) {
  Studio studio({"--bars", folder.path()});
  EXPECT_EQ(studio.get("/studio.js").status, 403);
  studio.enter();
  const Reply front = studio.get("/");
  EXPECT_EQ(front.status, 200);
  EXPECT_EQ(front.body, studio.get("/index.html").body);
  EXPECT_EQ(front.headers.at("Content-Type"), "text/html; charset=utf-8");
  const std::string policy = front.headers.at("Content-Security-Policy");
  EXPECT_TRUE(policy.starts_with("default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; "));
  EXPECT_EQ(policy.find("'unsafe"), std::string::npos);
  EXPECT_EQ(front.headers.at("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(studio.get("/studio.js").headers.at("Content-Type"), "text/javascript; charset=utf-8");
  for (const char* const path :
       {"/secret.key", "/../secret.key", "/%2e%2e/etc/passwd", "/other", "//", "/api", "/api/",
        "/api/other", "/api/bars/x/y/", "/api/scans/x"}) {
    const Reply reply = studio.get(path);
    EXPECT_TRUE(reply.status == 404 || reply.status == 405) << path << ": " << reply.status;
    EXPECT_TRUE(reply.json().contains("error")) << path;
  }
  EXPECT_EQ(studio.send("PUT", "/").status, 404);
  EXPECT_EQ(studio.send("DELETE", "/api/files").status, 404);
  for (const char* const path : {"/start.json", "/studio.js", "/api/files", "/api/bars/a"}) {
    EXPECT_EQ(studio.post(path, Json::object()).status, 405) << path;
  }
}

TEST_F(GateTest, tells_the_page_what_there_is_to_begin_with) {
  folder.write("b.csv", made_bars(50));
  folder.write("mine.quor", "A:C;");
  folder.write("notes.txt", "no script");
  Studio studio({folder.path("mine.quor"), "--bars", folder.path()});
  studio.enter();
  const Json start = studio.get("/start.json").json();
  EXPECT_EQ(start["script"], Json({{"name", "mine.quor"}, {"text", "A:C;"}}));
  const auto names = [](const Json& files) {
    std::vector<std::string> all;
    for (const Json& file : files) all.push_back(file["name"]);
    return all;
  };
  EXPECT_EQ(names(start["files"]["securities"]), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(names(start["files"]["scripts"]), (std::vector<std::string>{"mine.quor"}));
  EXPECT_EQ(studio.get("/api/bars/b").body, made_bars(50));
}

TEST_F(GateTest, tells_a_changed_file_from_the_one_before) {
  Studio studio({"--bars", folder.path()});
  studio.enter();
  const auto stamp = [&] { return studio.get("/api/files").json()["securities"][0]["stamp"]; };
  const Json before = stamp();
  EXPECT_EQ(stamp(), before);
  folder.write("a.csv", made_bars(51));
  EXPECT_NE(stamp(), before);
}

TEST_F(GateTest, without_bars_there_are_no_files) {
  Studio studio({});
  studio.enter();
  const Json start = studio.get("/start.json").json();
  EXPECT_EQ(start["folder"], Json());
  EXPECT_EQ(start["files"], Json::parse(R"({"scripts":[],"securities":[]})"));
  EXPECT_EQ(studio.get("/api/bars/a").status, 404);
  EXPECT_EQ(studio.post("/api/scripts/a.quor", {{"text", "A:C;"}}).status, 409);
  EXPECT_EQ(studio.post("/api/scans", {{"script", "A:C;"}}).status, 409);
}

TEST_F(GateTest, a_page_that_the_browser_has_is_not_sent_again) {
  Studio studio({});
  studio.enter();
  const Reply first = studio.get("/studio.js");
  EXPECT_EQ(first.headers.at("Cache-Control"), "no-cache");
  const Reply second = studio.get("/studio.js", {{"If-None-Match", first.headers.at("ETag")}});
  EXPECT_EQ(second.status, 304);
  EXPECT_TRUE(second.body.empty());
  EXPECT_EQ(studio.get("/", {{"If-None-Match", first.headers.at("ETag")}}).status, 200);
  EXPECT_EQ(studio.get("/start.json").headers.at("Cache-Control"), "no-store");
}

TEST_F(GateTest, packed_files_of_the_page_are_sent_as_they_are_to_who_can_unpack_them) {
  Studio studio({});
  studio.enter();
  const struct {
    const char* encodings;
    bool is_packed;
  } cases[] = {{"", false},
               {"br", false},
               {"gzip;q=0, br", false},
               {"gzip", true},
               {"br;q=0, gzip;q=0.5", true}};
  for (const auto& [encodings, is_packed] : cases) {
    const Reply reply = studio.get("/studio.js", {{"Accept-Encoding", encodings}});
    EXPECT_EQ(reply.body, is_packed ? "packed" : "'use strict';") << encodings;
    EXPECT_EQ(reply.headers.contains("Content-Encoding"), is_packed) << encodings;
    EXPECT_EQ(reply.headers.at("Vary"), "Accept-Encoding");
    EXPECT_EQ(reply.headers.at("Content-Type"), "text/javascript; charset=utf-8");
    // The tag of one form isn't known for the other.
    const std::string tag = reply.headers.at("ETag");
    for (const char* const other : {"br", "gzip"}) {
      const bool is_same = (std::string(other) == "gzip") == is_packed;
      const Reply again =
          studio.get("/studio.js", {{"Accept-Encoding", other}, {"If-None-Match", tag}});
      EXPECT_EQ(again.status, is_same ? 304 : 200) << encodings << ", then " << other;
    }
  }
  EXPECT_EQ(studio.get("/studio.js.gz").status, 404);
  EXPECT_FALSE(studio.get("/").headers.contains("Vary"));
}

TEST_F(GateTest, what_is_asked_for_by_the_version_of_the_page_is_kept_for_good) {
  Studio studio({});
  studio.enter();
  const struct {
    const char* path;
    bool lasts;
  } cases[] = {{"/studio.js?v=abc", true},
               {"/studio.js?v=ab", false},
               {"/studio.js?v=", false},
               {"/studio.js", false},
               {"/studio.js?v=%22", false}};
  for (const auto& [path, lasts] : cases) {
    EXPECT_EQ(studio.get(path).headers.at("Cache-Control"),
              lasts ? "private, max-age=31536000, immutable" : "no-cache")
        << path;
  }
}

TEST_F(GateTest, writes_the_page_into_a_folder) {
  Folder out;
  for (const char* const text : {"page", "newer page"}) {
    folder.write("index.html", text);
    const Outcome done =
        run_quor({"studio", "--page", folder.path(), "--export", out.path("site/studio")});
    EXPECT_EQ(done.status, 0) << done.output;
    EXPECT_EQ(out.read("site/studio/index.html"), text);
  }
  Folder none;
  EXPECT_EQ(run_quor({"studio", "--page", none.path(), "--export", out.path("other")}).status, 1);
}

TEST_F(GateTest, says_what_keeps_it_from_beginning) {
  const Outcome without_page = run_quor({"studio", "--no-open", "--page", folder.path()});
  EXPECT_EQ(without_page.status, 1);
  EXPECT_NE(without_page.output.find("the page of the studio isn't there"), std::string::npos);
  EXPECT_EQ(run_quor({"studio", "--no-open", "--port", "70000"}).status, 2);
  Studio studio({"--bars", folder.path("a.csv")});
  folder.write("index.html", "page");
  const std::string port = std::to_string(studio.port());
  const Outcome taken = run_quor({"studio", "--no-open", "--page", folder.path(), "--port", port});
  EXPECT_EQ(taken.status, 1);
  EXPECT_NE(taken.output.find("port " + port + " is taken"), std::string::npos);
  const Outcome no_bars = run_quor(
      {"studio", "--no-open", "--page", folder.path(), "--bars", folder.path("other.csv")});
  EXPECT_EQ(no_bars.status, 1);
  EXPECT_NE(no_bars.output.find("no such file or folder"), std::string::npos);
}

}  // namespace
