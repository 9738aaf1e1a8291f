// The drawing records of a script, as the library lists them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

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

/// Throws HostError if the records are no JSON: a quote or bytes that are no UTF-8 in a text, or an
/// infinite number, go into them unchanged.
std::vector<Record> parse_records(const std::string& json);

}  // namespace quor_host
