#include "tables/field_table.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <shared_mutex>

namespace quor {
namespace {

/// The words that hosts have declared. The strings live in a deque so that views of them stay valid
/// while it grows. The lock guards both; readers share it.
struct DeclaredFields {
  std::shared_mutex lock;
  std::deque<std::string> words;
  std::vector<Field> fields;
};

DeclaredFields& declared_fields() {
  static DeclaredFields declared;
  return declared;
}

template <typename Fields>
std::optional<int32_t> find_field(const Fields& fields, std::string_view word) {
  const auto row = std::ranges::find(fields, word, &Field::word);
  if (row == std::end(fields)) return std::nullopt;
  return row->id;
}

}  // namespace

std::optional<int32_t> reserved_field_id(std::string_view word) {
  if (const auto id = find_field(ReservedFieldTable, word)) return id;
  DeclaredFields& declared = declared_fields();
  const std::shared_lock guard(declared.lock);
  return find_field(declared.fields, word);
}

void declare_reserved_field(std::string_view word, int32_t id) {
  if (find_field(ReservedFieldTable, word)) return;
  DeclaredFields& declared = declared_fields();
  const std::unique_lock guard(declared.lock);
  if (find_field(declared.fields, word)) return;
  declared.fields.reserve(declared.fields.size() + 1);
  declared.fields.push_back({declared.words.emplace_back(word), id});
}

std::vector<Field> reserved_fields() {
  std::vector<Field> fields(std::begin(ReservedFieldTable), std::end(ReservedFieldTable));
  DeclaredFields& declared = declared_fields();
  const std::shared_lock guard(declared.lock);
  fields.insert(fields.end(), declared.fields.begin(), declared.fields.end());
  return fields;
}

std::optional<int32_t> realtime_field_id(std::string_view word) {
  return find_field(RealtimeFieldTable, word);
}

}  // namespace quor
