// The bars in sight and the columns of the run, rows in ascending order of their keys.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "../input/bars.h"
#include "records.h"

namespace quor_host {

/// Values of the rows in sight, by the number of the row. NaN where there is none.
class Series {
 public:
  Series() = default;
  Series(std::span<const double> values, size_t first) : values_(values), first_(first) {}

  double operator[](size_t row) const {
    return values_.empty() ? std::numeric_limits<double>::quiet_NaN() : values_[row - first_];
  }
  bool exists() const { return !values_.empty(); }
  std::span<const double> values() const { return values_; }

 private:
  std::span<const double> values_;
  size_t first_ = 0;
};

/// Where a record shows among the rows in sight; without marks everywhere.
class Marks {
 public:
  explicit Marks(Series series) : series_(series) {}
  bool operator[](size_t row) const { return !series_.exists() || series_[row] == 1.0; }

 private:
  Series series_;
};

/// A value of a column of the run at a row, by the library's ids.
using CellReader = std::function<double(uint32_t row, uint32_t column)>;

class View {
 public:
  /// The bars must outlive it. Fields of theirs without values are read as columns of the run; bars
  /// in order may have the last values of a field alone.
  View(CellReader cells, const Bars& bars, size_t last);

  size_t first_row() const { return first_; }
  size_t row_count() const { return bars_.keys.size(); }
  size_t last_row() const { return row_count() - 1; }
  /// The keys of all rows, in ascending order.
  const std::vector<int64_t>& keys() const { return order_.empty() ? bars_.keys : sorted_keys_; }
  bool has(uint32_t field) const { return bars_.columns.contains(field); }

  /// A value of a column or of a field of the bars, by the library's ids, in sight or not. NaN
  /// where there is none, and for one that is too large for any axis.
  double value(std::optional<uint32_t> column, size_t row) const;
  Series series(std::optional<uint32_t> column) const;
  Series series(const Record& record, const char* key) const { return series(record.column(key)); }
  Marks marks(const Record& record, const char* key = "Field1VisibleId") const {
    return Marks(series(record, key));
  }

  /// The first row that the record is about: some look at the last bar only.
  size_t first_row(const Record& record) const;
  /// The rows from there where it shows.
  std::vector<size_t> rows(const Record& record) const;

 private:
  CellReader cells_;
  const Bars& bars_;
  std::vector<size_t> order_;  ///< where the bar of a row stands; empty if the file is in order
  std::vector<int64_t> sorted_keys_;  ///< empty with the order
  size_t first_ = 0;
  mutable std::map<uint32_t, std::vector<double>> read_;  ///< columns that have been asked for
};

}  // namespace quor_host
