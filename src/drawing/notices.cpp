// NOTICE: tells the host once that a condition has turned true.
#include "callbacks/host_callbacks.h"
#include "core/call.h"
#include "core/column_owners.h"
#include "drawing/shapes.h"
#include "platform/clock.h"
#include "text/numbers.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

void make_notice(const Call& call) {
  auto record = std::make_shared<NoticeShape>();
  Variable& notice = call.variable;
  record->Field1Text = call.argument_text(1);
  if (call.argument_count() == 3) record->NoticeMessage = call.argument_text(2);
  reserve_columns(notice, 2);
  record->Field1Id = static_cast<int32_t>(notice.aux_column_ids[0]);
  record->TitleVisible = 0;
  record->NoticeLineNumber = notice.line;
  call.script().contains_notice = true;
  call.script().shapes.add(record);
  notice.shape = std::move(record);
}

/// The row's data columns as a JSON object of ids and numbers; what calls keep for themselves stays
/// out.
std::string row_text(const DataTable& table, int32_t row) {
  std::string text = "{";
  for (uint32_t column = 0; column < table.column_count(); ++column) {
    if (table.column_id(column) >= DataTable::first_auxiliary_id) continue;
    text += '"';
    append_integer(text, table.column_id(column));
    text += "\":";
    const double value = table.cell(row, static_cast<int32_t>(column));
    if (is_null(value)) {
      text += "null";
    } else {
      append_fixed(text, value);
    }
    text += ',';
  }
  text.back() = '}';
  return text;
}

/// The two columns of a call. The condition's column is the record's. The second one remembers what
/// was sent: 1.0 while a run of true bars has had its notice.
struct SentColumns {
  DataTable& table;
  int32_t row;
  int32_t holds;
  int32_t sent;

  void set_holds(double value) const { table.set_cell(row, holds, value); }
  void set_sent(double value) const { table.set_cell(row, sent, value); }

  /// What this bar says, if it was calculated before, else what the bar before it says.
  bool already_sent() const {
    const double here = table.cell(row, sent);
    return (is_null(here) && row >= 1 ? table.cell(row - 1, sent) : here) == 1.0;
  }
};

/// COND, NAME and an optional TEXT. Only a condition that truncates to 1 holds. One notice is given
/// per run of true bars, on its first bar, however often that is calculated.
class NOTICE final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    const size_t count = call.argument_count();
    if (count != 2 && count != 3) return call.wrong_count();
    if (call.script().looks_ahead) return call.fail(Status::notice_looks_ahead);
    if (call.variable.shape == nullptr) make_notice(call);
    if (call.scan || call.argument(0).text.empty()) return Status::ok;

    double condition = null_value;
    const Status status = call.evaluate(0, condition);
    if (failed(status)) return status;
    const auto& indexes = call.variable.aux_column_indexes;
    const SentColumns columns{call.table(), call.row, indexes[0], indexes[1]};
    if (to_int(condition) == 1) {
      columns.set_sent(send_once(call, columns) ? 1.0 : 0.0);
      columns.set_holds(1.0);
    } else {
      columns.set_sent(0.0);
      columns.set_holds(0.0);
    }
    return Status::ok;
  }
  ColumnTraits column_traits() const override { return only_a_condition; }

 private:
  /// Whether the run of true bars has had its notice after this bar. A quiet run, and a bar before
  /// the first row of the run, arm the notice anew.
  static bool send_once(const Call& call, const SentColumns& columns) {
    if (!call.pool.fire_signals || call.row < call.calculator.start_row()) return false;
    if (columns.already_sent()) return true;
    if (EventListener* const listener = call.pool.listener) {
      listener->hear_notice(static_cast<uint32_t>(call.row), call.variable.aux_column_ids[0]);
    } else if (const NoticeHandler handler = notice_handler()) {
      const std::string text = row_text(columns.table, call.row);
      handler(unix_time(), call.variable.aux_column_ids[0], call.pool.uuid, text.c_str());
    }
    return true;
  }
};

constexpr std::string_view notice_field[] = {"NOTICE_REALTIME_TIMESTAMP"};

constexpr WordRow notice_rows[] = {
    word_row<NOTICE>("NOTICE", 206, acts | draws | can_fail, notice_field)};

}  // namespace

std::span<const WordRow> notice_words() { return notice_rows; }

}  // namespace quor
