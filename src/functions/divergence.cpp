// Two series that disagree: price makes a new extreme and the other series doesn't.
#include <algorithm>

#include "core/call.h"
#include "functions/row_words.h"
#include "functions/series.h"
#include "functions/window_extremes.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The bars that are searched, followed by those at which the bars to the right of the last ones
/// are looked up. Past both there is nothing that beats anything.
struct SearchedBars {
  Window searched;
  Window following;

  int64_t size() const { return static_cast<int64_t>(searched.size()); }
  int64_t reach() const { return size() + static_cast<int64_t>(following.size()); }
  double operator[](int64_t i) const {
    return i < size() ? searched[static_cast<size_t>(i)]
                      : following[static_cast<size_t>(i - size())];
  }
};

template <Extreme extreme>
bool is_candidate(const SearchedBars& bars, int64_t i, int32_t side) {
  const auto beaten_in = [&bars, i](int64_t first, int64_t end) {
    for (int64_t j = first; j < end; ++j) {
      if (beats<extreme>(bars[j], bars[i])) return true;
    }
    return false;
  };
  if (i >= side && beaten_in(i - side, i)) return false;
  return !beaten_in(i + 1, std::min(i + 1 + side, bars.reach()));
}

/// The first candidate and the greatest later one above 0.0; -1 where there is none.
struct PeakPair {
  int64_t first = -1;
  int64_t second = -1;
};

template <Extreme extreme>
PeakPair find_pair(const SearchedBars& bars, int32_t side) {
  PeakPair found;
  double greatest = 0.0;
  for (int64_t i = 0; i < bars.size(); ++i) {
    if (found.first >= 0 && !(bars[i] > greatest)) continue;
    if (!is_candidate<extreme>(bars, i, side)) continue;
    if (found.first < 0) {
      found.first = i;
    } else {
      found.second = i;
      greatest = bars[i];
    }
  }
  return found;
}

template <Extreme extreme>
double diverges(const SearchedBars& a, const Window& b, int32_t side) {
  const PeakPair pair = find_pair<extreme>(a, side);
  if (pair.second < 0) return 0.0;
  const double outermost = extreme_of<extreme>(a.searched, a.searched.size());
  if (a[pair.first] != outermost && a[pair.second] != outermost) return 0.0;
  const double other = extreme_of<extreme>(b, b.size());
  const bool apart = beats<extreme>(other, b[static_cast<size_t>(pair.first)]) &&
                     beats<extreme>(other, b[static_cast<size_t>(pair.second)]);
  return apart ? 1.0 : 0.0;
}

/// Whether A's outermost of two peaks (T = 1) or troughs (T = -1) among the W bars before this one
/// stands at a bar where B isn't at its own outermost.
class DIVERGENCE final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;
  Status execute(const Call& call) const override {
    if (call.scan) return call.check_count(5);
    Status status = give_columns(call);
    if (failed(status)) return status;
    int32_t numbers[2];
    for (size_t i = 0; i < 2; ++i) {
      status = evaluate_integer(call, i + 2, numbers[i]);
      if (failed(status)) return status;
    }
    const auto [side, width] = numbers;
    call.result = 0.0;
    if (call.table().row_count() < width || call.row < int64_t{side} + width) return Status::ok;
    int32_t type = 0;
    status = evaluate_integer(call, 4, type);
    if (!failed(status)) call.result = test(call, side, width, type);
    return status;
  }

 private:
  static Status evaluate_integer(const Call& call, size_t position, int32_t& integer) {
    double value = null_value;
    const Status status = call.evaluate(position, value);
    integer = to_int(value);
    return status;
  }

  /// Stores B's value of this bar. A series without a column gets one of the call's: A's is filled
  /// at once, for all rows that there are, and never again.
  static Status give_columns(const Call& call) {
    Variable& a = call.argument(0);
    if (!a.has_column()) {
      give_own_column(call, a);
      const Status status = fill(call, a);
      if (failed(status)) return status;
    }
    double value = null_value;
    const Status status = call.evaluate(1, value);
    if (!failed(status)) store_in_own_column(call, call.argument(1), value);
    return status;
  }

  static Status fill(const Call& call, Variable& a) {
    const int32_t rows = call.table().row_count();
    for (int32_t row = 0; row < rows; ++row) {
      double value = null_value;
      const Status status = call.evaluate_at(0, row, value);
      if (failed(status)) return status;
      call.table().set_cell(row, a.column_index, value);
    }
    return Status::ok;
  }

  static double test(const Call& call, int32_t side, int32_t width, int32_t type) {
    const DataTable& table = call.table();
    const int32_t a_column = call.argument(0).column_index;
    const SearchedBars a = {table.window(a_column, call.row - 1, width),
                            table.window(a_column, call.row + 1, side)};
    const Window b = table.window(call.argument(1).column_index, call.row - 1, width);
    if (type == 1) return diverges<Extreme::greatest>(a, b, side);
    if (type == -1) return diverges<Extreme::smallest>(a, b, side);
    return 0.0;
  }
};

constexpr WordRow divergence_rows[] = {word_row<DIVERGENCE>(
    "DIVERGENCE", 111, reads_forward | hides_state | periods_from(2, can_fail))};

}  // namespace

std::span<const WordRow> divergence_words() { return divergence_rows; }

}  // namespace quor
