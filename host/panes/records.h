// The drawing records of a script, as the library lists them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace quor_host {

struct Record {
  std::map<std::string, std::string> texts;
  std::map<std::string, double> numbers;

  std::string text(const std::string& key) const;
  double number(const std::string& key, double absent = 0.0) const;
  bool flag(const std::string& key) const { return number(key) != 0.0; }
  /// The column that a key names; none for -1.
  std::optional<uint32_t> column(const std::string& key) const;
  bool is(const char* shape_name) const { return text("ShapeName") == shape_name; }
};

/// The keys of values of a record that count for the range of its axis, each with the key of the
/// marks of the bars where they show.
struct ValuePlace {
  const char* value;
  const char* mark;
};
inline constexpr ValuePlace value_places[] = {
    {"Field1Id", "Field1VisibleId"}, {"Field2Id", "Field2VisibleId"},
    {"Field3Id", "Field3VisibleId"}, {"HighField", "Field1VisibleId"},
    {"LowField", "Field1VisibleId"},
};

/// The column of marks under the key, else the first of the record.
std::optional<uint32_t> mark_of(const Record& record, const char* key);

/// Some records show at every bar, and their marks choose how.
bool shows_always(const Record& record);

/// The only column of signals says when, not at which value.
bool has_no_value(const Record& record);

/// The title to show in a legend; empty where the record isn't meant to have one.
std::string title_of(const Record& record);

/// The records of a compiled script.
std::vector<Record> drawing_records(const quor::engine::Script& script);

/// Throws HostError if the records are no JSON: a quote or bytes that are no UTF-8 in a text, or an
/// infinite number, go into them unchanged.
std::vector<Record> parse_records(const std::string& json);

}  // namespace quor_host
