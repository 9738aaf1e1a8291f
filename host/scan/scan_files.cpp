#include <algorithm>
#include <filesystem>
#include <system_error>

#include "../errors.h"
#include "../input/paths.h"
#include "../text.h"
#include "scan_job.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view endings[] = {".CSV.GZ", ".CSV"};

/// How many bytes of a path are the ending of a file of bars; 0 for another file.
size_t ending_of(const std::string& path) {
  const std::string upper = to_upper(path);
  for (const std::string_view ending : endings) {
    if (upper.ends_with(ending)) return ending.size();
  }
  return 0;
}

std::vector<std::string> files_in(const std::string& folder) {
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_of(folder))) {
    const std::string path = text_of(entry.path());
    if (ending_of(path) > 0 && entry.is_regular_file()) files.push_back(path);
  }
  if (files.empty()) throw HostError(folder + ": no file in this folder ends in .csv");
  std::ranges::sort(files);
  return files;
}

}  // namespace

std::string security_of(const std::string& path) {
  const size_t ending = ending_of(path);
  if (ending == 0) return text_of(path_of(path).stem());
  return text_of(path_of(path.substr(0, path.size() - ending)).filename());
}

std::vector<std::string> bar_files(const std::vector<std::string>& paths) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (is_folder(path)) {
      std::ranges::copy(files_in(path), std::back_inserter(files));
    } else if (std::error_code unread; fs::exists(path_of(path), unread)) {
      files.push_back(path);
    } else {
      throw HostError(path + ": no such file or folder");
    }
  }
  return files;
}

}  // namespace quor_host
