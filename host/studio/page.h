// The files of the page, read once, and what its build has packed of them.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "web.h"

namespace quor_host {

class Page {
 public:
  /// Throws HostError if there is no page in the folder.
  explicit Page(const std::filesystem::path& folder);

  /// The file at the path of the request, "/" the front page; packed if the browser can unpack it,
  /// without its bytes if it has them. What is asked for by the version that the front page names
  /// never changes. Throws Refusal for a path without a file.
  Answer answer(const Request& request) const;

 private:
  struct File {
    std::string type;
    std::string bytes;
    std::string packed;  ///< by gzip; empty if it wasn't
    std::string tag;     ///< another one for other bytes
  };
  bool is_version(const std::string& text) const;

  std::map<std::string, File> files_;  ///< by path
};

}  // namespace quor_host
