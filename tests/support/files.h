// Files as texts, by the calls of C: the runtime of C++ has none where there is no file system.
#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace quor_test {

inline std::string text_of(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) throw std::runtime_error("no file " + path);
  std::string text;
  char part[4096];
  for (size_t size = 0; (size = std::fread(part, 1, sizeof part, file.get())) > 0;) {
    text.append(part, size);
  }
  return text;
}

}  // namespace quor_test
