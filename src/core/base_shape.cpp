#include "core/base_shape.h"

#include "text/json.h"

namespace quor {
namespace {

/// Writes each key with its comma.
class JsonKeys final : public RecordKeys {
 public:
  RecordKeys& integer(std::string_view key, int32_t value) override {
    append_json_integer(text_, key, value, true);
    return *this;
  }
  RecordKeys& text(std::string_view key, std::string_view value) override {
    append_json_text(text_, key, value, true);
    return *this;
  }
  RecordKeys& number(std::string_view key, double value) override {
    append_json_float(text_, key, value, true);
    return *this;
  }
  std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

}  // namespace

void BaseShape::tell(RecordKeys& keys) const {
  keys.integer("TitleVisible", TitleVisible)
      .integer("Digit", Digit)
      .text("ShapeName", ShapeName)
      .integer("Field1Id", Field1Id)
      .text("Field1Text", Field1Text)
      .integer("Field1VisibleId", Field1VisibleId)
      .integer("ZIndex", ZIndex);
}

std::string BaseShape::ToJsonText() const {
  JsonKeys keys;
  BaseShape::tell(keys);
  return keys.take();
}

std::string WholeShape::ToJsonText() const {
  JsonKeys keys;
  tell(keys);
  std::string text = "{" + keys.take();
  text.back() = '}';
  return text;
}

}  // namespace quor
