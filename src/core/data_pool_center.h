// The blackboard of one instance: what the host has set, the table, and the compiled script.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "callbacks/host_callbacks.h"
#include "core/compiled_script.h"
#include "core/data_table.h"
#include "tables/period_table.h"

namespace quor {

class DataPoolCenter {
  static constexpr int32_t utc_8 = 28800;

 public:
  DataPoolCenter() : missing_argument_(*this) { missing_argument_.kind = VariableKind::missing; }
  DataPoolCenter(const DataPoolCenter&) = delete;
  DataPoolCenter& operator=(const DataPoolCenter&) = delete;

  DataTable& table() { return table_; }
  const DataTable& table() const { return table_; }

  /// Makes a variable of the script; the caller lists it.
  Variable& make_variable();
  /// Declares a data field that scripts read by a word, for as long as the instance lives.
  Variable& declare_field(std::string_view word, uint32_t column_id);
  /// Makes the variable of a reference to another security, period or quote, which belongs to the
  /// script.
  Variable& make_reference(std::string_view word, uint32_t column_id);
  /// The variable that stands for an argument a broken-off compile has left out.
  Variable& missing_argument() { return missing_argument_; }

  /// Sets what the instance is about. A new, non-empty security makes the market constants stale.
  void set_extra_info(int32_t period_code, std::string_view new_security,
                      std::string_view new_market, std::string_view time_zone);

  bool is_long_period() const { return quor::is_long_period(period.period_class); }
  bool is_stock_market() const { return quor::is_stock_market(market); }
  /// The moment of a row, on an intraday period with the date of its trading day.
  BarTime bar_time(int32_t row) const {
    return table_.bar_time(row, security, market, is_long_period(), uuid);
  }
  /// Asks the host whether the security trades now; false without a callback.
  bool in_trading_time() const;

  /// Asks the host for the three market constants if they are stale. They stay stale while the host
  /// has no `min_price`, so that the next bar asks again.
  void refresh_extra_data();

  /// Drops the script, the columns and the rows. Security, period, callbacks, market constants and
  /// declared fields stay.
  void reset();

  CompiledScript script;

  std::string security;
  std::string market;
  Period period;
  /// Seconds east of UTC. The calendar has the offset of its market, so that nothing reads this one
  /// yet.
  int32_t timezone_offset = utc_8;

  bool fire_signals = false;

  double min_price = null_value;
  double unit = null_value;
  double share_count_per_unit = null_value;
  bool extra_data_stale = false;

  uint64_t uuid = UINT64_MAX;
  TradeTimeCallback trade_time_callback = nullptr;
  ExtraDataCallback extra_data_callback = nullptr;
  EventListener* listener = nullptr;  ///< null where the process's handlers hear the events

 private:
  struct DeclaredField {
    std::string word;
    uint32_t column_id;
  };

  Variable& make_reserved_variable(std::string_view word, uint32_t column_id);

  DataTable table_;
  std::vector<DeclaredField> declared_fields_;
  Variable missing_argument_;
};

}  // namespace quor
