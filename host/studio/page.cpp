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
    {".wasm", "application/wasm"},
    {".csv", "text/csv; charset=utf-8"},
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

/// What the build of the page has packed beside a file.
std::string packed_bytes(fs::path path) {
  path += ".gz";
  return fs::is_regular_file(path) ? read_bytes(path) : std::string();
}

/// A checksum.
std::string tag_of(std::string_view bytes) {
  uint64_t sum = 0xCBF29CE484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return std::to_string(sum);
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
    std::string bytes = read_bytes(entry.path());
    std::string tag = tag_of(bytes);
    files_[path] = {std::string(row->type), std::move(bytes), packed_bytes(entry.path()),
                    std::move(tag)};
  }
  files_["/"] = files_.at("/index.html");
}

Answer Page::answer(const Request& request) const {
  const auto found = files_.find(request.path);
  if (found == files_.end()) throw Refusal(404, "there is no such page");
  const auto& [type, bytes, packed, checksum] = found->second;
  const bool is_packed = request.takes_gzip && !packed.empty();
  const std::string tag = '"' + checksum + (is_packed ? "-gzip" : "") + '"';
  const bool lasts = is_version(request.text("v"));
  Answer answer{200, type, {}, {{"ETag", tag}}};
  answer.headers.emplace_back("Cache-Control",
                              lasts ? "private, max-age=31536000, immutable" : "no-cache");
  if (!packed.empty()) answer.headers.emplace_back("Vary", "Accept-Encoding");
  if (request.known_tag == tag) {
    answer.status = 304;
    return answer;
  }
  if (is_packed) answer.headers.emplace_back("Content-Encoding", "gzip");
  answer.body = is_packed ? packed : bytes;
  return answer;
}

bool Page::is_version(const std::string& text) const {
  if (text.empty()) return false;
  return files_.at("/").bytes.find("?v=" + text + '"') != std::string::npos;
}

}  // namespace quor_host
