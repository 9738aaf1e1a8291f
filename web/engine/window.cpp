#include "window.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <span>

#include "host/input/fields.h"

namespace quor_host {
namespace {

static_assert(std::endian::native == std::endian::little, "doubles go out as they are");

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

using Values = std::span<const double>;

/// What a bucket of values becomes.
using Reduce = double (*)(Values values);

double first_of(Values values) {
  const auto found = std::ranges::find_if(values, [](double value) { return !std::isnan(value); });
  return found == values.end() ? nan : *found;
}

double last_of(Values values) {
  for (size_t i = values.size(); i-- > 0;) {
    if (!std::isnan(values[i])) return values[i];
  }
  return nan;
}

double most_of(Values values) {
  double most = nan;
  for (const double value : values) most = std::fmax(most, value);
  return most;
}

double least_of(Values values) {
  double least = nan;
  for (const double value : values) least = std::fmin(least, value);
  return least;
}

double sum_of(Values values) {
  double sum = nan;
  for (const double value : values) {
    if (!std::isnan(value)) sum = std::isnan(sum) ? value : sum + value;
  }
  return sum;
}

double any_of(Values values) {
  return std::ranges::find(values, 1.0) == values.end() ? first_of(values) : 1.0;
}

struct Thinning {
  const char* name;
  Reduce reduce;  ///< null for a pair
};
constexpr Thinning any{"any", any_of};
constexpr Thinning pair{"pair", nullptr};

struct FieldThinning {
  uint32_t field;
  Thinning thinning;
};
constexpr FieldThinning field_thinnings[] = {
    {field_open, {"first", first_of}},   {field_high, {"max", most_of}},
    {field_low, {"min", least_of}},      {field_close, {"last", last_of}},
    {field_volume, {"sum", sum_of}},     {field_amount, {"sum", sum_of}},
    {overlay_column, {"last", last_of}},
};

const Thinning& thinning_of(const Drawing& drawing, uint32_t column) {
  const auto* const row = std::ranges::find(field_thinnings, column, &FieldThinning::field);
  if (row != std::end(field_thinnings)) return row->thinning;
  return drawing.marks.contains(column) ? any : pair;
}

/// The smallest and the largest value in the order in which they come, of those that are shown.
std::pair<double, double> ends_of(Values values, Values marks) {
  size_t low = values.size();
  size_t high = values.size();
  for (size_t i = 0; i < values.size(); ++i) {
    if (std::isnan(values[i]) || (!marks.empty() && marks[i] != 1.0)) continue;
    if (low == values.size() || values[i] < values[low]) low = i;
    if (high == values.size() || values[i] > values[high]) high = i;
  }
  if (low == values.size()) return {nan, nan};
  const auto [earlier, later] = std::minmax(low, high);
  return {values[earlier], values[later]};
}

/// All that the drawing needs.
std::vector<uint32_t> columns_in_sight(const Desk& desk) {
  std::vector<uint32_t> columns;
  if (desk.run) {
    columns = columns_of(desk.drawing, *desk.run, desk.bars());
  } else {
    for (const auto& [id, values] : desk.bars().columns) columns.push_back(id);
  }
  if (desk.overlay) columns.push_back(overlay_column);
  return columns;
}

/// Rows in buckets, and the bytes that they become.
class Writer {
 public:
  Writer(const Desk& desk, const Window& window)
      : desk_(desk),
        window_(window),
        bucket_(std::max<size_t>(1, (rows() + window.points - 1) / window.points)),
        count_((rows() + bucket_ - 1) / bucket_) {}

  std::string bytes() {
    add_each([](size_t row) { return static_cast<double>(row); });
    const auto& keys = desk_.bars().keys;
    add_each([&keys](size_t row) { return static_cast<double>(keys[row]); });
    for (const uint32_t column : columns_in_sight(desk_)) add(column);
    return header() + numbers_;
  }

 private:
  size_t rows() const { return window_.to - window_.from; }

  void add(double value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    numbers_.append(bytes, sizeof value);
  }

  template <typename Give>
  void add_each(const Give& give) {
    for (size_t row = window_.from; row < window_.to; row += bucket_) add(give(row));
  }

  /// The part of a column at a bucket.
  Values part(Values values, size_t row) const {
    return values.subspan(row, std::min(bucket_, window_.to - row));
  }

  void add(uint32_t column) {
    const Thinning& thinning = thinning_of(desk_.drawing, column);
    columns_.push_back({{"id", column}, {"as", bucket_ == 1 ? "raw" : thinning.name}});
    const Values values = desk_.cells(column);
    const bool is_there = values.size() >= window_.to;
    const bool is_pair = bucket_ > 1 && thinning.reduce == nullptr;
    if (!is_there) {
      numbers_.reserve(numbers_.size() + count_ * sizeof(double));
      add_each([](size_t) { return nan; });
      if (is_pair) add_each([](size_t) { return nan; });
    } else if (bucket_ == 1) {
      add_each([&](size_t row) { return values[row]; });
    } else if (!is_pair) {
      add_each([&](size_t row) { return thinning.reduce(part(values, row)); });
    } else {
      add_pair(values, desk_.drawing.marks.of(column));
    }
  }

  void add_pair(Values values, std::optional<uint32_t> mark) {
    Values marks = mark ? desk_.cells(*mark) : Values();
    if (marks.size() < window_.to) marks = {};
    std::vector<double> later;
    for (size_t row = window_.from; row < window_.to; row += bucket_) {
      const auto [first, second] =
          ends_of(part(values, row), marks.empty() ? marks : part(marks, row));
      add(first);
      later.push_back(second);
    }
    for (const double value : later) add(value);
  }

  std::string header() const {
    const Json json = {{"from", window_.from}, {"to", window_.to}, {"rows", desk_.row_count()},
                       {"bucket", bucket_},    {"count", count_},  {"columns", columns_}};
    std::string text = json_text(json);
    while ((text.size() + sizeof(uint32_t)) % sizeof(double) != 0) text += ' ';
    const auto size = static_cast<uint32_t>(text.size());
    char bytes[sizeof size];
    std::memcpy(bytes, &size, sizeof size);
    return std::string(bytes, sizeof size) + text;
  }

  const Desk& desk_;
  const Window& window_;
  size_t bucket_;
  size_t count_;
  Json columns_ = Json::array();
  std::string numbers_;
};

}  // namespace

std::string window_bytes(const Desk& desk, Window window) {
  window.to = std::min(window.to, desk.row_count());
  window.from = std::min(window.from, window.to);
  return Writer(desk, window).bytes();
}

}  // namespace quor_host
