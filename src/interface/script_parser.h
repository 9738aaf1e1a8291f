// One instance of the engine.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "compiler/compile_context.h"
#include "core/calculate_center.h"
#include "core/data_pool_center.h"
#include "core/row_intake.h"

namespace quor {

/// What a run answers with that has come to its end.
inline constexpr std::string_view sound_answer = R"({"ErrCode":0,"ExtraMsg":"","ErrLine":""})";

/// Everything behind one handle. All members run with the instance's lock held. Only `exec`,
/// `pre_parse` and `add_row` keep exceptions in; the others throw on exhausted memory.
class ScriptParser {
 public:
  ScriptParser();
  ScriptParser(const ScriptParser&) = delete;
  ScriptParser& operator=(const ScriptParser&) = delete;

  std::string pre_parse(std::string_view script, std::string_view parameters,
                        std::string_view lines);
  std::string exec(int32_t first_row, bool fire_signals);
  void add_row(std::string_view json);
  /// As `add_row`, but throws on exhausted memory.
  void add_columns(std::span<const int64_t> keys, std::span<const FieldColumn> fields,
                   bool reads_keys = true);

  void create_reserved_field(std::string_view word, uint32_t column_id);
  void set_uuid(uint64_t uuid);

  double cell_value(int32_t row, uint32_t column_id);
  double field_value(int32_t field_id, int32_t row);
  std::string data_text(uint32_t column_id, uint32_t last_row, int32_t count);
  std::string invoked_functions() const;
  std::string variable_fields() const;
  std::string shapes() const;

  DataPoolCenter& pool() { return pool_; }
  CalculateCenter& calculator() { return calculator_; }
  const ShapeManagement& drawings() const { return pool_.script.shapes; }

  uint64_t uuid = UINT64_MAX;
  bool valid = false;  ///< from the last step of construction until deletion begins

 private:
  DataPoolCenter pool_;
  CalculateCenter calculator_;
  CompileContext context_;
  RowIntake intake_;
};

}  // namespace quor
