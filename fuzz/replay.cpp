// Plays files, and all files of folders, through a target, for compilers without a fuzzer.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_host.h"

namespace {

std::vector<std::filesystem::path> files_of(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

bool play(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  const std::string input(std::istreambuf_iterator<char>(file), {});
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  size_t played = 0;
  for (int i = 1; i < count; ++i) {
    for (const auto& path : files_of(arguments[i])) {
      // Said first, so that the last line before a crash names the input.
      std::cout << path.string() << std::endl;
      if (!play(path)) {
        std::cerr << "can't read " << path << '\n';
        return 1;
      }
      ++played;
    }
  }
  std::cout << played << " inputs\n";
  return played > 0 ? 0 : 1;
}
