#include "core/columns.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <utility>

#include "core/base_func.h"
#include "core/data_pool_center.h"
#include "core/reduce.h"
#include "platform/processor.h"
#include "text/numbers.h"

namespace quor {
namespace {

/// Room that is worth keeping for numbers that stand at every row of a block.
constexpr size_t most_broadcasts = 64;

/// The rows of a formula that all of its steps take before the next ones.
constexpr size_t strip = 256;

}  // namespace

double* ColumnScratch::take(size_t size) {
  if (used_ == buffers_.size()) buffers_.emplace_back();
  Buffer& buffer = buffers_[used_];
  if (buffer.size < size) {
    // In steps, for words that look back over more rows at one block than at another.
    const size_t room = std::bit_ceil(std::max(size, least_size));
    buffer.values = line_aligned_numbers(room);
    buffer.size = room;
  }
  ++used_;
  return buffer.values.get();
}

Columns::Columns(DataPoolCenter& pool, CalculateCenter& calculator)
    : pool_(pool), calculator_(calculator) {}

Columns::~Columns() = default;

void Columns::begin(Block block) {
  block_ = block;
  overwritten_.clear();
  old_values_.clear();
  memories_.clear();
  early_.clear();
  twins_.clear();
  twin_scratch_.release();
}

void Columns::run_early(std::span<Early> calls) {
  std::ranges::sort(calls, {}, [](const Early& early) {
    return std::pair(early.call->function->id(), early.position);
  });
  scratch_.release();
  for (auto first = calls.begin(); first != calls.end();) {
    const auto end = std::find_if(first, calls.end(), [first](const Early& early) {
      return early.call->function != first->call->function;
    });
    if (end - first > 1) run_group({first, end});
    first = end;
  }
}

void Columns::run_group(std::span<const Early> calls) {
  group_.clear();
  for (const Early& early : calls) {
    const ColumnCall call{*this, *early.call, block_, null_value, early.position};
    if (is_early(*early.call, block_) || !early.call->function->can_run_side_by_side(call))
      continue;
    early_.push_back(early);
    group_.push_back(call);
  }
  if (group_.empty() || calls.front().call->function->run_side_by_side(group_)) return;
  for (const Early& early : calls) give_up_early(early.position);
}

/// A call that waits for its own last value at each row, and that hasn't been worked out.
bool Columns::can_pair(Variable& call, Block rows) {
  return call.function->column_traits().side_by_side && !is_early(call, rows) &&
         can_ask_calls(rows) &&
         call.function->can_run_side_by_side({*this, call, rows, null_value, position_});
}

bool Columns::run_pair(Variable* left, Variable* right, Block rows) {
  left = named_call(left);
  right = named_call(right);
  if (left == nullptr || right == nullptr || left == right || left->function != right->function ||
      !can_pair(*left, rows) || !can_pair(*right, rows))
    return true;
  const ColumnCall pair[] = {{*this, *left, rows, null_value, position_},
                             {*this, *right, rows, null_value, position_}};
  return run_beside(pair, left->follower.of_difference ? follower_of(*left, rows) : Follower());
}

Follower Columns::follower_of(const Variable& call, Block rows) {
  const bool can_follow =
      call.follower.call != nullptr && rows == block_ && can_pair(*call.follower.call, rows);
  return can_follow ? call.follower : Follower();
}

/// Of a call that another one may follow.
const double* Columns::leader_values(Variable& call, Block rows, double start) {
  const Follower follower = follower_of(call, rows);
  if (follower.call == nullptr || follower.of_difference || !can_pair(call, rows)) {
    return call_values(call, rows, start);
  }
  const ColumnCall leader[] = {{*this, call, rows, start, position_}};
  if (!run_beside(leader, follower)) return nullptr;
  return pool_.table().cells(call.column_index).data() + rows.first;
}

bool Columns::run_beside(std::span<const ColumnCall> calls, const Follower& follower) {
  const Block rows = calls.front().rows;
  const BaseFunc& word = *calls.front().variable.function;
  ++nesting_;
  const bool is_done =
      follower.call == nullptr
          ? word.run_side_by_side(calls)
          : word.run_followed(calls, {*this, *follower.call, rows, null_value, follower.statement});
  --nesting_;
  if (!is_done) return false;
  for (const ColumnCall& call : calls) early_.push_back({&call.variable, position_, rows});
  if (follower.call != nullptr) early_.push_back({follower.call, follower.statement, rows});
  return true;
}

bool Columns::is_early(const Variable& call, Block rows) const {
  return std::ranges::any_of(
      early_, [&](const Early& early) { return early.call == &call && early.rows == rows; });
}

void Columns::give_up_early(size_t position) {
  const auto belongs = [position](const Early& early) { return early.position == position; };
  if (std::erase_if(early_, belongs) == 0) return;
  for (const Overwritten& cells : overwritten_) {
    if (cells.position == position) put_back(cells, cells.rows.first);
  }
}

bool Columns::calculate(Variable& statement, size_t position) {
  const size_t cells_before = overwritten_.size();
  const size_t memories_before = memories_.size();
  position_ = position;
  nesting_ = 0;
  scratch_.release();
  const bool has_column = statement.column_id != no_column && statement.column_index != -1;
  if (statement.kind == VariableKind::number) {
    if (has_column) write(statement.column_index, block_, statement.value, position);
    return true;
  }
  const Program& program = statement.program;
  // A formula writes its last step where the value goes, if nothing is there.
  double* target = has_column && program.result.source == Operand::Source::partial &&
                           pool_.table().is_blank(statement.column_index, block_.first)
                       ? overwrite(statement.column_index, block_, position)
                       : nullptr;
  const double* result = program_values(program, block_, 0.0, target);
  if (result == nullptr) {
    put_back_since(cells_before, memories_before);
    return false;
  }
  if (!has_column) return true;
  write(statement.column_index, block_, result, position);
  return true;
}

void Columns::write(int32_t column, Block rows, const double* values, size_t position) {
  if (pool_.table().holds(column, rows.first, {values, rows.size()})) return;
  std::copy_n(values, rows.size(), overwrite(column, rows, position));
}

void Columns::write(int32_t column, Block rows, double value, size_t position) {
  DataTable& table = pool_.table();
  if (table.holds(column, rows.first, rows.size(), value)) return;
  if (table.is_blank(column, rows.first)) {
    // Noted first: were there no memory for that, nobody would put the cells back.
    overwritten_.push_back({position, column, rows, old_values_.size(), true});
    if (table.fill_later(column, rows.first, rows.end, value)) return;
    overwritten_.pop_back();
  }
  std::fill_n(overwrite(column, rows, position), rows.size(), value);
}

double* Columns::results_of(int32_t column, Block rows, size_t position) {
  constexpr size_t line = line_size / sizeof(double);
  const DataTable& table = pool_.table();
  if (table.is_blank(column, rows.first)) return overwrite(column, rows, position);
  double* const results = scratch(line + rows.size()) + line;
  results[-1] = table.cell(int64_t{rows.first} - 1, column);
  return results;
}

double* Columns::overwrite(int32_t column, Block rows, size_t position) {
  DataTable& table = pool_.table();
  const bool are_blank = table.is_blank(column, rows.first);
  const size_t values = old_values_.size();
  if (!are_blank) {
    table.claim_blanks(column, rows.first, rows.end);
    const double* const cells = table.cells(column).data() + rows.first;
    old_values_.insert(old_values_.end(), cells, cells + rows.size());
  }
  overwritten_.push_back({position, column, rows, values, are_blank});
  // Blank rows are claimed last of all, as nothing may throw between that and their values.
  double* const cells = table.writable_cells(column, rows.first).data();
  if (are_blank) table.claim_blanks(column, rows.first, rows.end);
  return cells;
}

void Columns::put_back(const Overwritten& cells, int32_t first) {
  if (first >= cells.rows.end) return;
  first = std::max(first, cells.rows.first);
  const auto left = static_cast<size_t>(cells.rows.end - first);
  double* target = pool_.table().writable_cells(cells.column, first).data();
  if (cells.were_blank) {
    std::fill_n(target, left, null_value);
  } else {
    std::copy_n(&old_values_[cells.values + cells.rows.size() - left], left, target);
  }
}

void Columns::note_memory(CallMemory& memory, Block rows, int32_t known) {
  memories_.push_back({position_, &memory, rows, known});
}

void Columns::put_back_since(size_t cells, size_t memories) {
  while (memories_.size() > memories) {
    memories_.back().memory->cut(memories_.back().known);
    memories_.pop_back();
  }
  while (overwritten_.size() > cells) {
    put_back(overwritten_.back(), overwritten_.back().rows.first);
    old_values_.resize(overwritten_.back().values);
    overwritten_.pop_back();
  }
}

const double* Columns::everywhere(double value, size_t size) {
  for (const Broadcast& broadcast : broadcasts_) {
    if (has_same_bits(broadcast.value, value) && broadcast.size >= size) {
      return broadcast.values.get();
    }
  }
  if (broadcasts_.size() == most_broadcasts) {
    double* values = scratch(size);
    std::fill_n(values, size, value);
    return values;
  }
  LineAlignedNumbers values = line_aligned_numbers(size);
  std::fill_n(values.get(), size, value);
  return broadcasts_.emplace_back(Broadcast{value, std::move(values), size}).values.get();
}

const double* Columns::values(Variable& variable, Block rows, double start) {
  switch (variable.kind) {
    case VariableKind::field: {
      const auto cells = pool_.table().cells(variable.column_index);
      return cells.empty() ? nullptr : cells.data() + rows.first;
    }
    case VariableKind::number:
      return everywhere(variable.value, rows.size());
    case VariableKind::expression:
      return expression_values(variable, rows, start);
    case VariableKind::call:
      if (is_early(variable, rows)) {
        return pool_.table().cells(variable.column_index).data() + rows.first;
      }
      if (variable.function == nullptr || !can_ask_calls(rows)) return nullptr;
      if (variable.twin != nullptr) return twin_values(variable, rows, start);
      return variable.follower.call != nullptr ? leader_values(variable, rows, start)
                                               : call_values(variable, rows, start);
    default:
      return nullptr;
  }
}

const double* Columns::call_values(Variable& call, Block rows, double start) {
  ++nesting_;
  const double* result = call.function->column({*this, call, rows, start, position_});
  --nesting_;
  return result;
}

/// Worked out for the first of the twins that is asked.
const double* Columns::twin_values(Variable& call, Block rows, double start) {
  const auto known = std::ranges::find_if(
      twins_, [&](const Twin& twin) { return twin.first == call.twin && twin.rows == rows; });
  if (known != twins_.end()) return known->values;
  const double* values = call_values(call, rows, start);
  if (values == nullptr) return nullptr;
  double* kept = twin_scratch_.take(rows.size());
  std::copy_n(values, rows.size(), kept);
  twins_.push_back({call.twin, rows, kept});
  return kept;
}

const double* Columns::expression_values(Variable& variable, Block rows, double start) {
  if (variable.is_text()) return everywhere(literal_value(variable.text), rows.size());
  if (variable.elements.empty()) {
    return variable.is_draw_null() ? everywhere(null_value, rows.size()) : nullptr;
  }
  return program_values(variable.program, rows, start, nullptr);
}

const double* Columns::operand_values(const Operand& operand, Block rows,
                                      std::span<const StepRows> steps) {
  switch (operand.source) {
    case Operand::Source::number:
      return everywhere(operand.number, std::min(rows.size(), strip));
    case Operand::Source::partial:
      return steps[operand.partial].result;
    default:
      return values(*operand.variable, rows, 0.0);
  }
}

namespace {

/// A partial result is read once, so its memory can take what is made of it.
double* place_of_result(const Step& step, std::span<const StepRows> steps, Columns& columns,
                        size_t size) {
  for (const Operand* operand : {&step.right, &step.left}) {
    if (operand->source == Operand::Source::partial) return steps[operand->partial].result;
  }
  return columns.scratch(size);
}

/// A result may stand where an operand does.
void reduce_columns(OpCode op, const double* left, const double* right, double* result,
                    size_t size) {
  with_operator(op, [=](const auto& apply) {
    wherever_wide([=] {
      QUOR_ROWS_APART
      for (size_t i = 0; i < size; ++i) result[i] = truth(apply(left[i], right[i]));
    });
  });
}

bool is_sum_or_product(OpCode op) { return op == op_plus || op == op_minus || op == op_times; }

template <typename Use>
void with_sum_or_product(OpCode op, const Use& use) {
  if (op == op_plus) return use(std::plus<double>());
  op == op_minus ? use(std::minus<double>()) : use(std::multiplies<double>());
}

bool is_partial(const Operand& operand, const Step& of) {
  return operand.source == Operand::Source::partial && operand.partial == of.partial;
}

/// Whether a step and the next one, which takes its result, can go over the rows as one.
bool can_join(const Step& step, const Step& next) {
  return step.kind == Step::Kind::reduce && next.kind == Step::Kind::reduce &&
         is_sum_or_product(step.op) && is_sum_or_product(next.op) &&
         (is_partial(next.left, step) || is_partial(next.right, step));
}

/// What two steps that can be joined make of three numbers: (a op b) op c, or c op (a op b).
void reduce_joined(const Step& step, const Step& next, const double* a, const double* b,
                   const double* c, double* result, size_t size) {
  with_sum_or_product(step.op, [&](const auto& first) {
    with_sum_or_product(next.op, [&](const auto& second) {
      if (is_partial(next.left, step)) {
        wherever_wide([=] {
          QUOR_ROWS_APART
          for (size_t i = 0; i < size; ++i) result[i] = second(first(a[i], b[i]), c[i]);
        });
      } else {
        wherever_wide([=] {
          QUOR_ROWS_APART
          for (size_t i = 0; i < size; ++i) result[i] = second(c[i], first(a[i], b[i]));
        });
      }
    });
  });
}

/// A strip of the rows that a formula goes over.
struct Strip {
  std::span<const StepRows> rows;
  size_t place;
  size_t count;

