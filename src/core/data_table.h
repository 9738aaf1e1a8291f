// The bars of one instance: rows keyed by date-time, columns keyed by id, every cell a double.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "calendar/civil_time.h"
#include "core/row_changes.h"
#include "core/value.h"
#include "platform/line_aligned.h"

namespace quor {

/// The values of consecutive rows of a column, oldest first, read in place. Rows outside the table
/// and rows of an unknown column read as null. Valid until the table changes its shape, so a word
/// takes it after all evaluations of the bar.
class Window {
 public:
  Window() = default;
  Window(const double* values, size_t stored, size_t size)
      : values_(values), stored_(stored), size_(size) {}

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  double operator[](size_t i) const { return i < stored_ ? values_[i] : null_value; }
  double back() const { return (*this)[size_ - 1]; }

 private:
  const double* values_ = nullptr;
  size_t stored_ = 0;
  size_t size_ = 0;
};

/// A row of a batch. Its values stand at its place.
struct BatchRow {
  int64_t key;
  uint32_t place;
  uint32_t row;  ///< of the table; known while the table merges
};

/// New values for some columns of some rows, row by row. One batch after the other may use the same
/// memory.
struct RowBatch {
  std::vector<int32_t> column_indexes;  ///< where each value of a row goes; -1 for nowhere
  std::vector<BatchRow> rows;           ///< any order; of equal keys the last row wins whole
  std::vector<double, LineAligned<double>> values;  ///< column_indexes.size() to a place
  std::vector<BatchRow> sorted;                     ///< working memory of the merge
  std::vector<uint32_t> gaps;  ///< the rows of the table that new rows go before
};

/// New values for a column, row by row.
struct ColumnValues {
  int32_t column_index;
  const double* values;
  bool are_lent = false;  ///< to be read in place
};

/// The values of a column. Their number is the table's; beyond it there may be room for more.
class Cells {
 public:
  double operator[](size_t row) const { return values_[row]; }
  double& operator[](size_t row) { return values_[row]; }
  double* data() const { return values_; }

  size_t room() const { return room_; }
  bool are_lent() const { return values_ != own_.get(); }
  /// Room for as many values, not set, of which the first `kept` are those that are there. Lent
  /// values become own ones.
  void make_room(size_t room, size_t kept);
  /// Values of somebody else, which nobody writes; the room of the own ones is given up.
  void lend(const double* values);
  /// Gives the memory of own values away.
  LineAlignedNumbers take();

 private:
  LineAlignedNumbers own_;
  double* values_ = nullptr;
  size_t room_ = 0;
};

/// Owned by the pool and touched only under the instance's lock. A row is a 0-based index into the
/// ascending keys; row indexes move when a row is inserted before them.
class DataTable {
  struct Column {
    Cells cells;
    int32_t blank_from = no_blanks;  ///< row; nulls belong from here on, but are not written
    bool is_unread = false;
    // A number that belongs in some rows, but is written only once cells are asked for in place.
    mutable uint32_t pending_count = 0;
    uint32_t pending_from = 0;  ///< row
    double pending_value = null_value;
    uint64_t changed_in = 0;  ///< which era

    bool is_pending(uint32_t row) const { return row - pending_from < pending_count; }
    double at(uint32_t row) const { return is_pending(row) ? pending_value : cells[row]; }
    /// All cells, none pending. They are what they were, so that readers come here as well.
    double* in_place() const {
      if (pending_count != 0) write_pending();
      return cells.data();
    }
    void write_pending() const;
    /// For new rows, of which nothing is pending.
    void make_blank() {
      blank_from = is_unread ? no_blanks : 0;
      pending_count = 0;
    }
  };

 public:
  /// Behind any row.
  static constexpr int32_t no_blanks = std::numeric_limits<int32_t>::max();

  /// The first id that lines and calls get. The common fields of a host lie below.
  static constexpr uint32_t first_auxiliary_id = 20000;

  int32_t row_count() const { return static_cast<int32_t>(rows_); }
  uint32_t column_count() const { return column_count_; }
  uint32_t column_id(uint32_t index) const { return column_ids_[index]; }
  int64_t key(int32_t row) const { return keys_[static_cast<size_t>(row)]; }

  /// The position of the key, or all-ones.
  uint32_t row_index_of(int64_t key) const;
  /// The position of the column, or -1.
  int32_t column_index_of(uint32_t id) const;

