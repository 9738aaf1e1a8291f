#include "core/data_table.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "calendar/trade_day_help.h"
#include "core/model.h"
#include "tables/field_table.h"

namespace quor {

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
  std::vector<double> cells;
  cells.reserve(keys_.capacity());
  cells.assign(keys_.size(), null_value);
  const auto room = [](auto& list) {
    if (list.size() == list.capacity()) list.reserve(std::max<size_t>(8, 2 * list.size()));
  };
  room(column_ids_);
  room(columns_);
  index_of_id_.emplace(id, index);
  column_ids_.push_back(id);
  columns_.push_back({std::move(cells)});
  note_size();
  ++layout_;
  return index;
}

/// A cell that is written with what it holds has not changed. The rows from this one on aren't
/// watched any more, so that a run from here on counts as one change.
void DataTable::note_change(Column& column, int32_t row, double value) {
  const double old = column.cells[static_cast<uint32_t>(row)];
  if (std::bit_cast<uint64_t>(old) == std::bit_cast<uint64_t>(value)) return;
  column.watched_rows = row;
  ++column.changes;
}

void DataTable::note_changed_rows() {
  for (Column& column : columns_) {
    column.watched_rows = 0;
    ++column.changes;
  }
}

void DataTable::note_size() {
  rows_ = static_cast<uint32_t>(keys_.size());
  column_count_ = static_cast<uint32_t>(columns_.size());
}

void DataTable::store_key(size_t row) {
  const int32_t time_column = column_index_of(time_column_id);
  if (time_column == -1) return;
  columns_[static_cast<size_t>(time_column)].cells[row] = static_cast<double>(keys_[row]);
}

void DataTable::insert_row(int64_t key) {
  const auto place = std::lower_bound(keys_.begin(), keys_.end(), key);
  const auto row = place - keys_.begin();
  const size_t rows = keys_.size() + 1;
  const auto room = [rows](auto& cells) {
    if (cells.capacity() < rows) cells.reserve(std::max(rows, 2 * cells.capacity()));
  };
  room(keys_);
  for (Column& column : columns_) room(column.cells);
  if (row + 1 < static_cast<ptrdiff_t>(rows)) note_changed_rows();
  keys_.insert(keys_.begin() + row, key);
  for (Column& column : columns_) column.cells.insert(column.cells.begin() + row, null_value);
  note_size();
  store_key(static_cast<size_t>(row));
}

void DataTable::put_value(int64_t key, uint32_t id, double value) {
  if (key < 1) return;
  const uint32_t row = row_index_of(key);
  if (row == no_row) {
    insert_row(key);
    return;
  }
  set_cell(static_cast<int32_t>(row), add_column(id), value);
}

