#include "interface/script_parser.h"

#include "compiler/declarations.h"
#include "compiler/pipeline.h"
#include "compiler/report.h"
#include "core/results.h"
#include "core/status.h"
#include "tables/field_table.h"
#include "text/json.h"
#include "vocabulary/registry.h"

namespace quor {
namespace {

constexpr int32_t one_day = 0x4000;

std::string answer(Status status, std::string_view error) {
  // Once a tick, and so not put together anew.
  if (!failed(status) && error.empty()) return std::string(sound_answer);
  const ErrorParts parts = split_error(error);
  std::string text = "{";
  append_json_integer(text, "ErrCode", error_code(status), true);
  append_json_text(text, "ExtraMsg", parts.message, true);
  append_json_text(text, "ErrLine", parts.line, false);
  text += '}';
  return text;
}

}  // namespace

ScriptParser::ScriptParser() : calculator_(pool_), context_(pool_, calculator_) {
  pool_.set_extra_info(one_day, {}, {}, {});
  build_function_registry();
  for (const Field& field : reserved_fields()) {
    const auto column_id = static_cast<uint32_t>(field.id);
    add_reserved_variable(context_, field.word, column_id, column_id == time_column_id);
  }
  valid = true;
}

std::string ScriptParser::pre_parse(std::string_view script, std::string_view parameters,
                                    std::string_view lines) {
  return quor::pre_parse(context_, std::string(script), parameters, lines);
}

std::string ScriptParser::exec(int32_t first_row, bool fire_signals) {
  pool_.fire_signals = fire_signals;
  std::string error;
  Status status = Status::exception;
  try {
    status = calculator_.calculate(first_row, false, error);
  } catch (const std::exception& fault) {
    error = fault.what();
  } catch (...) {
    error.clear();
  }
  return answer(status, error);
}

void ScriptParser::add_row(std::string_view json) { intake_.add_row(pool_, json); }

void ScriptParser::add_columns(std::span<const int64_t> keys, std::span<const FieldColumn> fields,
                               bool reads_keys) {
  intake_.add_columns(pool_, keys, fields, reads_keys);
}

void ScriptParser::create_reserved_field(std::string_view word, uint32_t column_id) {
  declare_reserved_field(word, static_cast<int32_t>(column_id));
  add_reserved_variable(context_, word, column_id, true);
}

void ScriptParser::set_uuid(uint64_t new_uuid) {
  uuid = new_uuid;
  pool_.uuid = new_uuid;
}

double ScriptParser::cell_value(int32_t row, uint32_t column_id) {
  DataTable& table = pool_.table();
  table.write_blanks();
  return table.cell(row, table.column_index_of(column_id));
}

double ScriptParser::field_value(int32_t field_id, int32_t row) {
  if (field_id >= 0) return cell_value(row, static_cast<uint32_t>(field_id));
  for (const auto& [text, argument] : pool_.script.argument_variables) {
    if (static_cast<int32_t>(argument->column_id) != field_id) continue;
    double value = null_value;
    const Status status = calculator_.evaluate_aside(*argument, row, value);
    return !failed(status) ? value : null_value;
  }
  return null_value;
}

std::string ScriptParser::data_text(uint32_t column_id, uint32_t last_row, int32_t count) {
  pool_.table().write_blanks();
  return window_text(reading_window(pool_.table(), column_id, last_row, count));
}

std::string ScriptParser::invoked_functions() const { return invoked_functions_text(pool_); }

std::string ScriptParser::variable_fields() const {
  return variable_fields_text(pool_, context_.declared_names);
}

std::string ScriptParser::shapes() const { return pool_.script.shapes.to_json(); }

}  // namespace quor
