#include "page.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "../errors.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

struct FileType {
  std::string_view ending;
  std::string_view type;
};
constexpr FileType file_types[] = {
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".json", "application/json"},
    {".map", "application/json"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".ico", "image/x-icon"},
    {".woff2", "font/woff2"},
    {".txt", "text/plain; charset=utf-8"},
};

std::string read_bytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(file), {});
  if (!file) throw HostError(path.string() + " can't be read");
  return bytes;
}

}  // namespace

Page::Page(const fs::path& folder) {
  if (!fs::is_regular_file(folder / "index.html")) {
    throw HostError("the page of the studio isn't there: " + folder.lexically_normal().string() +
                    " has no index.html; tools/build-web.sh builds it");
  }
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    const std::string ending = entry.path().extension().string();
    const auto* const row = std::ranges::find(file_types, ending, &FileType::ending);
    if (row == std::end(file_types) || !entry.is_regular_file()) continue;
    const std::string path = '/' + entry.path().lexically_relative(folder).generic_string();
    files_[path] = {std::string(row->type), read_bytes(entry.path())};
  }
  files_["/"] = files_.at("/index.html");
}

Answer Page::answer(const std::string& path) const {
  const auto file = files_.find(path);
  if (file == files_.end()) throw Refusal(404, "there is no such page");
  return {200, file->second.type, file->second.bytes};
}

}  // namespace quor_host
