// The drawing records of one instance. This header depends on the base record only.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/base_shape.h"

namespace quor {

class ShapeManagement {
 public:
  void add(std::shared_ptr<BaseShape> record);
  /// The record's ShapeName and the count of that name so far, at least 1.
  std::string title_of(const BaseShape& record) const;
  /// All records in order of creation.
  const std::vector<std::shared_ptr<BaseShape>>& records() const { return records_; }
  /// The same as a JSON array, "[]" for none.
  std::string to_json() const;

 private:
  std::vector<std::shared_ptr<BaseShape>> records_;
  std::map<std::string, int32_t> shape_serial_;
};

}  // namespace quor
