#include "core/shape_management.h"

namespace quor {

void ShapeManagement::add(std::shared_ptr<BaseShape> record) {
  ++shape_serial_[record->ShapeName];
  records_.push_back(std::move(record));
}

std::string ShapeManagement::title_of(const BaseShape& record) const {
  const auto serial = shape_serial_.find(record.ShapeName);
  const int32_t count = serial == shape_serial_.end() ? 1 : serial->second;
  return record.ShapeName + std::to_string(count);
}

std::string ShapeManagement::to_json() const {
  std::string text = "[";
  for (const auto& record : records_) {
    if (text.size() > 1) text += ',';
    text += record->ToJsonText();
  }
  text += ']';
  return text;
}

}  // namespace quor
