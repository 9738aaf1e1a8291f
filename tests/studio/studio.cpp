#include "studio.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <regex>
#include <sstream>

namespace {

/// The program, run by an emulator where it is for another system.
std::vector<std::string> command_of(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{QUOR_COMMAND};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
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
  client.set_decompress(false);  // bytes as they are sent
  client.set_write_timeout(120);
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
  std::random_device system;
  path_ = std::filesystem::temp_directory_path() / ("quor_studio_" + std::to_string(system()));
  EXPECT_TRUE(std::filesystem::create_directory(path_));
}

Folder::~Folder() { std::filesystem::remove_all(path_); }

void Folder::write(const std::string& name, const std::string& text) const {
  std::ofstream(path_ / name, std::ios::binary) << text;
}

std::string Folder::read(const std::string& name) const {
  std::ifstream file(path_ / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Outcome run_quor(const std::vector<std::string>& arguments) {
  const Process process(command_of(arguments));
  Outcome outcome;
  for (int c = fgetc(process.output()); c != EOF; c = fgetc(process.output())) {
    outcome.output += static_cast<char>(c);
  }
  outcome.status = process.wait();
  return outcome;
}

Studio::Studio(std::vector<std::string> arguments) {
  page_.write("index.html", R"(<!doctype html><title>page</title><script src="studio.js?v=abc">)");
  page_.write("studio.js", "'use strict';");
  page_.write("studio.js.gz", "packed");
  page_.write("secret.key", "not for the page");
  const std::string first[] = {"studio", "--page", page_.path(), "--no-open", "--port", "0"};
  arguments.insert(arguments.begin(), std::begin(first), std::end(first));
  process_ = std::make_unique<Process>(command_of(arguments));
  const std::regex link("http://127\\.0\\.0\\.1:(\\d+)/\\?token=([0-9a-f]+)");
  std::string text;
  std::smatch parts;
  for (char line[300]; fgets(line, sizeof line, process_->output()) != nullptr;) {
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
  process_->interrupt();
  EXPECT_EQ(process_->wait(), 0);
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

Wire::Wire(int port) {
  httplib::Error error = httplib::Error::Success;
  socket_ = static_cast<std::intptr_t>(httplib::detail::create_client_socket(
      "127.0.0.1", "", port, AF_INET, true, nullptr, 30, 0, 120, 0, 120, 0, "", error));
  EXPECT_EQ(error, httplib::Error::Success);
}

Wire::~Wire() { httplib::detail::close_socket(static_cast<socket_t>(socket_)); }

bool Wire::send(const std::string& bytes) const {
#ifdef _WIN32
  constexpr int quietly = 0;
#else
  constexpr int quietly = MSG_NOSIGNAL;
#endif
  const auto socket = static_cast<socket_t>(socket_);
  return httplib::detail::send_socket(socket, bytes.data(), bytes.size(), quietly) ==
         static_cast<ssize_t>(bytes.size());
}

std::string Wire::read_all() const {
  const auto socket = static_cast<socket_t>(socket_);
  std::string all;
  char piece[4096];
  for (;;) {
    const ssize_t size = httplib::detail::read_socket(socket, piece, sizeof piece, 0);
    if (size <= 0) return all;
    all.append(piece, static_cast<size_t>(size));
  }
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
