// All that the studio answers: its page, files, and scans over them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "folder.h"
#include "page.h"
#include "searches.h"
#include "web.h"

namespace quor_host {

/// Where a studio finds what it serves.
struct StudioFiles {
  std::filesystem::path page;  ///< the folder of the page's built files
  std::string bars;            ///< a file or a folder; empty for the bars that the page brings
  std::string script;          ///< a script to begin with; empty for none
};

/// Each member may be called from any thread.
class StudioService {
 public:
  /// Throws HostError for files that aren't there.
  explicit StudioService(const StudioFiles& files);

  Answer answer(const Request& request);

 private:
  Answer answer_api(const std::vector<std::string>& pieces, const Request& request);
  Answer answer_script(const std::string& name, const Request& request);
  Answer answer_scan(const std::vector<std::string>& pieces, const Request& request);
  Answer start() const;
  Json files_json() const;

  Page page_;
  std::optional<Securities> securities_;
  std::optional<ScriptFolder> scripts_;
  Json script_;  ///< the one to begin with
  Searches searches_;
};

}  // namespace quor_host
