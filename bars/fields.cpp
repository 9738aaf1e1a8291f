#include "fields.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "text.h"

namespace quor_bars {
namespace {

constexpr uint32_t field_open_interest = quor::built_in_field_id("OPI");
constexpr uint32_t field_settle = quor::built_in_field_id("SETTLE");
constexpr uint32_t field_average_price = quor::built_in_field_id("AVPRICE");

constexpr FieldWord words[] = {
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
    {"VOLUME", field_volume},
    {"VOL", field_volume},
    {"V", field_volume},
    {"AMOUNT", field_amount},
    {"TURNOVER", field_amount},
    {"OPENINTEREST", field_open_interest},
    {"OPI", field_open_interest},
    {"OI", field_open_interest},
    {"SETTLE", field_settle},
    {"SETTLEMENT", field_settle},
    {"AVPRICE", field_average_price},
    {"AVERAGEPRICE", field_average_price},
    {"VWAP", field_average_price},
};

}  // namespace

std::span<const FieldWord> field_words() { return words; }

std::string plain_name(std::string_view header) {
  std::string name = to_upper(header);
  std::erase_if(name, [](char c) { return c == ' ' || c == '_'; });
  return name;
}

std::optional<uint32_t> field_id(std::string_view header) {
  const std::string word = plain_name(header);
  const auto* const row = std::ranges::find(words, word, &FieldWord::word);
  if (row != std::end(words)) return row->id;
  uint32_t id = 0;
  const char* const end = header.data() + header.size();
  const auto [stop, error] = std::from_chars(header.data(), end, id);
  if (error != std::errc() || stop != end) return std::nullopt;
  return id;
}

std::string field_text(uint32_t id) {
  const std::string number = std::to_string(id);
  const auto* const row = std::ranges::find(words, id, &FieldWord::id);
  return row == std::end(words) ? number : std::string(row->word) + " (" + number + ")";
}

}  // namespace quor_bars