  /// Adds a column of nulls unless the id exists; gives its index. The id all-ones gives -1.
  int32_t add_column(uint32_t id);
  /// The next free auxiliary column id, from 20000 up.
  uint32_t take_auxiliary_id() { return next_auxiliary_id_++; }
  uint32_t next_auxiliary_id() const { return next_auxiliary_id_; }
  /// Counts the columns ever added and the resets, so that a reader knows when indexes moved.
  uint64_t layout() const { return layout_; }

  /// To be told that nobody reads or writes an auxiliary column, whose cells then may hold
  /// anything.
  void leave_unread(int32_t column) { columns_[static_cast<size_t>(column)].is_unread = true; }

  /// Sets a cell of an existing row, adding the column if it is missing; a key without a row makes
  /// a row that holds the key in column 1 and nulls elsewhere. Keys below 1 add nothing.
  void put_value(int64_t key, uint32_t id, double value);
  /// Fills an empty table: keys that are positive and ascend, and for some columns the values, one
  /// per key. All other cells are null; column 1 holds the key. The nulls of auxiliary columns stay
  /// blank: nobody reads them before `write_blanks`, as a run over a whole history writes most of
  /// these cells anyway. The same goes for the columns that a first batch doesn't name.
  /// Values that are lent stay where they are: until the rows are cleared or others come, nobody
  /// may change or drop them. Where nobody reads column 1, it may hold anything.
  void fill(std::span<const int64_t> keys, std::span<const ColumnValues> columns,
            bool reads_keys = true);
  /// To be told from which row on auxiliary columns that are added are to be blank; none with
  /// `no_blanks`, as at the beginning and after `write_blanks`.
  void blank_new_columns_from(int32_t row) { new_blank_from_ = row; }
  /// Writes the nulls of all blank cells, or of those before a row, or of those of a column.
  void write_blanks();
  void write_blanks_before(int32_t row);
  void write_blanks_of(int32_t column);
  /// To be told that all cells of some rows are going to be written.
  void claim_blanks(int32_t column, int32_t first, int32_t end);
  bool is_blank(int32_t column, int32_t row) const {
    return columns_[static_cast<size_t>(column)].blank_from <= row;
  }
  /// Gives blank rows a number that is written once somebody asks for cells of the column in place:
  /// most columns of counts and marks hold one number all the way, and often nobody ever looks at
  /// them. False, with nothing done, where the number has to be written now.
  bool fill_later(int32_t column, int32_t first, int32_t end, double value);
  /// Whether the cells from a row on are or hold these values, bit by bit, and none is blank.
  bool holds(int32_t column, int32_t row, std::span<const double> values) const;
  /// The same with one value for all of `count` cells.
  bool holds(int32_t column, int32_t row, size_t count, double value) const;
  /// Takes a batch in one merge. Cells of existing rows that the batch doesn't name keep their
  /// values, those of new rows are null; column 1 holds the key.
  void merge_rows(RowBatch& batch);

  /// The cells of one row, read in place. A row outside the table reads as nulls. Valid until the
  /// table changes its shape.
  class Row {
   public:
    double operator[](int32_t column) const {
      return static_cast<uint32_t>(column) < count_
                 ? columns_[static_cast<uint32_t>(column)].at(row_)
                 : null_value;
    }

   private:
    friend class DataTable;
    Row(const std::vector<Column>& columns, uint32_t count, uint32_t row)
        : columns_(columns.data()), count_(count), row_(row) {}

    const Column* columns_;
    uint32_t count_;
    uint32_t row_;
  };

  Row row(int32_t row) const {
    const bool inside = static_cast<uint32_t>(row) < rows_;
    return {columns_, inside ? column_count_ : 0, static_cast<uint32_t>(row)};
  }

  /// All cells of a column, oldest first; none of a column that isn't there. Valid as a window is.
  std::span<const double> cells(int32_t column) const {
    if (static_cast<uint32_t>(column) >= column_count_) return {};
    return {columns_[static_cast<uint32_t>(column)].in_place(), rows_};
  }

  /// The cells of a column that is there, from a row on to be written.
  std::span<double> writable_cells(int32_t column, int32_t row) {
    if (watches_changes_) changes_.note(row);
    return std::span(columns_[static_cast<uint32_t>(column)].in_place(), rows_)
        .subspan(static_cast<size_t>(row));
  }

