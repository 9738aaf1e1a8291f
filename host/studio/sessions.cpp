#include "sessions.h"

#include <utility>
#include <vector>

#include "gate.h"
#include "refusal.h"

namespace quor_host {
namespace {

using Clock = std::chrono::steady_clock;

/// What a closed page has begun ends with it.
void leave(Desk& desk) {
  const std::lock_guard guard(desk.scan_lock);
  if (desk.scan) desk.scan->stop();
}

}  // namespace

std::string Sessions::open() {
  sweep();
  const std::lock_guard guard(lock_);
  if (desks_.size() >= most) throw Refusal(503, "too many pages are open; close one of them");
  std::string id = random_text();
  desks_.emplace(id, std::make_shared<Desk>());
  return id;
}

std::shared_ptr<Desk> Sessions::find(const std::string& id) {
  const std::lock_guard guard(lock_);
  const auto desk = desks_.find(id);
  if (desk == desks_.end()) throw Refusal(404, "there is no such session");
  desk->second->used = Clock::now();
  return desk->second;
}

void Sessions::close(const std::string& id) {
  std::shared_ptr<Desk> desk;  // let go of behind the lock, as a scan may have to end first
  {
    const std::lock_guard guard(lock_);
    const auto found = desks_.find(id);
    if (found == desks_.end()) return;
    desk = std::move(found->second);
    desks_.erase(found);
  }
  leave(*desk);
}

void Sessions::sweep() {
  std::vector<std::shared_ptr<Desk>> left;
  {
    const std::lock_guard guard(lock_);
    const Clock::time_point now = Clock::now();
    std::erase_if(desks_, [&](auto& entry) {
      const bool is_left = entry.second->waiting == 0 && now - entry.second->used.load() > idle_;
      if (is_left) left.push_back(std::move(entry.second));
      return is_left;
    });
  }
  for (const auto& desk : left) leave(*desk);
}

}  // namespace quor_host
