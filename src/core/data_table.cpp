#include "core/data_table.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>

#include "calendar/trade_day_help.h"
#include "platform/processor.h"
#include "tables/field_table.h"

namespace quor {

void Cells::make_room(size_t room, size_t kept) {
  LineAlignedNumbers memory = line_aligned_numbers(room);
  std::copy_n(values_, kept, memory.get());
  own_ = std::move(memory);
  values_ = own_.get();
  room_ = room;
}

void Cells::lend(const double* values) {
  own_.reset();
  room_ = 0;
  values_ = const_cast<double*>(values);
}

LineAlignedNumbers Cells::take() {
  values_ = nullptr;
  room_ = 0;
  return std::move(own_);
}

uint32_t DataTable::row_index_of(int64_t key) const {
  if (keys_.empty() || key > keys_.back()) return no_row;
  if (key == keys_.back()) return static_cast<uint32_t>(keys_.size() - 1);
  const auto found = std::lower_bound(keys_.begin(), keys_.end(), key);
  return *found == key ? static_cast<uint32_t>(found - keys_.begin()) : no_row;
}

int32_t DataTable::column_index_of(uint32_t id) const {
  const auto found = index_of_id_.find(id);
  return found == index_of_id_.end() ? -1 : found->second;
}

int32_t DataTable::add_column(uint32_t id) {
  if (id == no_column) return -1;
  const auto index = static_cast<int32_t>(columns_.size());
  const int32_t existing = column_index_of(id);
  if (existing != -1) return existing;
  // Room first: once the three containers grow, nothing throws between them.
  Column column;
  column.cells.make_room(keys_.capacity(), 0);
  column.blank_from = 0;
  const bool stays_blank = is_auxiliary(id) && new_blank_from_ < row_count();
  write_blanks_before(column, stays_blank ? new_blank_from_ : row_count());
  if (!stays_blank) column.blank_from = no_blanks;
  const auto room = [](auto& list) {
    if (list.size() == list.capacity()) list.reserve(std::max<size_t>(8, 2 * list.size()));
  };
  room(column_ids_);
  room(columns_);
  index_of_id_.emplace(id, index);
  column_ids_.push_back(id);
  has_blanks_ |= stays_blank;
  columns_.push_back(std::move(column));
  note_size();
  ++layout_;
  return index;
}

/// A cell that is written with what it holds has not changed.
void DataTable::note_change(int32_t column, int32_t row, double before, double value) {
  if (row >= first_changed_row_ && has_changed(column)) return;
  if (has_same_bits(before, value)) return;
  first_changed_row_ = std::min(first_changed_row_, row);
  note_change_of(column);
  if (is_auxiliary(column_ids_[static_cast<size_t>(column)])) more_changed_in_ = era_;
}

void DataTable::note_change_from(size_t row) {
  more_changed_in_ = era_;
  first_changed_row_ = std::min(first_changed_row_, static_cast<int32_t>(row));
}

void DataTable::note_size() {
  rows_ = static_cast<uint32_t>(keys_.size());
  column_count_ = static_cast<uint32_t>(columns_.size());
}

void DataTable::store_key(size_t row, int32_t time_column) {
  if (time_column == -1) return;
  columns_[static_cast<size_t>(time_column)].cells[row] = static_cast<double>(keys_[row]);
}

void DataTable::insert_row(int64_t key) {
  write_blanks();
  const auto row = std::lower_bound(keys_.begin(), keys_.end(), key) - keys_.begin();
  make_room(keys_.size() + 1);
  note_change_from(static_cast<size_t>(row));
  for (Column& column : columns_) {
    double* const cells = column.in_place();
    std::move_backward(cells + row, cells + keys_.size(), cells + keys_.size() + 1);
    cells[row] = null_value;
  }
  keys_.insert(keys_.begin() + row, key);
  note_size();
  store_key(static_cast<size_t>(row), column_index_of(time_column_id));
}

void DataTable::put_value(int64_t key, uint32_t id, double value) {
  if (key < 1) return;
  const uint32_t row = row_index_of(key);
  if (row == no_row) {
    insert_row(key);
    return;
  }
  write_blanks();
  const int32_t column = add_column(id);
  if (column != -1) note_change(column, static_cast<int32_t>(row), cell(row, column), value);
  set_cell(static_cast<int32_t>(row), column, value);
}

void DataTable::make_room(size_t rows) {
  if (keys_.capacity() < rows) keys_.reserve(std::max(rows, 2 * keys_.capacity()));
  for (Column& column : columns_) {
    Cells& cells = column.cells;
    if (cells.room() < rows) cells.make_room(std::max(rows, 2 * cells.room()), keys_.size());
  }
}

void DataTable::fill(std::span<const int64_t> keys, std::span<const ColumnValues> columns,
                     bool reads_keys) {
  keys_.reserve(keys.size());
  for (Column& column : columns_) {
    Cells& cells = column.cells;
    if (cells.room() < keys.size()) cells.make_room(std::max(keys.size(), 2 * cells.room()), 0);
  }
  // All memory is there; nothing throws from here on.
  keys_.assign(keys.begin(), keys.end());
  for (Column& column : columns_) column.make_blank();
  has_blanks_ = true;
  for (const auto& [index, values, are_lent] : columns) {
    Column& column = columns_[static_cast<size_t>(index)];
    if (are_lent) {
      column.cells.lend(values);
    } else {
      std::copy_n(values, keys.size(), column.cells.data());
    }
    column.blank_from = no_blanks;
  }
  const int32_t time_column = column_index_of(time_column_id);
  if (time_column != -1) {
    Column& column = columns_[static_cast<size_t>(time_column)];
    const auto number = [](int64_t key) { return static_cast<double>(key); };
    if (reads_keys) std::ranges::transform(keys, column.cells.data(), number);
    column.blank_from = no_blanks;
  }
  for (size_t i = 0; i < columns_.size(); ++i) {
    if (!is_auxiliary(column_ids_[i]))
      write_blanks_before(columns_[i], static_cast<int32_t>(keys.size()));
  }
  note_size();
  note_change_from(0);
}

void DataTable::Column::write_pending() const {
  std::fill_n(cells.data() + pending_from, pending_count, pending_value);
  pending_count = 0;
}

void DataTable::write_blanks_before(Column& column, int32_t row) {
  if (column.blank_from >= row) return;
  std::fill(column.cells.data() + column.blank_from, column.cells.data() + row, null_value);
  column.blank_from = row;
}

void DataTable::write_blanks_before(int32_t row) {
  for (Column& column : columns_) write_blanks_before(column, row);
}

void DataTable::write_blanks_of(int32_t column) {
  write_blanks_before(columns_[static_cast<size_t>(column)], row_count());
}

void DataTable::write_blanks() {
  new_blank_from_ = no_blanks;
  if (!has_blanks_) return;
  write_blanks_before(row_count());
  for (Column& column : columns_) column.blank_from = no_blanks;
  has_blanks_ = false;
}

void DataTable::claim_blanks(int32_t index, int32_t first, int32_t end) {
  Column& column = columns_[static_cast<size_t>(index)];
  const bool are_blank = column.blank_from <= first;
  write_blanks_before(column, are_blank ? first : end);
  if (are_blank) column.blank_from = end;
}

bool DataTable::fill_later(int32_t index, int32_t first, int32_t end, double value) {
  Column& column = columns_[static_cast<size_t>(index)];
  const auto from = static_cast<uint32_t>(first);
  const bool goes_on = column.pending_from + column.pending_count == from &&
                       has_same_bits(column.pending_value, value);
  if (column.blank_from > first || (column.pending_count != 0 && !goes_on)) return false;
  if (watches_changes_) changes_.note(first);
  claim_blanks(index, first, end);
  if (column.pending_count == 0) column.pending_from = from;
  column.pending_count = static_cast<uint32_t>(end) - column.pending_from;
  column.pending_value = value;
  return true;
}

bool DataTable::holds(int32_t index, int32_t row, std::span<const double> values) const {
  const Column& column = columns_[static_cast<size_t>(index)];
  if (values.data() == column.cells.data() + row) return true;
  const auto first = static_cast<uint32_t>(row);
  const auto end = first + static_cast<uint32_t>(values.size());
  if (column.blank_from < static_cast<int32_t>(end)) return false;
  // Rows before those that are pending, where an average has fewer values, are compared as they
  // are.
  const double* const cells = end <= column.pending_from ? column.cells.data() : column.in_place();
  return std::memcmp(cells + row, values.data(), values.size_bytes()) == 0;
}

bool DataTable::holds(int32_t index, int32_t row, size_t count, double value) const {
  const Column& column = columns_[static_cast<size_t>(index)];
  if (column.blank_from < row + static_cast<int32_t>(count)) return false;
  const auto first = static_cast<uint32_t>(row);
  const auto last = first + static_cast<uint32_t>(count) - 1;
  if (column.is_pending(first) && column.is_pending(last)) {
    return has_same_bits(column.pending_value, value);
  }
  const auto bits = std::bit_cast<uint64_t>(value);
  const double* const cells = column.in_place() + row;
  bool are_equal = false;
  wherever_wide([cells, count, bits, &are_equal] {
    uint64_t differing = 0;
    for (size_t i = 0; i < count; ++i) differing |= std::bit_cast<uint64_t>(cells[i]) ^ bits;
    are_equal = differing == 0;
  });
  return are_equal;
}

namespace {

/// A radix sort: by eleven bits of the keys after the other, the last ones first, so that equal
/// keys keep their order, of which the last counts. Keys of bars differ in few of their bits only.
void sort_by_key(std::vector<BatchRow>& rows, std::vector<BatchRow>& sorted) {
  constexpr int width = 11;
  constexpr size_t digits = 1 << width;
  uint64_t differing = 0;
  for (const BatchRow& row : rows) differing |= static_cast<uint64_t>(row.key ^ rows.front().key);
  sorted.resize(rows.size());
  const int end = 64 - std::countl_zero(differing);
  for (int shift = std::countr_zero(differing); shift < end; shift += width) {
    const auto digit = [shift](const BatchRow& row) {
      return static_cast<size_t>(row.key >> shift) % digits;
    };
    std::array<uint32_t, digits + 1> starts{};
    for (const BatchRow& row : rows) ++starts[digit(row) + 1];
    for (size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
    for (const BatchRow& row : rows) sorted[starts[digit(row)]++] = row;
    rows.swap(sorted);
  }
}

/// Brings the rows of a batch in order of their keys, of equal keys the last only.
void sort_rows(RowBatch& batch) {
  std::vector<BatchRow>& rows = batch.rows;
  std::erase_if(rows, [](const BatchRow& row) { return row.key < 1; });
  const auto not_ascending = std::ranges::greater_equal();
  if (std::ranges::adjacent_find(rows, not_ascending, &BatchRow::key) == rows.end()) return;
  // Hosts that send the newest bar first are served by this alone.
  std::ranges::reverse(rows);
  if (!std::ranges::is_sorted(rows, {}, &BatchRow::key)) sort_by_key(rows, batch.sorted);
  const auto same_key = [](const BatchRow& a, const BatchRow& b) { return a.key == b.key; };
  rows.erase(std::unique(rows.begin(), rows.end(), same_key), rows.end());
}

}  // namespace

void DataTable::merge_rows(RowBatch& batch) {
  write_blanks();
  sort_rows(batch);
  const size_t rows = find_rows(batch);
  make_room(rows);
  // All memory is there; nothing throws from here on.
  if (rows_ == 0) leave_blank(batch);
  if (!batch.gaps.empty()) {
    note_change_from(batch.gaps.front());
    open_gaps(batch.gaps);
  }
  write_rows(batch);
  note_size();
}

/// The auxiliary columns that a first batch doesn't name are blank.
void DataTable::leave_blank(const RowBatch& batch) {
  for (size_t i = 0; i < columns_.size(); ++i) {
    if (is_auxiliary(column_ids_[i])) columns_[i].make_blank();
  }
  for (const int32_t index : batch.column_indexes) {
    if (index != -1) columns_[static_cast<size_t>(index)].blank_from = no_blanks;
  }
  has_blanks_ = true;
}

/// Tells the rows of a batch, which are in order, where they will be in the table, and gives how
/// many rows it will have.
size_t DataTable::find_rows(RowBatch& batch) const {
  batch.gaps.clear();
  size_t added = 0;
  auto place = keys_.begin();
  for (BatchRow& row : batch.rows) {
    if (keys_.empty() || row.key > keys_.back()) {
      place = keys_.end();
    } else if (row.key == keys_.back()) {
      place = keys_.end() - 1;
    } else if (*place < row.key) {
      place = std::lower_bound(place, keys_.end(), row.key);
    }
    row.row = static_cast<uint32_t>(static_cast<size_t>(place - keys_.begin()) + added);
    if (place == keys_.end()) {
      ++added;
    } else if (*place == row.key) {
      ++place;
    } else {
      batch.gaps.push_back(static_cast<uint32_t>(place - keys_.begin()));
      ++added;
    }
  }
  return keys_.size() + added;
}

/// Moves rows up so that one is free before each of `gaps`. A free row has the key 0 and nulls.
void DataTable::open_gaps(const std::vector<uint32_t>& gaps) {
  const auto rows = static_cast<ptrdiff_t>(keys_.size());
  const auto open = [&gaps, rows](auto* cells, auto free) {
    auto* end = cells + rows;
    for (auto i = static_cast<ptrdiff_t>(gaps.size()); i-- > 0;) {
      auto* const gap = cells + gaps[static_cast<size_t>(i)];
      std::move_backward(gap, end, end + i + 1);
      gap[i] = free;
      end = gap;
    }
  };
  keys_.resize(keys_.size() + gaps.size());
  open(keys_.data(), int64_t{0});
  for (Column& column : columns_) open(column.in_place(), null_value);
}

/// Column by column in blocks of rows. The values of a row lie together in the batch, far from
/// those of the next key, so they are called for one block ahead.
void DataTable::write_rows(const RowBatch& batch) {
  constexpr size_t at_once = 64;
  const size_t width = batch.column_indexes.size();
  const double* values = batch.values.data();
  std::span<const BatchRow> rest = batch.rows;
  while (!rest.empty()) {
    const auto rows = rest.first(std::min(at_once, rest.size()));
    rest = rest.subspan(rows.size());
    for (const BatchRow& row : rest.first(std::min(at_once, rest.size()))) {
      __builtin_prefetch(values + row.place * width);
      __builtin_prefetch(values + row.place * width + width - 1);
    }
    grow(rows.back().row + size_t{1});
    for (size_t i = 0; i < width; ++i)
      write_column(batch.column_indexes[i], rows, values + i, width);
    write_keys(rows);
  }
}

void DataTable::grow(size_t rows) {
  if (rows <= keys_.size()) return;
  for (Column& column : columns_) {
    if (column.blank_from != no_blanks) continue;
    std::fill(column.cells.data() + keys_.size(), column.cells.data() + rows, null_value);
  }
  keys_.resize(rows, 0);
}

/// The value of a row stands `width` numbers behind that of the place before.
void DataTable::write_column(int32_t index, std::span<const BatchRow> rows, const double* values,
                             size_t width) {
  if (index == -1) return;
  Column& column = columns_[static_cast<size_t>(index)];
  double* cells = column.in_place();
  for (const BatchRow& source : rows) {
    const double value = values[source.place * width];
    note_change(index, static_cast<int32_t>(source.row), cells[source.row], value);
    cells[source.row] = value;
  }
}

/// A row that has no key yet is a new one.
void DataTable::write_keys(std::span<const BatchRow> rows) {
  const int32_t time_column = column_index_of(time_column_id);
  for (const BatchRow& row : rows) {
    if (keys_[row.row] == row.key) continue;
    keys_[row.row] = row.key;
    store_key(row.row, time_column);
  }
}

Window DataTable::window(int32_t column_index, int32_t last_row, int32_t count) const {
  if (last_row < 0) return {};
  const int64_t rows_up_to = static_cast<int64_t>(last_row) + 1;
  int64_t size = std::min<int64_t>(count, rows_up_to);
  if (count == std::numeric_limits<int32_t>::min()) {
    size = rows_up_to;
  } else if (count < -1) {
    throw std::length_error("vector too long");
  }
  if (size <= 0) return {};
  const int64_t first = rows_up_to - size;
  const bool known = static_cast<uint32_t>(column_index) < column_count_;
  const int64_t stored = known ? std::clamp<int64_t>(row_count() - first, 0, size) : 0;
  const double* values =
      stored > 0 ? columns_[static_cast<uint32_t>(column_index)].in_place() + first : nullptr;
  return {values, static_cast<size_t>(stored), static_cast<size_t>(size)};
}

BarTime DataTable::bar_time(int32_t row, const std::string& security, const std::string& market,
                            bool long_period, uint64_t uuid) const {
  if (row < 0 || row >= row_count()) return {};
  std::optional<BarTime> time = decode_row_key(key(row));
  if (!time) return {};
  if (!long_period) {
    trade_day_help::try_get_trade_day_time_tm(key(row), *time, security, market, uuid);
  }
  return *time;
}

/// Column 1 stays and moves to the front, so that a reset needs no memory.
void DataTable::reset() {
  const int32_t time_column = column_index_of(time_column_id);
  const size_t kept = time_column == -1 ? 0 : 1;
  clear_rows();
  if (kept == 1) {
    std::swap(column_ids_.front(), column_ids_[static_cast<size_t>(time_column)]);
    std::swap(columns_.front(), columns_[static_cast<size_t>(time_column)]);
    index_of_id_[time_column_id] = 0;
  }
  column_ids_.resize(kept);
  columns_.resize(kept);
  note_size();
  std::erase_if(index_of_id_, [](const auto& entry) { return entry.first != time_column_id; });
  next_auxiliary_id_ = first_auxiliary_id;
  ++layout_;
  watches_changes_ = false;
}

std::vector<LineAlignedNumbers> DataTable::take_columns(std::span<const int32_t> columns) {
  std::vector<LineAlignedNumbers> taken;
  taken.reserve(columns.size());
  for (const int32_t column : columns) {
    write_blanks_of(column);
    Column& given = columns_[static_cast<size_t>(column)];
    given.in_place();
    taken.push_back(given.cells.take());
  }
  clear_rows();
  return taken;
}

void DataTable::clear_rows() {
  keys_.clear();
  for (Column& column : columns_) {
    column.blank_from = no_blanks;
    column.pending_count = 0;
    if (column.cells.are_lent()) column.cells.lend(nullptr);
  }
  has_blanks_ = false;
  note_size();
  note_change_from(0);
}

}  // namespace quor
