#include "fields.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "text.h"

namespace quor_host {
namespace {

struct FieldWord {
  std::string_view word;
  uint32_t id;
};

// The first word of an id is the one that is shown.
constexpr FieldWord field_words[] = {
    {"DATE", field_time},
    {"DATETIME", field_time},
    {"TIMESTAMP", field_time},
    {"CLOSE", field_close},
    {"C", field_close},
    {"OPEN", field_open},
    {"O", field_open},
    {"HIGH", field_high},
    {"H", field_high},
    {"LOW", field_low},
    {"L", field_low},
    {"VOL", field_volume},
    {"V", field_volume},
    {"VOLUME", field_volume},
    {"AMOUNT", 19},
    {"TURNOVER", 19},
    {"OPI", 65},
    {"OPENINTEREST", 65},
    {"SETTLE", 72},
    {"AVPRICE", 2656718},
};

}  // namespace

std::optional<uint32_t> field_id(std::string_view header) {
  const std::string word = to_upper(header);
  const auto* const row = std::ranges::find(field_words, word, &FieldWord::word);
  if (row != std::end(field_words)) return row->id;
  uint32_t id = 0;
  const char* const end = header.data() + header.size();
  const auto [stop, error] = std::from_chars(header.data(), end, id);
  if (error != std::errc() || stop != end) return std::nullopt;
  return id;
}

std::string field_text(uint32_t id) {
  const std::string number = std::to_string(id);
  const auto* const row = std::ranges::find(field_words, id, &FieldWord::id);
  return row == std::end(field_words) ? number : std::string(row->word) + " (" + number + ")";
}

}  // namespace quor_host
