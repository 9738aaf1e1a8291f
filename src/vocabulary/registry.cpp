#include "vocabulary/registry.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>

#include "vocabulary/families.h"

namespace quor {
namespace {

/// By words of the families' tables, which last as long as the program.
using Registry = std::unordered_map<std::string_view, std::unique_ptr<BaseFunc>>;

std::once_flag built;
Registry registry;

void add_family(std::span<const WordRow> rows) {
  for (const WordRow& row : rows) registry.emplace(row.word, row.make(row));
}

}  // namespace

void build_function_registry() {
  std::call_once(built, [] {
    for (const auto& family : function_families()) add_family(family());
  });
}

const BaseFunc* find_function(std::string_view word) {
  const auto found = registry.find(word);
  return found == registry.end() ? nullptr : found->second.get();
}

}  // namespace quor
