// Requests and answers, without the means by which they come and go.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "json.h"
#include "refusal.h"

namespace quor_host {

struct Request {
  std::string method;
  std::string path;                          ///< decoded
  std::map<std::string, std::string> query;  ///< decoded; of a repeated key the first
  std::string type;       ///< of the content, in small letters, without parameters
  std::string known_tag;  ///< of what the browser has kept of this path
  bool takes_gzip = false;
  std::string body;

  std::string text(const std::string& key) const;
  /// Throws Refusal for a text that is no whole number.
  size_t number(const std::string& key, size_t absent) const;
  /// The object in the body. Throws Refusal for another type or text.
  Json json() const;
};

struct Answer {
  int status = 200;
  std::string type = "application/json";
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers = {};
};

Answer json_answer(const Json& json, int status = 200);
Answer error_answer(int status, const std::string& sentence);

/// The pieces of a path between its slashes; "/a/b" has two.
std::vector<std::string> pieces_of(const std::string& path);

}  // namespace quor_host
