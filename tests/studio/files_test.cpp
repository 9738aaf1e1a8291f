// Files that are read and saved, and requests that no page of ours would send.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

#include "studio.h"

namespace {

namespace fs = std::filesystem;

struct FilesTest : testing::Test {
  FilesTest() {
    folder.write("a.csv", made_bars(300));
    folder.write("mine.quor", "A:C;");
    studio = std::make_unique<Studio>(std::vector<std::string>{"--bars", folder.path()});
    studio->enter();
  }

  Folder folder;
  std::unique_ptr<Studio> studio;
};

TEST_F(FilesTest, malformed_requests_are_refused) {
  const struct {
    std::string path;
    std::string body;
    int status;
  } cases[] = {
      {"/api/scans", "", 400},
      {"/api/scans", "{", 400},
      {"/api/scans", "[]", 400},
      {"/api/scans", "{}", 400},
      {"/api/scans", R"({"script":5})", 400},
      {"/api/scans", "{\"script\":\"A:C;\xFF\"}", 400},
      {"/api/scans", R"({"script":"A:C;","parameters":{}})", 400},
      {"/api/scans", R"({"script":"A:C;","parameters":[5]})", 400},
      {"/api/scans", R"({"script":"A:C;","parameters":[{"name":"N"}]})", 400},
      {"/api/scans", R"({"script":"A:C;","parameters":[{"name":"N","value":1e999}]})", 400},
      {"/api/scans", R"({"script":"A:C;","parameters":[{"name":"A\"B","value":1}]})", 400},
      {"/api/scans", R"({"script":"A:C;","period":"often"})", 400},
      {"/api/scans", std::string(100000, '['), 400},
      {"/api/scripts/b.quor", "{}", 400},
      {"/api/scripts/b.quor", R"({"text":""})", 400},
      {"/api/scripts/b.quor", R"({"text":"A:C;","before":5})", 400},
      {"/api/other", "{}", 404},
  };
  for (const auto& [path, body, status] : cases) {
    const Reply reply = studio->post(path, body, "application/json");
    EXPECT_EQ(reply.status, status) << path << ' ' << body.substr(0, 80);
    EXPECT_TRUE(reply.json()["error"].is_string());
  }
  const std::string script = R"({"script":"A:C;"})";
  EXPECT_EQ(studio->post("/api/scans", script, "text/plain").status, 415);
  EXPECT_EQ(studio->post("/api/scans", "--x", "multipart/form-data; boundary=x").status, 415);
  for (const char* const name : {"..%2Fa", "a.csv", "", "other", "%00"}) {
    EXPECT_EQ(studio->get(std::string("/api/bars/") + name).status, 404) << name;
  }
}

TEST_F(FilesTest, what_is_too_large_is_refused) {
  const std::string megabyte(size_t{1} << 20U, 'A');
  EXPECT_EQ(studio->post("/api/scans", {{"script", megabyte}}).status, 413);
  EXPECT_EQ(studio->post("/api/scripts/b.quor", {{"text", megabyte}}).status, 413);
  const std::string many((size_t{4} << 20U) + 1, '1');
  EXPECT_EQ(studio->post("/api/scripts/b.quor", many, "application/json").status, 413);
  EXPECT_NE(studio->get("/" + std::string(20000, 'a')).status, 200);
  EXPECT_EQ(studio->get("/api/bars/a").body, made_bars(300));
}

#ifndef _WIN32  // where nobody but an administrator makes links
TEST_F(FilesTest, links_that_lead_out_of_the_folder_are_not_read) {
  Folder outside;
  outside.write("b.csv", made_bars(20));
  fs::create_symlink(outside.path("b.csv"), folder.path("b.csv"));
  fs::create_symlink("a.csv", folder.path("c.csv"));
  EXPECT_EQ(studio->get("/api/bars/b").status, 404);
  EXPECT_EQ(studio->get("/api/bars/c").body, made_bars(300));
  const Reply scan = studio->post("/api/scans", {{"script", "A:C;"}});
  EXPECT_EQ(scan.json()["files"], 2);
}
#endif

