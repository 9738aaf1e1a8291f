#include "records.h"

#include <simdjson.h>

#include <string_view>

#include "../errors.h"

namespace quor_host {

const std::string& Record::text(const std::string& key) const {
  static const std::string none;
  const auto entry = texts.find(key);
  return entry == texts.end() ? none : entry->second;
}

double Record::number(const std::string& key, double absent) const {
  const auto entry = numbers.find(key);
  return entry == numbers.end() ? absent : entry->second;
}

std::optional<uint32_t> Record::column(const std::string& key) const {
  const double id = number(key, -1.0);
  if (id < 0.0) return std::nullopt;
  return static_cast<uint32_t>(id);
}

std::vector<Record> parse_records(const std::string& json) {
  simdjson::dom::parser parser;
  simdjson::dom::array list;
  if (parser.parse(json).get(list) != simdjson::SUCCESS) {
    throw HostError("the drawing records are no JSON; a quote stands in a title or text");
  }
  std::vector<Record> records;
  for (const simdjson::dom::object entry : list) {
    Record record;
    for (const auto field : entry) {
      std::string_view text;
      double number = 0.0;
      if (field.value.get(text) == simdjson::SUCCESS) {
        record.texts[std::string(field.key)] = text;
      } else if (field.value.get(number) == simdjson::SUCCESS) {
        record.numbers[std::string(field.key)] = number;
      }
    }
    records.push_back(std::move(record));
  }
  return records;
}

}  // namespace quor_host
