// From the host's row JSON to rows of the table.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "core/data_pool_center.h"

namespace quor {

/// The values of one field, a value per row.
struct FieldColumn {
  uint32_t id;
  const double* values;
  bool may_be_lent = false;  ///< stays as it is, for the table to read in place
};

/// Takes an array of objects, one per bar in any order: the key "1" holds the row key, every other
/// key is a column id in decimal. Only ids that the script requires are read; a missing value, one
/// that is no number and the host's two marks for no value become null. Rows in front of a bad
/// element are kept. Reports through the log only.
class RowIntake {
 public:
  RowIntake();
  ~RowIntake();

  /// The same from arrays: a key per row and, for each field, a value per row. Column 1 has the
  /// keys only if anybody reads it. Throws on exhausted memory, and then has changed nothing.
  void add_columns(DataPoolCenter& pool, std::span<const int64_t> keys,
                   std::span<const FieldColumn> fields, bool reads_keys = true);

  void add_row(DataPoolCenter& pool, std::string_view json);

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;  ///< keeps its buffers from text to text
};

}  // namespace quor
