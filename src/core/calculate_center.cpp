// The driver: which statement is calculated at which row, in which order.
#include "core/calculate_center.h"

#include <algorithm>

#include "calendar/trade_day_help.h"
#include "core/status.h"
#include "platform/clock.h"

namespace quor {

namespace {

/// Has calls forget what has changed in its time, whichever way that ends.
class ChangesForgotten {
 public:
  explicit ChangesForgotten(DataPoolCenter& pool) : script_(pool.script) {
    if (script_.remembering_calls.empty()) return;
    changes_ = &pool.table().watch_changes();
    before_ = changes_->now();
  }
  ~ChangesForgotten() {
    if (changes_ != nullptr) script_.forget_rows(changes_->first_since(before_));
  }
  ChangesForgotten(const ChangesForgotten&) = delete;
  ChangesForgotten& operator=(const ChangesForgotten&) = delete;

 private:
  CompiledScript& script_;
  const RowChanges* changes_ = nullptr;  ///< null if nothing is remembered
  uint64_t before_ = 0;
};

}  // namespace

Status CalculateCenter::calculate(int32_t first_row, bool scan, std::string& error) {
  start_row_ = first_row;
  if (pool_.script.statement_list.empty()) return Status::ok;
  refresh_column_indexes();
  return scan ? scan_statements(error) : run_statements(first_row, error);
}

/// Columns may have come since the compile; this is the only place that brings indexes up to date.
void CalculateCenter::refresh_column_indexes() {
  const DataTable& table = pool_.table();
  if (table.layout() == seen_layout_) return;
  seen_layout_ = table.layout();
  // A call that has got its column in the last run writes there from this one on.
  pool_.script.rows_of_last_run = 0;
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

Status CalculateCenter::evaluate_aside(Variable& variable, int32_t row, double& value) {
  pool_.table().write_blanks();
  pool_.script.rows_of_last_run = 0;
  pool_.script.forget_rows(pool_.table().take_first_changed_row());
  const ChangesForgotten changes(pool_);
  std::string unread;
  return evaluate(variable, row, false, unread, value);
}

/// A report on a script that has run scans it again, and a scan evaluates periods.
Status CalculateCenter::scan_statements(std::string& error) {
  const ChangesForgotten changes(pool_);
  pool_.table().write_blanks();
  pool_.script.rows_of_last_run = 0;
  for (Variable* statement : pool_.script.statement_list) {
    if (statement->kind == VariableKind::number) continue;
    double result = 0.0;
    const Status status =
        evaluate_elements(statement->program, 0, true, statement->line, error, result);
    if (failed(status)) return status;
  }
  return Status::ok;
}

/// A plan holds as long as the table has the same columns.
void CalculateCenter::keep_plan() {
  if (pool_.script.planned_layout == pool_.table().layout()) return;
  plan_.make(pool_.script, pool_.table());
  pool_.script.rows_of_last_run = 0;
}

/// A run over the last bar again, of which intake has changed some fields, leaves out what reads
/// none of these: a tick mostly moves one price.
void CalculateCenter::choose_statements(int32_t first, int32_t rows) {
  DataTable& table = pool_.table();
  CompiledScript& script = pool_.script;
  const int32_t changed = table.take_first_changed_row();
  script.forget_rows(std::min(first, changed));
  const bool is_same_bar = first == rows - 1 && rows == script.rows_of_last_run &&
                           !table.has_changed_more() && script.may_remember &&
                           !script.sets_variables && !script.shares_columns &&
                           !plan_.each_in_full();
  script.rows_of_last_run = 0;
  statements_.clear();
  for (uint32_t i = 0; i < script.statement_list.size(); ++i) {
    const std::vector<int32_t>* inputs = is_same_bar ? plan_.inputs(i) : nullptr;
    const auto has_changed = [&table](int32_t column) { return table.has_changed(column); };
    if (inputs != nullptr && std::ranges::none_of(*inputs, has_changed)) continue;
    statements_.push_back(i);
    const int32_t own = script.statement_list[i]->column_index;
    if (is_same_bar && own != -1) table.note_change_of(own);
  }
}

Status CalculateCenter::run_statements(int32_t first_row, std::string& error) {
  if (pool_.script.needs_trade_day) load_calendar();
  const int32_t rows = pool_.table().row_count();
  // A negative first row selects no rows.
  const int32_t first = first_row < 0 ? rows : first_row;
  keep_plan();
  choose_statements(first, rows);
  const Status status = run_chosen(first, rows, error);
  if (failed(status)) return status;
  if (first < rows) pool_.script.rows_of_last_run = rows;
  pool_.table().forget_changes();
  return status;
}

Status CalculateCenter::run_chosen(int32_t first, int32_t rows, std::string& error) {
  const auto& statements = pool_.script.statement_list;
  if (!plan_.each_in_full()) return run_range(statements_, first, rows, error);
  for (const uint32_t position : statements_) {
    const int32_t start = statements[position]->whole_series ? 0 : first;
    const Status status = run_range({&position, 1}, start, rows, error);
    if (failed(status)) return status;
  }
  return Status::ok;
}

namespace {

/// Writes the blanks that a run leaves, whichever way it ends.
struct BlankEnd {
  DataTable& table;
  ~BlankEnd() { table.write_blanks(); }
};

}  // namespace

Status CalculateCenter::run_range(std::span<const uint32_t> statements, int32_t first, int32_t end,
                                  std::string& error) {
  const bool is_long = int64_t{end} - first >= block_rule_.shortest_run;
  if (!is_long || pool_.script.sets_variables || pool_.script.shares_columns) {
    pool_.table().write_blanks();
    return run_rows(statements, {first, end}, error);
  }
  const BlankEnd blank_end{pool_.table()};
  return run_by_blocks(statements, first, end, error);
}

/// Where no statement sees later rows, each block writes the nulls of its own rows once its columns
/// are there. Only the first rows need them before the run, and columns that no statement writes,
/// which may come with these rows.
Status CalculateCenter::run_first_bars(std::span<const uint32_t> statements, Block rows,
                                       std::string& error) {
  DataTable& table = pool_.table();
  const bool leaves_blanks = rows.first == 0 && plan_.is_whole();
  if (leaves_blanks) {
    table.write_blanks_before(rows.end);
    table.blank_new_columns_from(rows.end);
  } else {
    table.write_blanks();
  }
  const Status status = run_rows(statements, rows, error);
  table.blank_new_columns_from(DataTable::no_blanks);
  if (!leaves_blanks || failed(status)) return status;
  keep_plan();
  for (const int32_t column : plan_.reads_of_no_statement()) table.write_blanks_of(column);
  return status;
}

Status CalculateCenter::run_by_blocks(std::span<const uint32_t> statements, int32_t first,
                                      int32_t end, std::string& error) {
  const int32_t bars_end = first + std::min(block_rule_.bars_first, end - first);
  const Status status = run_first_bars(statements, {first, bars_end}, error);
  if (failed(status)) return status;
  int32_t size = block_rule_.first_block;
  for (Block rows{bars_end, bars_end}; rows.first < end; rows.first = rows.end) {
    rows.end = rows.first + std::min(size, end - rows.first);
    size = std::min(rows.end - first, block_rule_.longest_block);
    const Status block_status = run_block(statements, rows, first, error);
    if (failed(block_status)) return block_status;
  }
  return Status::ok;
}

/// What can go by columns does, statement after statement; the others follow bar by bar.
Status CalculateCenter::run_block(std::span<const uint32_t> statements, Block rows,
                                  int32_t run_from, std::string& error) {
  keep_plan();
  is_finished_.assign(pool_.script.statement_list.size(), 0);
  bar_by_bar_.clear();
  columns_.begin(rows);
  progress_ = {rows.first, 0};
  try {
    run_columns(statements, rows, run_from);
    if (bar_by_bar_.empty()) return Status::ok;
    const Status status = run_rows(bar_by_bar_, rows, error);
    if (failed(status)) columns_.put_back(progress_.row, progress_.statement);
    return status;
  } catch (...) {
    columns_.put_back(progress_.row, progress_.statement);
    throw;
  }
}

void CalculateCenter::run_columns(std::span<const uint32_t> statements, Block rows,
                                  int32_t run_from) {
  run_early(statements, rows, run_from);
  for (const uint32_t position : statements) {
    is_finished_[position] = can_take(position, run_from) &&
                             columns_.calculate(*pool_.script.statement_list[position], position);
    if (is_finished_[position] != 0) continue;
    columns_.give_up_early(position);
    bar_by_bar_.push_back(position);
  }
  pool_.table().write_blanks_before(rows.end);
}

void CalculateCenter::run_early(std::span<const uint32_t> statements, Block rows,
                                int32_t run_from) {
  early_.clear();
  for (const uint32_t position : statements) {
    if (!plan_.by_columns(position, run_from)) continue;
    for (Variable* call : plan_.side_by_side(position)) early_.push_back({call, position, rows});
  }
  columns_.run_early(early_);
}

bool CalculateCenter::can_take(uint32_t statement, int32_t run_from) const {
  return plan_.by_columns(statement, run_from) &&
         (plan_.each_in_full() ||
          std::ranges::all_of(plan_.rests_on(statement),
                              [this](uint32_t writer) { return is_finished_[writer] != 0; }));
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
