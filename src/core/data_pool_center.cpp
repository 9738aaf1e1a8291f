#include "core/data_pool_center.h"

#include "platform/clock.h"
#include "text/numbers.h"

namespace quor {
namespace {

std::string hidden_name(size_t index) {
  std::string name = "~";
  append_integer(name, static_cast<int64_t>(index));
  return name;
}

}  // namespace

Variable& DataPoolCenter::make_variable() {
  return *compiled_.emplace_back(std::make_unique<Variable>(*this));
}

Variable& DataPoolCenter::make_reserved_variable(std::string_view word, uint32_t column_id) {
  Variable& variable = *reserved_.emplace_back(std::make_unique<Variable>(*this));
  variable.kind = VariableKind::field;
  variable.reserved = true;
  variable.name = hidden_name(reserved_list.size());
  variable.text = word;
  variable.column_id = variable.declared_column_id = column_id;
  variable.set_elements({MathElement{}});
  reserved_index_.add(variable);
  reserved_list.push_back(&variable);
  return variable;
}

void DataPoolCenter::list_variable(Variable& variable) {
  compiled_index_.add(variable);
  if (variable.kind == VariableKind::field) field_index_.add(variable);
  variable.place = variable_list.size();
  variable_list.push_back(&variable);
  if (variable.column_id != no_column) note_column(variable);
}

void DataPoolCenter::note_column(Variable& variable) {
  if (variable.place != unlisted) column_index_.insert_by_place(variable);
}

Variable* DataPoolCenter::find_with_column(std::string_view text) const {
  const auto has_column = [text](const Variable& variable) {
    return variable.text == text && variable.column_id != no_column;
  };
  Variable* reserved = reserved_index_.find(text, has_column);
  return reserved != nullptr ? reserved : column_index_.find(text, has_column);
}

Variable* DataPoolCenter::find_field(std::string_view text) const {
  Variable* reserved = find_reserved(text);
  if (reserved != nullptr) return reserved;
  return field_index_.find(text, [text](const Variable& field) { return field.text == text; });
}

Variable* DataPoolCenter::find_reserved(std::string_view text) const {
  return reserved_index_.find(text, [text](const Variable& field) { return field.text == text; });
}

void DataPoolCenter::index_reserved() {
  reserved_index_.clear();
  for (Variable* variable : reserved_list) reserved_index_.add(*variable);
}

std::string DataPoolCenter::next_hidden_name() const { return hidden_name(hidden_name_count()); }

void DataPoolCenter::set_extra_info(int32_t period_code, std::string_view new_security,
                                    std::string_view new_market, std::string_view time_zone) {
  market = new_market;
  decode_period(period_code, period);
  if (!new_security.empty() && new_security != security) extra_data_stale = true;
  security = new_security;
  timezone_offset = parse_timezone(time_zone);
}

bool DataPoolCenter::in_trading_time() const {
  if (trade_time_callback == nullptr) return false;
  return trade_time_callback(unix_time(), market.c_str(), security.c_str()) != 0;
}

void DataPoolCenter::refresh_extra_data() {
  if (!extra_data_stale) return;
  const auto ask = [this](const char* key) {
    if (extra_data_callback == nullptr) return null_value;
    return extra_data_callback(key, market.c_str(), security.c_str());
  };
  min_price = ask("MINPRICE");
  unit = ask("UNIT");
  share_count_per_unit = ask("SHARECOUNTPERUNIT");
  extra_data_stale = is_null(min_price);
}

std::string DataPoolCenter::auto_line_name() {
  return "EMPTY_LINE_NAME_RESERVED" + std::to_string(++empty_line_counter);
}

void DataPoolCenter::reset() {
  compiled_index_.clear();
  field_index_.clear();
  column_index_.clear();
  statement_list.clear();
  variable_list.clear();
  compiled_.clear();
  // A reference belongs to the script that held it: another script may use its word anew.
  reserved_index_.clear();
  std::erase_if(reserved_list, [](const Variable* variable) { return variable->reference; });
  std::erase_if(reserved_, [](const auto& variable) { return variable->reference; });
  line_models.clear();
  extra_field_set.clear();
  cross_security_map.clear();
  cross_period_map.clear();
  realtime_map.clear();
  invoked_functions.clear();
  table_.reset();
  max_period_count = 0;
  auto_color_counter = 0;
  empty_line_counter = 0;
  needs_extra_data = false;
  needs_trade_day = false;
  contains_notice = false;
  looks_ahead = false;
  sets_variables = false;
  timezone_offset = 28800;
  // What needs memory comes last.
  for (size_t i = 0; i < reserved_list.size(); ++i) {
    Variable* variable = reserved_list[i];
    // A hidden name is a place in the lists; a field declared behind a reference has moved up.
    variable->name = "~" + std::to_string(i);
    // An id beyond the signed range is no data column, so that a word gives the field one.
    variable->column_id = variable->declared_column_id;
    variable->aux_column_ids.clear();
    variable->aux_column_indexes.clear();
    variable->set_elements({MathElement{}});
    variable->whole_series = false;
    variable->column_index = table_.column_index_of(variable->column_id);
  }
  index_reserved();
}

}  // namespace quor