  /// Null for a row or a column that isn't there.
  double cell(int64_t row, int32_t column) const {
    return is_cell(row, column)
               ? columns_[static_cast<uint32_t>(column)].at(static_cast<uint32_t>(row))
               : null_value;
  }
  void set_cell(int32_t row, int32_t column, double value) {
    if (!is_cell(row, column)) return;
    const Column& cells = columns_[static_cast<uint32_t>(column)];
    if (has_same_bits(cells.at(static_cast<uint32_t>(row)), value)) return;
    if (watches_changes_) changes_.note(row);
    cells.in_place()[row] = value;
  }

  /// Has changes by `set_cell` and `writable_cells` noted from the first call on.
  const RowChanges& watch_changes() {
    watches_changes_ = true;
    return changes_;
  }

  /// The first row that intake has changed since the last call: by another value in a cell, by a
  /// row before it, or by its end. Results that a script writes don't count.
  int32_t take_first_changed_row() { return std::exchange(first_changed_row_, no_change); }

  /// Whether intake has changed a cell of the column since `forget_changes`.
  bool has_changed(int32_t column) const {
    return columns_[static_cast<size_t>(column)].changed_in == era_;
  }
  /// Whether it has changed more than cells of fields: rows went or moved, or results were
  /// overwritten. A row behind all others shows by their number.
  bool has_changed_more() const { return more_changed_in_ == era_; }
  /// To be told that a script writes the column anew.
  void note_change_of(int32_t column) { columns_[static_cast<size_t>(column)].changed_in = era_; }
  void forget_changes() { ++era_; }

  /// The last `count` rows up to and including `last_row`, fewer where the table begins. A negative
  /// last row and a count of 0 or -1 give an empty window, the count -2147483648 the whole column
  /// up to the row; any other count throws std::length_error with "vector too long".
  Window window(int32_t column_index, int32_t last_row, int32_t count) const;
  Window column_window(uint32_t id, int32_t last_row, int32_t count) const {
    return window(column_index_of(id), last_row, count);
  }

  /// The moment that a row's key spells, with the date of its trading day unless the period is a
  /// day or longer. Blank for a row that isn't there and for a key that spells no moment.
  BarTime bar_time(int32_t row, const std::string& security, const std::string& market,
                   bool long_period, uint64_t uuid) const;

  /// Drops every column but 1, and all rows.
  void reset();
  /// Drops all rows; the columns stay.
  void clear_rows();
  /// Gives the values of some columns away, of which none is lent or comes twice, and drops all
  /// rows.
  std::vector<LineAlignedNumbers> take_columns(std::span<const int32_t> columns);

 private:
  static constexpr uint32_t no_row = 0xFFFFFFFF;

  static constexpr int32_t no_change = std::numeric_limits<int32_t>::max();

  void note_change(int32_t column, int32_t row, double before, double value);
  void note_change_from(size_t row);

  bool is_cell(int64_t row, int32_t column) const {
    return static_cast<uint64_t>(row) < rows_ && static_cast<uint32_t>(column) < column_count_;
  }
  void note_size();
  bool is_auxiliary(uint32_t id) const {
    return id >= first_auxiliary_id && id < next_auxiliary_id_;
  }
  static void write_blanks_before(Column& column, int32_t row);
  void insert_row(int64_t key);
  void store_key(size_t row, int32_t time_column);
  void write_column(int32_t index, std::span<const BatchRow> rows, const double* values,
                    size_t width);
  void write_keys(std::span<const BatchRow> rows);
  void grow(size_t rows);
  void make_room(size_t rows);
  size_t find_rows(RowBatch& batch) const;
  void leave_blank(const RowBatch& batch);
  void open_gaps(const std::vector<uint32_t>& gaps);
  void write_rows(const RowBatch& batch);

  std::vector<int64_t> keys_;  ///< ascending, no key twice
  std::vector<uint32_t> column_ids_;
  std::vector<Column> columns_;  ///< parallel to `column_ids_`
  // The sizes of `keys_` and `columns_`, ready for the check of every access to a cell.
  uint32_t rows_ = 0;
  uint32_t column_count_ = 0;
  std::unordered_map<uint32_t, int32_t> index_of_id_;
  uint32_t next_auxiliary_id_ = first_auxiliary_id;
  uint64_t layout_ = 0;
  int32_t first_changed_row_ = no_change;
  uint64_t era_ = 1;  ///< begins with `forget_changes`
  uint64_t more_changed_in_ = 0;
  bool has_blanks_ = false;
  int32_t new_blank_from_ = no_blanks;
  bool watches_changes_ = false;
  RowChanges changes_;
};

}  // namespace quor
