// The files that the studio reads and writes: bars and scripts, each by the name of its file alone.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quor_host {

/// The ending of scripts.
inline constexpr auto script_ending = ".quor";

struct File {
  std::string name;
  std::string stamp;  ///< another one when the file has changed
};

/// Securities whose bars lie in one folder or in a single file.
class Securities {
 public:
  /// A file of bars, or a folder with such files. Throws HostError for neither.
  explicit Securities(const std::string& path);

  /// By their names, those of their files without the ending, as the folder has them at this
  /// moment.
  std::vector<File> files() const;
  /// The file of a security. Throws Refusal for a name that isn't among them.
  std::string path_of(const std::string& name) const;
  /// Links that lead out of the folder are left out.
  std::vector<std::string> paths() const;

 private:
  std::string path_;
};

/// A folder of scripts.
class ScriptFolder {
 public:
  explicit ScriptFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

  std::string name() const;
  std::vector<File> files() const;
  /// Each throws Refusal for a name with anything but a file of this folder in it, that isn't that
  /// of a script.
  std::string read(const std::string& name) const;
  /// Writes the whole script or nothing. A script of the same name is replaced only if it has the
  /// text `before`, else its text is given and nothing written. Anything but a script stays.
  std::optional<std::string> save(const std::string& name, const std::string& text,
                                  const std::optional<std::string>& before) const;

 private:
  std::filesystem::path path_of(const std::string& name) const;

  std::filesystem::path folder_;
};

}  // namespace quor_host
