// A studio in a process of its own, and the page's side of it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "process.h"

using Json = nlohmann::json;

struct Reply {
  int status = 0;  ///< 0 if none came
  std::map<std::string, std::string> headers;
  std::string body;

  /// The body as JSON; fails the test if it is none.
  Json json() const;
};

using Headers = std::map<std::string, std::string>;

/// Removed with all that is in it.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string path(const std::string& name = "") const { return (path_ / name).string(); }
  void write(const std::string& name, const std::string& text) const;
  std::string read(const std::string& name) const;

 private:
  std::filesystem::path path_;
};

/// A program that was run to its end.
struct Outcome {
  int status = -1;
  std::string output;  ///< both streams
};
Outcome run_quor(const std::vector<std::string>& arguments);

class Studio {
 public:
  /// Starts with a page of its own and further arguments, and reads the link.
  explicit Studio(std::vector<std::string> arguments);
  /// Presses Ctrl-C and expects that the program ends well.
  ~Studio();
  Studio(const Studio&) = delete;
  Studio& operator=(const Studio&) = delete;

  int port() const { return port_; }
  const std::string& token() const { return token_; }
  size_t memory() const { return process_->memory(); }
  /// With the cookie that the link gives.
  void enter();

  Reply get(const std::string& path, const Headers& headers = {}) const;
  Reply post(const std::string& path, const Json& json) const;
  Reply post(const std::string& path, const std::string& body, const std::string& type,
             const Headers& headers = {}) const;
  /// Another method, without a body.
  Reply send(const std::string& method, const std::string& path) const;

 private:
  Headers with_cookie(Headers headers) const;

  Folder page_;
  std::unique_ptr<Process> process_;
  int port_ = 0;
  std::string token_;
  std::string cookie_;
};

/// A connection by which a test sends what no library would.
class Wire {
 public:
  explicit Wire(int port);
  ~Wire();
  Wire(const Wire&) = delete;
  Wire& operator=(const Wire&) = delete;

  /// False if the other side has closed.
  bool send(const std::string& bytes) const;
  /// All that comes until the other side closes.
  std::string read_all() const;

 private:
  std::intptr_t socket_;
};

/// Bars of days with a price that goes up and down, as comma-separated values.
std::string made_bars(size_t count, unsigned seed = 1);
