// From the host's row JSON to rows of the table.
#pragma once

#include <memory>
#include <string_view>

#include "core/data_pool_center.h"

namespace quor {

/// Takes an array of objects, one per bar in any order: the key "1" holds the row key, every other
/// key is a column id in decimal. Only ids that the script requires are read; a missing value, one
/// that is no number and the host's two marks for no value become null. Rows in front of a bad
/// element are kept. Reports through the log only.
class RowIntake {
 public:
  RowIntake();
  ~RowIntake();

  void add_row(DataPoolCenter& pool, std::string_view json);

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;  ///< keeps its buffers from text to text
};

}  // namespace quor
