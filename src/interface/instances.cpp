#include "interface/instances.h"

#include <map>

namespace quor {
namespace {

std::mutex registry_lock;  ///< guards the two below, for one look-up at a time
std::map<int64_t, std::shared_ptr<Instance>> registry;
int64_t last_handle = 0;

}  // namespace

int64_t add_instance() {
  auto instance = std::make_shared<Instance>();
  const std::lock_guard guard(registry_lock);
  registry.emplace(last_handle + 1, std::move(instance));
  return ++last_handle;
}

std::shared_ptr<Instance> find_instance(int64_t handle) {
  if (handle == 0) return nullptr;
  const std::lock_guard guard(registry_lock);
  const auto entry = registry.find(handle);
  return entry == registry.end() ? nullptr : entry->second;
}

void remove_instance(int64_t handle) {
  std::shared_ptr<Instance> instance = find_instance(handle);
  if (instance == nullptr) return;
  const Entrance entrance(*instance);
  if (!entrance) return;
  instance->parser.valid = false;
  const std::lock_guard guard(registry_lock);
  registry.erase(handle);
}

Entrance::Entrance(Instance& instance)
    : instance_(instance), guard_(instance.lock, std::defer_lock) {
  if (instance.worker.load() == std::this_thread::get_id()) return;
  guard_.lock();
  entered_ = instance.parser.valid;
  if (entered_) instance.worker = std::this_thread::get_id();
}

Entrance::~Entrance() {
  if (entered_) instance_.worker = std::thread::id();
}

}  // namespace quor
