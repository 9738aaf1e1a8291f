// The words that send a trade signal to the host: COND, NAME and an optional QUANTITY.
#include "callbacks/host_callbacks.h"
#include "core/call.h"
#include "core/column_owners.h"
#include "drawing/shapes.h"
#include "platform/clock.h"
#include "tables/field_table.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

constexpr double no_quantity = -1.0;

/// The record, on the first pass. The quantity is fixed from then on, in the call's `value`.
void make_signal(const Call& call) {
  auto record = std::make_shared<FuturesTradeShape>();
  Variable& signal = call.variable;
  record->Field1Text = call.argument_text(1);
  signal.value = no_quantity;
  if (call.argument_count() == 3) {
    double quantity = null_value;
    ignore_status(call.evaluate(2, quantity));
    record->trade_count = to_int(quantity);
    signal.value = quantity;
  }
  reserve_columns(signal, 1);
  record->Field1Id = static_cast<int32_t>(signal.aux_column_ids[0]);
  record->TitleVisible = 0;
  record->NoticeLineNumber = signal.line;
  call.script().shapes.add(record);
  signal.shape = std::move(record);
}

void fire(const Call& call, uint32_t action) {
  const DataTable& table = call.table();
  const int64_t bar = to_int64(table.cell(call.row, table.column_index_of(time_column_id)));
  const auto row = static_cast<uint32_t>(call.row);
  const uint32_t column_id = call.variable.aux_column_ids[0];
  const int32_t quantity = to_int(call.variable.value);
  if (EventListener* const listener = call.pool.listener) {
    listener->hear_signal(bar, row, column_id, action, quantity);
  } else if (const TradeHandler handler = trade_handler()) {
    handler(unix_time(), bar, row, call.pool.uuid, column_id, action, quantity);
  }
}

/// A signal leaves at every evaluation of a bar whose condition holds, also when a bar is
/// calculated again: the host is expected to filter.
Status execute_signal(const Call& call, uint32_t action) {
  const size_t count = call.argument_count();
  if (count != 2 && count != 3) return call.wrong_count();
  // A bar that may still change its past can't trade.
  if (call.script().looks_ahead) return call.fail(Status::signal_looks_ahead);
  if (call.variable.shape == nullptr) make_signal(call);
  if (call.scan) return Status::ok;

  double condition = 0.0;
  if (!call.argument(0).text.empty()) {
    condition = null_value;
    const Status status = call.evaluate(0, condition);
    if (failed(status)) return status;
  }
  const bool holds = to_int(condition) != 0;
  if (holds && call.pool.fire_signals) fire(call, action);
  call.table().set_cell(call.row, call.variable.aux_column_indexes[0], holds ? 1.0 : 0.0);
  return Status::ok;
}

/// All seven words; the host tells them apart by the action code.
template <uint32_t action>
class TradeSignal : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override { return execute_signal(call, action); }
  ColumnTraits column_traits() const override { return only_a_condition; }
};

using BK = TradeSignal<0>;
using BP = TradeSignal<1>;
using SK = TradeSignal<2>;
using SP = TradeSignal<3>;
using BPK = TradeSignal<4>;
using SPK = TradeSignal<5>;
using CLOSEOUT = TradeSignal<6>;

constexpr Traits signal = looks_back | acts | draws | can_fail;

constexpr WordRow trade_signal_rows[] = {
    word_row<BK>("BK", 207, signal | trades),
    word_row<BP>("BP", 208, signal | trades),
    word_row<SK>("SK", 209, signal | trades),
    word_row<SP>("SP", 210, signal | trades),
    word_row<BPK>("BPK", 212, signal | trades),
    word_row<SPK>("SPK", 211, signal | trades),
    word_row<CLOSEOUT>("CLOSEOUT", 213, signal | trades),
};

}  // namespace

std::span<const WordRow> trade_signal_words() { return trade_signal_rows; }

}  // namespace quor
