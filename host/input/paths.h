// Paths as texts in UTF-8, with '/' between their parts on every system.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quor_host {

std::filesystem::path path_of(const std::string& text);
std::string text_of(const std::filesystem::path& path);

bool is_folder(const std::string& path);

/// The files, and in place of a folder the scripts (*.quor) in it and in its folders, by their
/// names. Throws HostError for a folder that holds none.
std::vector<std::string> scripts_under(const std::vector<std::string>& paths);

}  // namespace quor_host
