// The engine behind its face for C++, for the bench of the npm package to be held against. Takes
// bars of doubles from standard input, the key and five fields each column after column, and prints
// for each indicator: name, script, ns per bar of a whole run, ns per bar of the calculation alone,
// us of one new bar, and the last value.
//   engine_bench BARS < columns
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "plain_loops.h"
#include "stopwatch.h"

namespace quor_bench {
namespace {

using quor::engine::Field;
using quor::engine::Script;

constexpr uint32_t field_ids[] = {7, 8, 9, 11, 13};

struct Columns {
  std::vector<int64_t> keys;
  std::vector<Series> fields;
};

Series read_series(size_t count) {
  Series series(count);
  if (std::fread(series.data(), sizeof(double), count, stdin) == count) return series;
  std::fprintf(stderr, "engine_bench: the bars end too soon\n");
  std::exit(1);
}

Columns read_columns(size_t count) {
  Columns columns;
  const Series keys = read_series(count);
  columns.keys.assign(keys.begin(), keys.end());
  for (size_t i = 0; i < std::size(field_ids); ++i) columns.fields.push_back(read_series(count));
  return columns;
}

/// One script over the bars.
class Work {
 public:
  Work(std::string_view source, const Columns& columns)
      : columns_(columns), script_(std::string(source)), moved_{{columns.keys.back()}, {}} {
    for (const Series& field : columns.fields) moved_.fields.push_back({field.back() + 1});
  }

  /// From bars to the arrays of all lines.
  void run() {
    script_.restart({});
    feed(columns_, 0, columns_.keys.size());
    calculate(0);
    for (size_t line = 0; line < script_.lines().size(); ++line) {
      const auto cells = cells_of(line);
      result_.assign(cells.begin(), cells.end());
    }
  }

  /// Takes the bar anew and calculates from it on, with the last value of each line.
  void take_bar(size_t row) {
    feed(columns_, row, 1);
    calculate_from(row);
  }
  /// The same with the last bar, and with other values, by turns: nothing may be left out.
  void take_tick() {
    has_moved_ = !has_moved_;
    const size_t last = columns_.keys.size() - 1;
    has_moved_ ? feed(moved_, 0, 1) : feed(columns_, last, 1);
    calculate_from(last);
  }

  double last() const { return last_; }

 private:
  void feed(const Columns& columns, size_t first, size_t count) {
    fields_.clear();
    for (const uint32_t id : script_.report().fields) {
      for (size_t i = 0; i < std::size(field_ids); ++i) {
        if (field_ids[i] == id) fields_.push_back({id, {&columns.fields[i][first], count}});
      }
    }
    script_.set_rows({&columns.keys[first], count}, fields_);
  }

  void calculate_from(size_t row) {
    calculate(static_cast<uint32_t>(row));
    for (size_t line = 0; line < script_.lines().size(); ++line) last_ = cells_of(line).back();
  }

  void calculate(uint32_t first) {
    if (!script_.calculate(first, true)) return;
    std::fprintf(stderr, "engine_bench: a script failed\n");
    std::exit(1);
  }

  std::span<const double> cells_of(size_t line) const {
    return script_.column(script_.lines()[line].column);
  }

  const Columns& columns_;
  Script script_;
  std::vector<Field> fields_;
  Series result_;
  double last_ = 0.0;
  Columns moved_;  ///< the last bar with other values
  bool has_moved_ = false;
};

void measure(const Yardstick& yardstick, const Columns& columns) {
  Work work(yardstick.script, columns);
  const size_t count = columns.keys.size();
  const double per_bar = 1e9 / static_cast<double>(count);
  const double run = per_bar * quickest([&] { work.run(); });
  const double calculation = per_bar * quickest([&] { work.take_bar(0); });
  const double bar = 1e6 * quickest_of_many(1000, [&] { work.take_tick(); });
  std::printf("%s\t%s\t%.2f\t%.2f\t%.3f\t%.17g\n", yardstick.name.data(), yardstick.script.data(),
              run, calculation, bar, work.last());
}

}  // namespace
}  // namespace quor_bench

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "engine_bench BARS < columns\n");
    return 1;
  }
  const auto columns = quor_bench::read_columns(std::strtoul(arguments[1], nullptr, 10));
  for (const auto& yardstick : quor_bench::yardsticks()) quor_bench::measure(yardstick, columns);
  return 0;
}
