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
    EXPECT_EQ(studio.get("/api/start", headers).status, status) << Json(headers);
    const Reply posted = studio.post("/api/sessions/none/close", "", "text/plain", headers);
    EXPECT_EQ(posted.status, status == 200 ? 204 : 403) << Json(headers);
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
  EXPECT_TRUE(policy.starts_with("default-src 'none'; script-src 'self'; style-src 'self';"));
  EXPECT_EQ(policy.find("unsafe"), std::string::npos);
  EXPECT_EQ(front.headers.at("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(studio.get("/studio.js").headers.at("Content-Type"), "text/javascript; charset=utf-8");
  for (const char* const path : {"/secret.key", "/../secret.key", "/%2e%2e/etc/passwd", "/other",
                                 "//", "/api", "/api/", "/api/other", "/api/sessions/x/y/z/"}) {
    const Reply reply = studio.get(path);
    EXPECT_TRUE(reply.status == 404 || reply.status == 405) << path << ": " << reply.status;
    EXPECT_TRUE(reply.json().contains("error")) << path;
  }
  EXPECT_EQ(studio.send("PUT", "/").status, 404);
  EXPECT_EQ(studio.send("DELETE", "/api/start").status, 404);
  EXPECT_EQ(studio.post("/api/start", Json::object()).status, 405);
}

TEST_F(GateTest, tells_the_page_what_there_is_to_begin_with) {
  folder.write("b.csv", made_bars(50));
  folder.write("mine.quor", "A:C;");
  folder.write("notes.txt", "no script");
  Studio studio({folder.path("mine.quor"), "--bars", folder.path()});
  studio.enter();
  const Json start = studio.get("/api/start").json();
  EXPECT_EQ(start["script"], Json({{"name", "mine.quor"}, {"text", "A:C;"}}));
  EXPECT_EQ(start["securities"], Json::parse(R"([{"name":"a","origin":"folder"},
                                                 {"name":"b","origin":"folder"}])"));
  EXPECT_EQ(start["scripts"], Json({"mine.quor"}));
  EXPECT_EQ(start["words"].size(), 214U);
  EXPECT_TRUE(start["can_save"]);
  const Json samples = start["samples"];
  const auto has = [&samples](const char* group, const char* name) {
    return std::ranges::any_of(samples, [&](const Json& sample) {
      return sample["group"] == group && sample["name"] == name && !sample["text"].empty();
    });
  };
  EXPECT_TRUE(has("samples", "kdj"));
  EXPECT_TRUE(has("cookbook", "aroon"));
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