  const double* at(const Operand& operand, const double* values) const {
    return operand.source == Operand::Source::number ? values : values + place;
  }
  const double* left(const Step& step) const { return at(step.left, rows[step.partial].left); }
  const double* right(const Step& step) const { return at(step.right, rows[step.partial].right); }
  double* result(const Step& step) const { return rows[step.partial].result + place; }

  void run(const Step& step) const {
    if (step.kind == Step::Kind::reduce) {
      reduce_columns(step.op, left(step), right(step), result(step), count);
    } else {
      std::transform(right(step), right(step) + count, result(step), std::negate());
    }
  }
  void run_joined(const Step& step, const Step& next) const {
    const double* const other = is_partial(next.left, step) ? right(next) : left(next);
    reduce_joined(step, next, left(step), right(step), other, result(next), count);
  }
};

/// Strip after strip, so that what one step leaves is still near when the next one reads it.
void run_steps(std::span<const Step> steps, std::span<const StepRows> rows, size_t size) {
  for (size_t place = 0; place < size; place += strip) {
    const Strip part{rows, place, std::min(strip, size - place)};
    for (size_t i = 0; i < steps.size(); ++i) {
      if (i + 1 < steps.size() && can_join(steps[i], steps[i + 1])) {
        part.run_joined(steps[i], steps[i + 1]);
        ++i;
      } else {
        part.run(steps[i]);
      }
    }
  }
}

}  // namespace

const double* Columns::program_values(const Program& program, Block rows, double start,
                                      double* target) {
  if (program.ending != Ending::value) return nullptr;
  std::array<StepRows, 32> few;
  std::vector<StepRows> many;
  std::span<StepRows> found = few;
  if (program.partials.size() > few.size()) {
    many.resize(program.partials.size());
    found = many;
  }
  for (const Step& step : program.steps) {
    const bool reduces = step.kind == Step::Kind::reduce;
    if (reduces && !run_pair(step.left.variable, step.right.variable, rows)) return nullptr;
    const double* right = operand_values(step.right, rows, found);
    const double* left = reduces ? operand_values(step.left, rows, found) : right;
    if (left == nullptr || right == nullptr || step.kind == Step::Kind::discard) return nullptr;
    const bool is_last = &step == &program.steps.back();
    found[step.partial] = {
        left, right,
        is_last && target != nullptr ? target : place_of_result(step, found, *this, rows.size())};
  }
  run_steps(program.steps, found, rows.size());
  switch (program.result.source) {
    case Operand::Source::number:
      return everywhere(program.result.number, rows.size());
    case Operand::Source::partial:
      return found[program.result.partial].result;
    default:
      return values(*program.result.variable, rows, start);
  }
}

void Columns::put_back(int32_t row, size_t position) {
  for (size_t i = overwritten_.size(); i-- > 0;) {
    const Overwritten& cells = overwritten_[i];
    const int32_t first = cells.position < position ? row + 1 : row;
    // A word that works out rows before its own, as HV does, has come as much less far.
    put_back(cells, first + cells.rows.end - block_.end);
  }
  for (const Memory& taken : memories_) {
    const int32_t first = taken.position < position ? row + 1 : row;
    taken.memory->cut(first + taken.rows.end - block_.end);
  }
}

}  // namespace quor