TEST_F(FilesTest, requests_that_drip_in_hold_up_no_others_and_are_ended) {
  std::vector<std::unique_ptr<Wire>> wires;
  for (int i = 0; i < 80; ++i) {
    wires.push_back(std::make_unique<Wire>(studio->port()));
    EXPECT_TRUE(wires.back()->send("GET / HTTP/1.1\r\nX: "));
  }
  std::atomic<bool> is_answered{false};
  std::thread dripping([&] {
    while (!is_answered) {
      for (const auto& wire : wires) wire->send("x");
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  });
  EXPECT_EQ(studio->get("/api/files").status, 200);
  is_answered = true;
  dripping.join();
  // However often a byte comes, the end comes, too.
  int sent = 0;
  while (wires.front()->send("x") && sent < 2000) {
    ++sent;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_LT(sent, 2000);
}

TEST_F(FilesTest, requests_that_can_be_read_in_two_ways_are_refused) {
  const std::string host = "Host: 127.0.0.1:" + std::to_string(studio->port()) + "\r\n";
  const struct {
    std::string head;
    std::string status;
  } cases[] = {
      {"POST /api/scans HTTP/1.1\r\n" + host + "Content-Length: 2\r\nContent-Length: 40\r\n",
       "400"},
      {"POST /api/scans HTTP/1.1\r\n" + host +
           "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n",
       "400"},
      {"GET /index.html HTTP/1.1\r\n" + host + "Range: bytes=0-1,0-1,0-1\r\n", "416"},
      {"GET /index.html HTTP/1.1\r\n" + host + "Range: bytes=999999999-\r\n", "416"},
  };
  for (const auto& [head, status] : cases) {
    const Wire wire(studio->port());
    EXPECT_TRUE(wire.send(head + "\r\n{}GET / HTTP/1.1\r\n" + host + "\r\n"));
    const std::string answer = wire.read_all();
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 " + status)) << head << answer.substr(0, 200);
    EXPECT_EQ(answer.find("HTTP/1.1", 1), std::string::npos) << "one answer: " << head;
  }
}

TEST_F(FilesTest, memory_of_large_files_goes_back_to_the_system) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer has a library of its own, which keeps it";
#endif
  const size_t before = studio->memory();
  if (before == 0) GTEST_SKIP() << "this system doesn't say what a program has";
  folder.write("large.csv", std::string(size_t{10} << 20U, 'x'));
  std::vector<std::thread> pages;
  for (int i = 0; i < 4; ++i) {
    pages.emplace_back([&] {
      for (int j = 0; j < 5; ++j) EXPECT_EQ(studio->get("/api/bars/large").status, 200);
    });
  }
  for (std::thread& page : pages) page.join();
  const size_t most = before + (size_t{20} << 20U);
  // The server may hold the last answers for a moment when they have come.
  for (int i = 0; i < 100 && studio->memory() >= most; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_LT(studio->memory(), most);
}

TEST_F(FilesTest, scripts_are_saved_in_their_folder_alone) {
  const auto save = [this](const std::string& name, const char* before) {
    Json request = {{"text", "B:O;"}};
    if (before != nullptr) request["before"] = before;
    return studio->post("/api/scripts/" + name, request).status;
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
    const int status = save(name, "A:H;");
    EXPECT_TRUE(status == 400 || status == 404 || status == 409) << name << ": " << status;
    EXPECT_NE(studio->get("/api/scripts/" + name).status, 200) << name;
  }
  EXPECT_EQ(outside.read("other.quor"), "A:H;");
  EXPECT_EQ(folder.read("a.csv"), made_bars(300));
  EXPECT_EQ(save("mine.quor", nullptr), 409);
  EXPECT_EQ(folder.read("mine.quor"), "A:C;");
  const Reply other_text =
      studio->post("/api/scripts/mine.quor", {{"text", "B:O;"}, {"before", "A:L;"}});
  EXPECT_EQ(other_text.status, 409) << "it has been changed elsewhere";
  EXPECT_EQ(other_text.json()["text"], "A:C;");
  EXPECT_EQ(save("mine.quor", "A:C;"), 201);
  EXPECT_EQ(folder.read("mine.quor"), "B:O;");
  EXPECT_EQ(save("new%20one.quor", nullptr), 201);
  EXPECT_EQ(studio->get("/api/scripts/new%20one.quor").json()["text"], "B:O;");
  const Json scripts = studio->get("/api/files").json()["scripts"];
  ASSERT_EQ(scripts.size(), 2U) << scripts;
  EXPECT_EQ(scripts[1]["name"], "new one.quor");
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

}  // namespace
