#include "studio.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>
#include <sstream>

namespace {

/// Starts the program with its output on a pipe.
struct Process {
  pid_t id = 0;
  FILE* output = nullptr;
};

Process start_quor(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), QUOR_PROGRAM);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return {};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  Process process;
  const int error =
      posix_spawn(&process.id, QUOR_PROGRAM, &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  process.output = fdopen(ends[0], "r");
  EXPECT_EQ(error, 0);
  return process;
}

int wait_for(pid_t process) {
  int status = -1;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Reply reply_of(const httplib::Result& result) {
  if (!result) return {};
  Reply reply{result->status, {}, result->body};
  for (const auto& [key, value] : result->headers) reply.headers[key] = value;
  return reply;
}

httplib::Client client_of(int port) {
  httplib::Client client("127.0.0.1", port);
  client.set_read_timeout(120);
  return client;
}

httplib::Headers headers_of(const Headers& headers) { return {headers.begin(), headers.end()}; }

}  // namespace

Json Reply::json() const {
  Json json = Json::parse(body, nullptr, false);
  EXPECT_FALSE(json.is_discarded()) << status << ": " << body.substr(0, 300);
  return json;
}

Folder::Folder() {
  std::string name = std::filesystem::temp_directory_path() / "quor_studio_XXXXXX";
  path_ = mkdtemp(name.data());
}

Folder::~Folder() { std::filesystem::remove_all(path_); }

void Folder::write(const std::string& name, const std::string& text) const {
  std::ofstream(path_ / name, std::ios::binary) << text;
}

std::string Folder::read(const std::string& name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Outcome run_quor(std::vector<std::string> arguments) {
  const Process process = start_quor(std::move(arguments));
  Outcome outcome;
  for (int c = fgetc(process.output); c != EOF; c = fgetc(process.output)) {
    outcome.output += static_cast<char>(c);
  }
  fclose(process.output);
  outcome.status = wait_for(process.id);
  return outcome;
}

Studio::Studio(std::vector<std::string> arguments) {
  page_.write("index.html", "<!doctype html><title>page</title>");
  page_.write("studio.js", "'use strict';");
  page_.write("secret.key", "not for the page");
  for (const std::string& argument :
       {std::string("studio"), std::string("--page"), page_.path(), std::string("--no-open")}) {
    arguments.push_back(argument);
  }
  std::rotate(arguments.begin(), arguments.end() - 4, arguments.end());
  const Process process = start_quor(std::move(arguments));
  process_ = process.id;
  output_ = process.output;
  const std::regex link("http://127\\.0\\.0\\.1:(\\d+)/\\?token=([0-9a-f]+)");
  std::string text;
  std::smatch parts;
  for (char line[300]; fgets(line, sizeof line, process.output) != nullptr;) {
    text += line;
    if (std::regex_search(text, parts, link)) break;
  }
  if (parts.empty()) {
    ADD_FAILURE() << "no link: " << text;
    return;
  }
  port_ = std::stoi(parts[1]);
  token_ = parts[2];
}

Studio::~Studio() {
  kill(process_, SIGINT);
  EXPECT_EQ(wait_for(process_), 0);
  fclose(output_);
}

void Studio::enter() {
  const Reply reply = get("/?token=" + token_);
  EXPECT_EQ(reply.status, 303);
  const std::string cookie = reply.headers.at("Set-Cookie");
  cookie_ = cookie.substr(0, cookie.find(';'));
}

Headers Studio::with_cookie(Headers headers) const {
  if (!cookie_.empty()) headers.emplace("Cookie", cookie_);
  return headers;
}

Reply Studio::get(const std::string& path, const Headers& headers) const {
  return reply_of(client_of(port_).Get(path, headers_of(with_cookie(headers))));
}

Reply Studio::post(const std::string& path, const Json& json) const {
  return post(path, json.dump(), "application/json");
}

Reply Studio::post(const std::string& path, const std::string& body, const std::string& type,
                   const Headers& headers) const {
  return reply_of(client_of(port_).Post(path, headers_of(with_cookie(headers)), body, type));
}

Reply Studio::send(const std::string& method, const std::string& path) const {
  httplib::Request request;
  request.method = method;
  request.path = path;
  request.headers = headers_of(with_cookie({}));
  return reply_of(client_of(port_).send(request));
}

std::string Studio::open() const {
  const Reply reply = post("/api/sessions", "", "application/json");
  EXPECT_EQ(reply.status, 201);
  return "/api/sessions/" + reply.json().value("id", "");
}

std::string made_bars(size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::ostringstream csv;
  csv << "date,open,high,low,close,volume\n";
  double price = 100.0;
  const auto move = [&random] { return static_cast<double>(random() % 2001) / 1000.0 - 1.0; };
  for (size_t i = 0; i < count; ++i) {
    // Twenty-eight days in each of twelve months of each year.
    const size_t day = i % 28 + 1;
    const size_t month = i / 28 % 12 + 1;
    const double open = price;
    price = std::max(1.0, price + move());
    csv << 1900 + i / 336 << (month < 10 ? "-0" : "-") << month << (day < 10 ? "-0" : "-") << day
        << ',' << open << ',' << std::max(open, price) + 0.5 << ',' << std::min(open, price) - 0.5
        << ',' << price << ',' << 1000 + random() % 500 << '\n';
  }
  return csv.str();
}
