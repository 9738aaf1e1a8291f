#include "core/data_table.h"

#include <algorithm>
#include <numeric>
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
  const int32_t index = static_cast<int32_t>(columns_.size());
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
  columns_.push_back(std::move(cells));
  ++layout_;
  return index;
}

void DataTable::store_key(size_t row) {
  const int32_t time_column = column_index_of(time_column_id);
  if (time_column == -1) return;
  columns_[static_cast<size_t>(time_column)][row] = static_cast<double>(keys_[row]);
}

void DataTable::insert_row(int64_t key) {
  const auto place = std::lower_bound(keys_.begin(), keys_.end(), key);
  const auto row = place - keys_.begin();
  const size_t rows = keys_.size() + 1;
  const auto room = [rows](auto& cells) {
    if (cells.capacity() < rows) cells.reserve(std::max(rows, 2 * cells.capacity()));
  };
  room(keys_);
  std::ranges::for_each(columns_, room);
  keys_.insert(keys_.begin() + row, key);
  for (auto& cells : columns_) cells.insert(cells.begin() + row, null_value);
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

void DataTable::merge_rows(const RowBatch& batch) {
  if (batch.keys.empty()) return;
  const bool ascending =
      std::ranges::adjacent_find(batch.keys, std::greater_equal<>()) == batch.keys.end();
  if (ascending && batch.keys.front() >= 1 &&
      (keys_.empty() || batch.keys.front() > keys_.back())) {
    append_batch(batch);
  } else if (!overwrite_batch(batch)) {
    interleave_batch(batch);
  }
}

void DataTable::append_batch(const RowBatch& batch) {
  const size_t old_rows = keys_.size();
  const size_t rows = old_rows + batch.keys.size();
  const auto room = [rows](auto& cells) {
    if (cells.capacity() < rows) cells.reserve(std::max(rows, 2 * cells.capacity()));
  };
  room(keys_);
  std::ranges::for_each(columns_, room);

  keys_.insert(keys_.end(), batch.keys.begin(), batch.keys.end());
  for (auto& cells : columns_) cells.resize(rows, null_value);
  const size_t width = batch.column_indexes.size();
  for (size_t c = 0; c < width; ++c) {
    if (batch.column_indexes[c] == -1) continue;
    double* cells = columns_[static_cast<size_t>(batch.column_indexes[c])].data() + old_rows;
    const double* value = batch.values.data() + c;
    for (size_t row = 0; row < batch.keys.size(); ++row, value += width) cells[row] = *value;
  }
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

void DataTable::interleave_batch(const RowBatch& batch) {
  // Rows of the batch by key, of equal keys the last only.
  std::vector<uint32_t> order(batch.keys.size());
  std::iota(order.begin(), order.end(), 0U);
  std::ranges::sort(order, [&batch](uint32_t a, uint32_t b) {
    return batch.keys[a] != batch.keys[b] ? batch.keys[a] < batch.keys[b] : a > b;
  });
  const auto same_key = [&batch](uint32_t a, uint32_t b) { return batch.keys[a] == batch.keys[b]; };
  order.erase(std::unique(order.begin(), order.end(), same_key), order.end());
  std::erase_if(order, [&batch](uint32_t i) { return batch.keys[i] < 1; });

  // Where each old row and each row of the batch lands.
  std::vector<int64_t> keys;
  keys.reserve(keys_.size() + order.size());
  std::vector<uint32_t> old_place(keys_.size());
  std::vector<uint32_t> new_place(order.size());
  std::vector<uint32_t> fresh;
  size_t old_row = 0;
  size_t new_row = 0;
  while (old_row < keys_.size() || new_row < order.size()) {
    const bool take_new = new_row < order.size() &&
                          (old_row == keys_.size() || batch.keys[order[new_row]] <= keys_[old_row]);
    const bool take_old =
        old_row < keys_.size() && (!take_new || batch.keys[order[new_row]] == keys_[old_row]);
    const int64_t key = take_new ? batch.keys[order[new_row]] : keys_[old_row];
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
      columns[c][old_place[row]] = columns_[c][row];
    }
  }
  const size_t width = batch.column_indexes.size();
  for (size_t c = 0; c < width; ++c) {
    if (batch.column_indexes[c] == -1) continue;
    std::vector<double>& cells = columns[static_cast<size_t>(batch.column_indexes[c])];
    for (size_t i = 0; i < order.size(); ++i) {
      cells[new_place[i]] = batch.values[order[i] * width + c];
    }
  }
  keys_.swap(keys);
  columns_.swap(columns);
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
  const bool known = static_cast<uint32_t>(column_index) < columns_.size();
  const int64_t stored = known ? std::clamp<int64_t>(row_count() - first, 0, size) : 0;
  const double* values =
      stored > 0 ? columns_[static_cast<uint32_t>(column_index)].data() + first : nullptr;
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
    columns_.front().swap(columns_[static_cast<size_t>(time_column)]);
    index_of_id_[time_column_id] = 0;
  }
  column_ids_.resize(kept);
  columns_.resize(kept);
  std::erase_if(index_of_id_, [](const auto& entry) { return entry.first != time_column_id; });
  next_auxiliary_id_ = first_auxiliary_id;
  ++layout_;
}

void DataTable::clear_rows() {
  keys_.clear();
  for (auto& cells : columns_) cells.clear();
}

}  // namespace quor
