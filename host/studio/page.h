// The files of the page, read once.
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

  /// The file at the path of the request, "/" the front page; without its bytes if the browser has
  /// them. Throws Refusal for a path without one.
  Answer answer(const Request& request) const;

 private:
  struct File {
    std::string type;
    std::string bytes;
    std::string tag;  ///< another one for other bytes
  };
  std::map<std::string, File> files_;  ///< by path
};

}  // namespace quor_host
