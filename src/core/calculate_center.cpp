// The driver: which statement is calculated at which row, in which order.
#include "core/calculate_center.h"

#include <algorithm>

#include "calendar/trade_day_help.h"
#include "core/status.h"
#include "platform/clock.h"

namespace quor {

Status CalculateCenter::calculate(int32_t first_row, bool scan, std::string& error) {
  start_row_ = first_row;
  if (pool_.script.statement_list.empty()) return Status::ok;
  refresh_column_indexes();
  return scan ? scan_statements(error) : run_statements(first_row, error);
}

/// Columns may have come since the compile; this is the only place that brings indexes up to date.
void CalculateCenter::refresh_column_indexes() {
  const DataTable& table = pool_.table();
  for (Variable* variable : pool_.script.variable_list) {
    // An argument id is negative and names no data column.
    if (static_cast<int32_t>(variable->column_id) >= 0) {
      variable->column_index = table.column_index_of(variable->column_id);
    }
    for (size_t i = 0; i < variable->aux_column_ids.size(); ++i) {
      variable->aux_column_indexes[i] = table.column_index_of(variable->aux_column_ids[i]);
    }
  }
}

Status CalculateCenter::scan_statements(std::string& error) {
  for (Variable* statement : pool_.script.statement_list) {
    if (statement->kind == VariableKind::number) continue;
    double result = 0.0;
    const Status status =
        evaluate_elements(statement->program, 0, true, statement->line, error, result);
    if (failed(status)) return status;
  }
  return Status::ok;
}

Status CalculateCenter::run_statements(int32_t first_row, std::string& error) {
  if (pool_.script.needs_trade_day) load_calendar();
  const int32_t rows = pool_.table().row_count();
  // A negative first row selects no rows.
  const int32_t first = first_row < 0 ? rows : first_row;
  const auto& statements = pool_.script.statement_list;
  plan_.make(statements, pool_.table());
  const bool whole_series = std::ranges::any_of(
      statements, [](const Variable* statement) { return statement->whole_series; });
  if (!whole_series) return run_rows(plan_.tasks(), first, rows, error);
  for (const Task& task : plan_.tasks()) {
    const int32_t start = task.statement->whole_series ? 0 : first;
    const Status status = run_rows({&task, 1}, start, rows, error);
    if (failed(status)) return status;
  }
  return Status::ok;
}

/// Asks once after a compile for about 1000 days back and 30 days ahead.
void CalculateCenter::load_calendar() {
  constexpr int64_t seconds_back = 86'400'000;
  constexpr int64_t seconds_ahead = 2'592'000;
  const int64_t now = unix_time();
  const std::string start = date_text(local_moment(now - seconds_back));
  const std::string end = date_text(local_moment(now + seconds_ahead));
  if (start.size() == 8 && end.size() == 8) {
    trade_day_help::init_security_trade_day_model(pool_.security, pool_.market, start, end,
                                                  pool_.uuid);
  }
  pool_.script.needs_trade_day = false;
}

}  // namespace quor
