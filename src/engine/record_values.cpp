#include "engine/record_values.h"

namespace quor::engine {
namespace {

class ValueKeys final : public RecordKeys {
 public:
  RecordKeys& integer(std::string_view key, int32_t value) override { return number(key, value); }
  RecordKeys& text(std::string_view key, std::string_view value) override {
    record.texts.emplace_back(key, value);
    return *this;
  }
  RecordKeys& number(std::string_view key, double value) override {
    record.numbers.emplace_back(key, value);
    return *this;
  }

  Record record;
};

}  // namespace

Record values_of(const BaseShape& record) {
  ValueKeys keys;
  record.tell(keys);
  return std::move(keys.record);
}

}  // namespace quor::engine
