#include "paths.h"

#include <algorithm>
#include <system_error>

#include "../errors.h"
#include "../text.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> scripts_in(const std::string& folder) {
  std::vector<std::string> scripts;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path_of(folder))) {
    const bool is_script = to_upper(text_of(entry.path().extension())) == ".QUOR";
    if (is_script && entry.is_regular_file()) scripts.push_back(text_of(entry.path()));
  }
  if (scripts.empty()) throw HostError(folder + ": holds no script (*.quor)");
  std::ranges::sort(scripts);
  return scripts;
}

}  // namespace

fs::path path_of(const std::string& text) { return {std::u8string(text.begin(), text.end())}; }

std::string text_of(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

bool is_folder(const std::string& path) {
  // What can't be looked at is no folder; whoever opens it tells why it can't be.
  std::error_code unread;
  return fs::is_directory(path_of(path), unread);
}

std::vector<std::string> scripts_under(const std::vector<std::string>& paths) {
  std::vector<std::string> scripts;
  for (const std::string& path : paths) {
    if (is_folder(path)) {
      std::ranges::copy(scripts_in(path), std::back_inserter(scripts));
    } else {
      scripts.push_back(path);
    }
  }
  return scripts;
}

}  // namespace quor_host
