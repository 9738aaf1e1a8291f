// States that a call carries on from bar to bar.
//
// A call whose arguments say the same whenever they are asked (`Variable::remembering`) keeps its
// state after each row that it has passed, from row 0 on without a gap. At the next row it
// evaluates its arguments there and takes one step.
//
// The states of a call that goes by values end where a value of an argument isn't known or a result
// has changed since, and it walks down to there.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/call.h"
#include "core/columns.h"
#include "core/model.h"

namespace quor {

/// The memory of a call, made at first use. A call has one word and so one type of memory.
template <typename Memory>
Memory& memory_of(CompiledScript& script, Variable& call) {
  if (call.memory == nullptr) {
    script.remembering_calls.push_back(&call);
    call.memory = std::make_unique<Memory>();
  }
  return static_cast<Memory&>(*call.memory);
}

/// The states of a call after the rows that it knows. Before row 0 stands `State()`.
template <typename State>
class RowStates final : public CallMemory {
 public:
  /// The rows before this one are known.
  int32_t known() const { return static_cast<int32_t>(states_.size()); }
  const State& after(int32_t row) const { return states_[static_cast<size_t>(row)]; }
  State before(int32_t row) const { return row == 0 ? State() : after(row - 1); }
  /// All of them, from row 0 on.
  const State* data() const { return states_.data(); }

  /// At a row that is known or the first that isn't.
  void store(int32_t row, const State& state) {
    if (row < known()) {
      states_[static_cast<size_t>(row)] = state;
    } else {
      states_.push_back(state);
    }
  }
  /// The states after some rows, all of which the caller writes.
  State* overwrite(Block rows) {
    states_.resize(std::max(states_.size(), static_cast<size_t>(rows.end)));
    return states_.data() + rows.first;
  }
  /// Takes a state down from row -1 to `lowest` at most, as far as it stays what it is. No cell
  /// lies there, so that the steps are the same whenever they are taken.
  template <typename Step>
  Status hit_below(int64_t lowest, const Step& step, State& state) {
    while (below_ == State() && below_end_ > lowest) {
      if (const Status status = step(below_end_ - 1, below_); failed(status)) return status;
      --below_end_;
    }
    state = below_;
    return Status::ok;
  }

 private:
  void drop_from(int32_t row) override {
    if (row < known()) states_.resize(static_cast<size_t>(row));
    if (row > 0) return;
    below_ = {};
    below_end_ = 0;
  }

  std::vector<State> states_;
  State below_;  ///< what the rows below 0 give, from `below_end_` up
  int32_t below_end_ = 0;
};

/// What a call remembers of a series whose value at its row is being stored: if that becomes
/// another one, nothing that rests on it may be taken as known.
class SeriesStore {
 public:
  /// Before the value is stored in a column, which may not be there yet.
  SeriesStore(const Call& call, int32_t column)
      : call_(call), before_(call.table().cell(call.row, column)) {}
  /// Behind it.
  void note(double value) const {
    CallMemory* memory = call_.variable.memory.get();
    if (memory == nullptr) return;
    if (!has_same_bits(before_, value)) memory->cut(call_.row);
  }

 private:
  const Call& call_;
  double before_;
};

/// Brings the states of a call up to a row: `Status step(int32_t row, State& state)` takes a state
/// over a row, by the first `arguments` arguments. `found` is null where the call can know nothing.
/// Where its states end before the row, it has to walk down to their end.
template <typename State, typename Step>
Status follow(const Call& call, int32_t row, size_t arguments, const Step& step,
              RowStates<State>*& found) {
  found = nullptr;
  const Remembering remembering = call.variable.remembering;
  const bool inside = row >= 0 && row < call.table().row_count();
  if (remembering == Remembering::nothing || !inside) return Status::ok;
  auto& states = memory_of<RowStates<State>>(call.script(), call.variable);
  found = &states;
  const auto pass = [&states, &step](int32_t at) {
    State state = states.before(at);
    const Status status = step(at, state);
    if (!failed(status)) states.store(at, state);
    return status;
  };
  if (remembering != Remembering::catching_up) {
    const bool in_order = remembering == Remembering::in_order && row <= states.known();
    if (!in_order || states.goes_by_values()) {
      states.go_by_values(call.table().watch_changes());
      const int32_t end = std::min(row, call.recalled_end(states.known(), 0, arguments));
      while (states.known() < end) ignore_status(pass(states.known()));
    }
    // Behind rows that are all known the order begins again.
    if (remembering == Remembering::in_order && row == states.known()) states.go_in_order();
    // The value at its own row changes what others rest on, maybe, and comes before them.
    if (remembering == Remembering::unchanged || row > states.known()) return Status::ok;
  }
  for (int32_t at = std::min(row, states.known()); at <= row; ++at) {
    if (const Status status = pass(at); failed(status)) return status;
  }
  return Status::ok;
}

/// Whether a walk of a call down the rows, from the one that it has followed to, has to work out a
/// row: if not, the states after it and those before hold. What the walk has worked out may have
/// changed what they rest on.
template <typename State>
bool has_to_walk(const Call& call, RowStates<State>* states, int64_t from, int64_t row) {
  if (states == nullptr) return true;
  if (call.variable.remembering == Remembering::unchanged) {
    if (row == from) return true;
    states->go_by_values(call.table().watch_changes());
  }
  return row >= states->known();
}

/// The states of a call after the rows of a block; `step(size_t place, State& state)` takes a state
/// over the row at a place of the block. Null if it is declined.
template <typename State, typename Step>
const State* follow(const ColumnCall& call, Block rows, const Step& step) {
  if (call.variable.remembering < Remembering::in_order) return nullptr;
  auto& states = memory_of<RowStates<State>>(call.columns.pool().script, call.variable);
  if (states.known() < rows.first || states.goes_by_values()) return nullptr;
  call.columns.note_memory(states, rows, states.known());
  State* const result = states.overwrite(rows);
  State state = states.before(rows.first);
  for (size_t i = 0; i < rows.size(); ++i) {
    step(i, state);
    result[i] = state;
  }
  return result;
}

}  // namespace quor
