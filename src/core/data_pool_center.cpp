#include "core/data_pool_center.h"

#include <memory>

#include "platform/clock.h"

namespace quor {

Variable& DataPoolCenter::make_variable() { return script.take(std::make_unique<Variable>(*this)); }

Variable& DataPoolCenter::make_reserved_variable(std::string_view word, uint32_t column_id) {
  Variable& variable = make_variable();
  variable.kind = VariableKind::field;
  variable.reserved = true;
  variable.text = word;
  variable.column_id = column_id;
  variable.column_index = table_.column_index_of(column_id);
  script.list_reserved(variable);
  return variable;
}

Variable& DataPoolCenter::declare_field(std::string_view word, uint32_t column_id) {
  declared_fields_.push_back({std::string(word), column_id});
  return make_reserved_variable(word, column_id);
}

Variable& DataPoolCenter::make_reference(std::string_view word, uint32_t column_id) {
  Variable& variable = make_reserved_variable(word, column_id);
  variable.reference = true;
  return variable;
}

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

void DataPoolCenter::reset() {
  script = CompiledScript();
  table_.reset();
  timezone_offset = utc_8;
  // What needs memory comes last.
  for (const DeclaredField& field : declared_fields_) {
    make_reserved_variable(field.word, field.column_id);
  }
}

}  // namespace quor
