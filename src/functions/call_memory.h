// States that a call carries on from bar to bar.
//
// A call whose arguments say the same whenever they are asked (`Variable::remembering`) keeps its
// state after each row that it has passed, from row 0 on without a gap. At the next row it
// evaluates its arguments there and takes one step. The calculator cuts the states to the rows that
// intake hasn't changed and that lie before the start of a run, so that a state is never older than
// what it was made from.
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
  void cut(int32_t row) override {
    if (row < known()) states_.resize(static_cast<size_t>(std::max(row, 0)));
  }

 private:
  std::vector<State> states_;
};

/// Brings the states of a call up to a row: `Status step(int32_t row, State& state)` takes a state
/// over a row. Gives null where the call can't know its states and has to walk.
template <typename State, typename Step>
Status follow(const Call& call, int32_t row, const Step& step, const RowStates<State>*& found) {
  found = nullptr;
  const Remembering remembering = call.variable.remembering;
  const bool inside = row >= 0 && row < call.table().row_count();
  if (remembering < Remembering::in_order || !inside) return Status::ok;
  auto& states = memory_of<RowStates<State>>(call.script(), call.variable);
  if (row > states.known() && remembering != Remembering::catching_up) return Status::ok;
  for (int32_t at = std::min(row, states.known()); at <= row; ++at) {
    State state = states.before(at);
    if (const Status status = step(at, state); failed(status)) return status;
    states.store(at, state);
  }
  found = &states;
  return Status::ok;
}

/// The states of a call after the rows of a block; `step(size_t place, State& state)` takes a state
/// over the row at a place of the block. Null for "bar by bar, please".
template <typename State, typename Step>
const State* follow(const ColumnCall& call, Block rows, const Step& step) {
  if (call.variable.remembering < Remembering::in_order) return nullptr;
  auto& states = memory_of<RowStates<State>>(call.columns.pool().script, call.variable);
  if (states.known() < rows.first) return nullptr;
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
