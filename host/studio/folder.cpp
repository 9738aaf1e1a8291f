#include "folder.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "../errors.h"
#include "../input/encoding.h"
#include "../scan/scan_job.h"
#include "gate.h"
#include "refusal.h"
#include "task.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

constexpr size_t longest_name = 100;

std::string name_of(const fs::path& path) {
  const std::u8string text = path.filename().u8string();
  return {text.begin(), text.end()};
}

bool is_plain_name(const std::string& name) {
  const auto parts_path = [](char c) {
    return c == '/' || c == '\\' || c == ':' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
  };
  return name.size() <= longest_name && !name.starts_with('.') &&
         std::ranges::none_of(name, parts_path);
}

bool is_script_name(const std::string& name) {
  return is_plain_name(name) && name.ends_with(script_ending) &&
         name.size() > std::string_view(script_ending).size();
}

/// A file itself, not a link to one that may lie elsewhere.
bool is_plain_file(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(path, error));
}

bool leads_out_of(const fs::path& folder, const fs::path& path) {
  std::error_code error;
  const fs::path target = fs::canonical(path, error);
  return error || target.parent_path() != folder;
}

std::string stamp_of(const fs::path& path) {
  std::error_code error;
  const auto time = fs::last_write_time(path, error).time_since_epoch().count();
  return std::to_string(time) + '-' + std::to_string(fs::file_size(path, error));
}

void write_file(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw Refusal(500, "the script can't be written into the folder");
}

}  // namespace

Securities::Securities(const std::string& path) : path_(path) { bar_files({path}); }

std::vector<std::string> Securities::paths() const {
  std::vector<std::string> paths = bar_files({path_});
  if (fs::is_directory(path_)) {
    std::erase_if(paths, [folder = fs::canonical(path_)](const std::string& path) {
      return leads_out_of(folder, path);
    });
  }
  return paths;
}

std::vector<File> Securities::files() const {
  std::vector<File> files;
  for (const std::string& path : paths()) files.push_back({security_of(path), stamp_of(path)});
  return files;
}

std::string Securities::path_of(const std::string& name) const {
  const std::vector<std::string> files = paths();
  const auto file = std::ranges::find(files, name, security_of);
  if (file == files.end()) throw Refusal(404, "there is no security of this name");
  return *file;
}

std::string ScriptFolder::name() const { return name_of(fs::canonical(folder_)); }

std::vector<File> ScriptFolder::files() const {
  std::vector<File> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
    const std::string name = name_of(entry.path());
    if (is_script_name(name) && is_plain_file(entry.path())) {
      files.push_back({name, stamp_of(entry.path())});
    }
  }
  std::ranges::sort(files, {}, &File::name);
  return files;
}

fs::path ScriptFolder::path_of(const std::string& name) const {
  if (!is_script_name(name)) {
    throw Refusal(400, std::string("a script is saved under a plain name that ends in ") +
                           script_ending + ", without folders");
  }
  return folder_ / std::u8string(name.begin(), name.end());
}

std::string ScriptFolder::read(const std::string& name) const {
  const fs::path path = path_of(name);
  if (!is_plain_file(path)) throw Refusal(404, "there is no script of this name");
  if (fs::file_size(path) > longest_script) throw Refusal(413, "the script is too long");
  return read_text(path.string());
}

std::optional<std::string> ScriptFolder::save(const std::string& name, const std::string& text,
                                              const std::optional<std::string>& before) const {
  const fs::path path = path_of(name);
  if (fs::exists(fs::symlink_status(path))) {
    if (!is_plain_file(path)) throw Refusal(409, "what has this name is no script");
    std::string there = read(name);
    if (there != before) return there;
  }
  const fs::path draft = folder_ / ("." + random_text() + ".draft");
  try {
    write_file(draft, text);
    fs::rename(draft, path);
  } catch (...) {
    std::error_code error;
    fs::remove(draft, error);
    throw;
  }
  return std::nullopt;
}

}  // namespace quor_host
