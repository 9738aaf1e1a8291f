// Scripts over all securities, on the threads of `quor scan`.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "../scan/scan_job.h"
#include "folder.h"
#include "json.h"

namespace quor_host {

/// The scans of the pages that are open. Each member may be called from any thread.
class Searches {
 public:
  /// Beyond these the oldest one ends.
  static constexpr size_t most = 8;

  /// Begins a scan and gives its id. Throws Refusal for a script or a condition that has an error
  /// or reads other securities.
  Json start(const Securities& securities, const Json& request);
  /// What came since a place. Throws Refusal for an id that isn't known, as the two below.
  Json progress(const std::string& id, size_t since);
  Json cancel(const std::string& id);
  void close(const std::string& id);

 private:
  struct Search {
    std::string id;
    std::unique_ptr<Scan> scan;
    bool is_cancelled = false;
  };
  std::list<Search>::iterator find(const std::string& id);

  std::mutex lock_;  ///< guards the list
  std::list<Search> searches_;
};

}  // namespace quor_host