namespace {

/// Sorts by one byte of the keys after the other, the last one first, and keeps the order of equal
/// keys. Keys of bars differ in a few of their eight bytes only.
void sort_by_key(std::vector<BatchRow>& rows) {
  uint64_t differing = 0;
  for (const BatchRow& row : rows) differing |= static_cast<uint64_t>(row.key ^ rows.front().key);
  std::vector<BatchRow> sorted(rows.size());
  for (int shift = 0; shift < 64; shift += 8) {
    if ((differing >> shift & 0xFF) == 0) continue;
    const auto digit = [shift](const BatchRow& row) { return row.key >> shift & 0xFF; };
    std::array<uint32_t, 257> starts{};
    for (const BatchRow& row : rows) ++starts[static_cast<size_t>(digit(row)) + 1];
    for (size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
    for (const BatchRow& row : rows) sorted[starts[static_cast<size_t>(digit(row))]++] = row;
    rows.swap(sorted);
  }
}

/// The rows of a batch in order of their keys, of equal keys the last only.
std::vector<BatchRow> sorted_rows(const std::vector<int64_t>& keys) {
  std::vector<BatchRow> rows;
  rows.reserve(keys.size());
  for (size_t i = keys.size(); i-- > 0;) {
    if (keys[i] >= 1) rows.push_back({keys[i], static_cast<uint32_t>(i)});
  }
  // Hosts that send the newest bar first are served by the order alone.
  if (!std::ranges::is_sorted(rows, {}, &BatchRow::key)) sort_by_key(rows);
  const auto same_key = [](const BatchRow& a, const BatchRow& b) { return a.key == b.key; };
  rows.erase(std::unique(rows.begin(), rows.end(), same_key), rows.end());
  return rows;
}

}  // namespace

void DataTable::merge_rows(const RowBatch& batch) {
  if (batch.keys.empty()) return;
  const auto behind_all = [this](int64_t key) {
    return key >= 1 && (keys_.empty() || key > keys_.back());
  };
  const bool ascending =
      std::ranges::adjacent_find(batch.keys, std::greater_equal<>()) == batch.keys.end();
  if (ascending && behind_all(batch.keys.front())) {
    append_rows(batch, batch.keys.size(), [](size_t i) { return i; });
    return;
  }
  if (overwrite_batch(batch)) return;
  const std::vector<BatchRow> rows = sorted_rows(batch.keys);
  if (behind_all(rows.front().key)) {
    append_rows(batch, rows.size(), [&rows](size_t i) { return size_t{rows[i].place}; });
  } else {
    interleave_rows(batch, rows);
  }
}

/// Row by row, because the values of a row lie together in the batch.
template <typename Place>
void DataTable::append_rows(const RowBatch& batch, size_t count, const Place& place) {
  const size_t old_rows = keys_.size();
  const size_t rows = old_rows + count;
  const auto room = [rows](auto& cells) {
    if (cells.capacity() < rows) cells.reserve(std::max(rows, 2 * cells.capacity()));
  };
  const size_t width = batch.column_indexes.size();
  std::vector<double*> targets(width, nullptr);
  room(keys_);
  for (Column& column : columns_) room(column.cells);

  // All memory is there; nothing throws from here on.
  for (Column& column : columns_) column.cells.resize(rows, null_value);
  for (size_t c = 0; c < width; ++c) {
    const int32_t column = batch.column_indexes[c];
    if (column != -1) targets[c] = columns_[static_cast<size_t>(column)].cells.data() + old_rows;
  }
  for (size_t i = 0; i < count; ++i) {
    const double* values = batch.values.data() + place(i) * width;
    keys_.push_back(batch.keys[place(i)]);
    for (size_t c = 0; c < width; ++c) {
      if (targets[c] != nullptr) targets[c][i] = values[c];
    }
  }
  note_size();
  for (size_t row = old_rows; row < rows; ++row) store_key(row);
}

/// Serves the bar that forms again and again: a batch whose rows are all in the table.
bool DataTable::overwrite_batch(const RowBatch& batch) {
  const auto in_table = [this](int64_t key) { return key < 1 || has_row(key); };
  if (!std::ranges::all_of(batch.keys, in_table)) return false;
  const size_t width = batch.column_indexes.size();
  for (size_t i = 0; i < batch.keys.size(); ++i) {
    const auto row = static_cast<int32_t>(row_index_of(batch.keys[i]));
    for (size_t c = 0; c < width; ++c) {
      set_cell(row, batch.column_indexes[c], batch.values[i * width + c]);
    }
  }
  return true;
}

void DataTable::interleave_rows(const RowBatch& batch, const std::vector<BatchRow>& order) {
  // Where each old row and each row of the batch lands.
  std::vector<int64_t> keys;
  keys.reserve(keys_.size() + order.size());
  std::vector<uint32_t> old_place(keys_.size());
  std::vector<uint32_t> new_place(order.size());
  std::vector<uint32_t> fresh;
  size_t old_row = 0;
  size_t new_row = 0;
  while (old_row < keys_.size() || new_row < order.size()) {
    const bool take_new =
        new_row < order.size() && (old_row == keys_.size() || order[new_row].key <= keys_[old_row]);
    const bool take_old =
        old_row < keys_.size() && (!take_new || order[new_row].key == keys_[old_row]);
    const int64_t key = take_new ? order[new_row].key : keys_[old_row];
    const auto place = static_cast<uint32_t>(keys.size());
    if (!take_old) fresh.push_back(place);
    if (take_new) new_place[new_row++] = place;
    if (take_old) old_place[old_row++] = place;
    keys.push_back(key);
  }

  std::vector<std::vector<double>> columns(columns_.size());
  for (size_t c = 0; c < columns.size(); ++c) {
    columns[c].assign(keys.size(), null_value);
    for (size_t row = 0; row < old_place.size(); ++row) {
      columns[c][old_place[row]] = columns_[c].cells[row];
    }
  }
  // Row by row, because the values of a row lie together in the batch.
  const size_t width = batch.column_indexes.size();
  for (size_t i = 0; i < order.size(); ++i) {
    const double* values = batch.values.data() + order[i].place * width;
    for (size_t c = 0; c < width; ++c) {
      const int32_t column = batch.column_indexes[c];
      if (column != -1) columns[static_cast<size_t>(column)][new_place[i]] = values[c];
    }
  }
  keys_.swap(keys);
  for (size_t c = 0; c < columns.size(); ++c) columns_[c].cells.swap(columns[c]);
  note_size();
  note_changed_rows();
  for (const uint32_t row : fresh) store_key(row);
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
      stored > 0 ? columns_[static_cast<uint32_t>(column_index)].cells.data() + first : nullptr;
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
}

void DataTable::clear_rows() {
  keys_.clear();
  for (Column& column : columns_) column.cells.clear();
  note_size();
  note_changed_rows();
}

}  // namespace quor
