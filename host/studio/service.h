// All that the studio answers.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "folder.h"
#include "page.h"
#include "sessions.h"
#include "web.h"

namespace quor_host {

/// Where a studio finds what it serves.
struct StudioFiles {
  std::filesystem::path page;     ///< the folder of the page's built files
  std::filesystem::path samples;  ///< the folder of sample scripts and bars
  std::string bars;               ///< a file or a folder; empty for the sample bars
  std::string script;             ///< a script to begin with; empty for none
};

/// Each member may be called from any thread.
class StudioService {
 public:
  /// Throws HostError for files that aren't there.
  StudioService(const StudioFiles& files, std::chrono::seconds idle);

  Answer answer(const Request& request);
  /// How large a body may be.
  static size_t body_limit(const std::string& path);
  /// Lets go of sessions that were left alone.
  void sweep() { sessions_.sweep(); }

 private:
  Answer answer_api(const std::vector<std::string>& pieces, const Request& request);
  Answer answer_session(const std::vector<std::string>& pieces, const Request& request);
  Answer answer_script(const std::string& name, const Request& request);
  Answer start() const;

  StudioFiles files_;
  Page page_;
  Securities securities_;
  std::optional<ScriptFolder> scripts_;
  Json script_;  ///< the one to begin with
  Sessions sessions_;
};

}  // namespace quor_host
