// What the library answers to a compile and to a run, taken apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor_host {

/// A failure of a script; code 0 is none.
struct Failure {
  int64_t code = 0;
  std::string message;
  std::optional<size_t> statement;  ///< counted from 0
};

/// Data of another security or period, or a quote, that a script reads.
struct Reference {
  std::string source;
  uint32_t field = 0;
  uint32_t column = 0;
};

struct Report {
  Failure failure;
  int64_t look_back = 0;
  std::vector<uint32_t> fields;
  std::vector<Reference> securities;
  std::vector<Reference> periods;
  std::vector<Reference> quotes;
  bool needs_market_constants = false;
  bool needs_calendar = false;
  bool has_notices = false;
};

Report parse_report(const std::string& json);

/// The answer of a calculation.
Failure parse_answer(const std::string& json);

/// The strings of a JSON array.
std::vector<std::string> parse_texts(const std::string& json);

/// The texts under `key` of the objects in a JSON array; nothing if the text is no JSON, which
/// drawing records are not when a title holds a quote.
std::vector<std::string> parse_texts_under(const std::string& json, std::string_view key);

/// Whether the text can stand inside another JSON text.
bool is_json(const std::string& text);

}  // namespace quor_host
