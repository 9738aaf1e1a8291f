// The blackboard of one instance: security and period, the table, the compiled script, and the
// flags by which a trial run tells the host what the script needs.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/data_table.h"
#include "core/model.h"
#include "core/name_index.h"
#include "interface/host_callbacks.h"
#include "tables/period_table.h"

namespace quor {

class DataPoolCenter {
 public:
  DataPoolCenter() : missing_argument_(*this) { missing_argument_.kind = VariableKind::missing; }
  DataPoolCenter(const DataPoolCenter&) = delete;
  DataPoolCenter& operator=(const DataPoolCenter&) = delete;

  DataTable& table() { return table_; }
  const DataTable& table() const { return table_; }

  /// Makes a variable that lives until the next reset; the caller lists it.
  Variable& make_variable();
  /// Appends a variable with its name and text to `variable_list`.
  void list_variable(Variable& variable);
  /// Makes a reserved variable and appends it to `reserved_list`; it survives resets.
  Variable& make_reserved_variable(std::string_view word, uint32_t column_id);
  /// The next hidden name: "~" and the count of all listed variables.
  std::string next_hidden_name() const;
  size_t hidden_name_count() const { return reserved_list.size() + variable_list.size(); }
  /// The first variable whose hidden name or text is the word and that `take` takes, the reserved
  /// ones before the compiled ones, each in the order of their list; null if there is none.
  template <typename Take>
  Variable* find_variable(std::string_view word, const Take& take) const {
    Variable* reserved = reserved_index_.find(word, take);
    return reserved != nullptr ? reserved : compiled_index_.find(word, take);
  }
  /// The first variable of the text that has a column or an argument id.
  Variable* find_with_column(std::string_view text) const;
  /// To be told of every listed variable that gets a column or an argument id.
  void note_column(Variable& variable);
  /// The first variable of the text that stands for a cell of the table.
  Variable* find_field(std::string_view text) const;
  Variable* find_reserved(std::string_view text) const;
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

  /// Raises the look-back that the report tells; a negative count changes nothing.
  void raise_period(int32_t count) { max_period_count = std::max(max_period_count, count); }

  /// "EMPTY_LINE_NAME_RESERVED" and the next number, counted from 1 in each compile.
  std::string auto_line_name();

  /// Drops the compiled script, the settings, the columns and the rows. Security, period, callbacks
  /// and market constants stay.
  void reset();

  std::string security;
  std::string market;
  Period period;
  int32_t timezone_offset = 28800;  ///< seconds east of UTC

  std::vector<Variable*> statement_list;  ///< what the driver runs, in order
  std::vector<Variable*> variable_list;   ///< every compiled variable in order of creation
  std::vector<Variable*> reserved_list;   ///< fields and references; first in the hidden names

  std::set<int32_t> extra_field_set;                  ///< ids of the fields that the script reads
  std::map<int32_t, std::string> cross_security_map;  ///< column id to the key of a reference
  std::map<int32_t, std::string> cross_period_map;
  std::map<int32_t, std::string> realtime_map;
  std::unordered_map<std::string, LineModel> line_models;
  std::set<std::string, std::less<>> invoked_functions;

  int32_t max_period_count = 0;
  uint8_t auto_color_counter = 0;
  int32_t empty_line_counter = 0;
  bool needs_extra_data = false;
  bool needs_trade_day = false;
  bool contains_notice = false;
  bool looks_ahead = false;
  bool sets_variables = false;  ///< the script changes its constants while it runs
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
  void index_reserved();

  DataTable table_;
  std::vector<std::unique_ptr<Variable>> compiled_;
  std::vector<std::unique_ptr<Variable>> reserved_;
  NameIndex reserved_index_;
  NameIndex compiled_index_;
  NameIndex field_index_;   ///< of the compiled variables that are fields
  NameIndex column_index_;  ///< of those with a column or an argument id
  Variable missing_argument_;
};

}  // namespace quor
