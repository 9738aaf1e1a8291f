#include <algorithm>
#include <filesystem>
#include <system_error>

#include "errors.h"
#include "paths.h"
#include "scan_job.h"
#include "text.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> files_in(const std::string& folder) {
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(path_of(folder))) {
    if (to_upper(text_of(entry.path().extension())) == ".CSV" && entry.is_regular_file()) {
      files.push_back(text_of(entry.path()));
    }
  }
  if (files.empty()) throw HostError(folder + ": no file in this folder ends in .csv");
  std::ranges::sort(files);
  return files;
}

}  // namespace

std::string security_of(const std::string& path) { return text_of(path_of(path).stem()); }

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
