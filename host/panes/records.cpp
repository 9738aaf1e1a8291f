#include "records.h"

#include <simdjson.h>

#include <string_view>
#include <utility>

#include "../errors.h"

namespace quor_host {

std::string Record::text(const std::string& key) const {
  const auto entry = texts.find(key);
  return entry == texts.end() ? "" : entry->second;
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

std::optional<uint32_t> mark_of(const Record& record, const char* key) {
  const auto own = record.column(key);
  return own ? own : record.column("Field1VisibleId");
}

bool shows_always(const Record& record) {
  const std::string style = record.text("Style");
  return style == "ColorPolyline" || style == "DoubleRect" || record.flag("IsVolStick");
}

bool has_no_value(const Record& record) {
  return record.is("NoticeShape") || record.is("FuturesTradeShape") || record.is("SoundShape");
}

std::string title_of(const Record& record) {
  std::string title = record.text("Field1Text");
  if (!record.flag("TitleVisible") || title.starts_with("EMPTY_LINE_NAME_RESERVED")) return "";
  return title;
}

std::vector<Record> drawing_records(const quor::engine::Script& script) {
  std::vector<Record> records;
  for (quor::engine::Record& record : script.records()) {
    Record& taken = records.emplace_back();
    for (auto& [key, text] : record.texts) taken.texts.emplace(key, std::move(text));
    for (auto& [key, number] : record.numbers) taken.numbers.emplace(key, number);
  }
  return records;
}

std::vector<Record> parse_records(const std::string& json) {
  simdjson::dom::parser parser;
  simdjson::dom::array list;
  if (const auto error = parser.parse(json).get(list); error != simdjson::SUCCESS) {
    throw HostError(std::string("the drawing records can't be read, texts and numbers stand in ") +
                    "them as the script gives them: " + simdjson::error_message(error));
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
