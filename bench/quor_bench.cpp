// What a client waits for, as figures: well-known indicators in full and bar by bar, each beside a
// plain loop of the same formula in the same run; lines as charts draw them, beside exact loops and
// peers; then intake, reading and compiling.
#include <simdjson.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "bench_host.h"
#include "exact_loops.h"
#include "peers.h"
#include "plain_loops.h"
#include "stopwatch.h"

namespace quor_bench {
namespace {

constexpr size_t sizes[] = {10000, 200000};

/// A quick engine with other results would be of no use.
void check_equal(const Yardstick& yardstick, const BenchHost& host, const Series& expected) {
  // A few words start one bar later than the plain loop.
  constexpr uint32_t warm = 300;
  const int32_t column = host.column_of("A");
  for (uint32_t row = warm; row < host.row_count(); ++row) {
    const double value = host.value(row, column);
    if (std::fabs(value - expected[row]) <= 1e-6 * std::max(1.0, std::fabs(value))) continue;
    std::fprintf(stderr, "%s: %.17g and not %.17g at row %u\n", yardstick.name.data(), value,
                 expected[row], row);
    std::exit(1);
  }
}

struct Figures {
  double engine = 0.0;   ///< nanoseconds per bar in full
  double plain = 0.0;    ///< the same of the plain loop
  double new_bar = 0.0;  ///< microseconds of the calculation of one more bar
};

/// Seconds of a run over a bar of which everything has changed.
template <typename Run>
double seconds_of_bar(int many, const BenchHost& host, uint32_t row, const Run& run) {
  const double touched = quickest_of_many(many, [&] { host.touch(row); });
  const double both = quickest_of_many(many, [&] {
    host.touch(row);
    run(row);
  });
  return both - touched;
}

Figures measure(const Yardstick& yardstick, size_t rows) {
  BenchHost host;
  host.compile(std::string("F:=O+H+L+C+V;") + std::string(yardstick.script));
  host.feed(random_walk(0, rows));
  const Bars bars = bars_of(host);
  host.compile(yardstick.script);
  host.feed(random_walk(0, rows));

  Figures figures;
  const double per_bar = 1e9 / static_cast<double>(rows);
  figures.engine = per_bar * quickest([&host] { host.calculate(0); });
  Series result(rows);
  figures.plain = per_bar * quickest([&] { yardstick.loop(bars, result); });
  check_equal(yardstick, host, result);
  const auto last = static_cast<uint32_t>(rows - 1);
  const auto calculate = [&host](uint32_t row) { host.calculate(row); };
  figures.new_bar = 1e6 * seconds_of_bar(1000, host, last, calculate);
  return figures;
}

void print_indicators() {
  std::printf("%-20s", "");
  for (const size_t size : sizes) std::printf("  | %33zu bars", size);
  std::printf("\n%-20s", "");
  for ([[maybe_unused]] const size_t size : sizes) {
    std::printf("  | %8s %8s %6s %12s", "ns/bar", "loop", "ratio", "new bar, us");
  }
  std::printf("\n");
  for (const Yardstick& yardstick : yardsticks()) {
    std::printf("%-20s", yardstick.name.data());
    for (const size_t size : sizes) {
      const Figures figures = measure(yardstick, size);
      std::printf("  | %8.1f %8.1f %6.2f %12.2f", figures.engine, figures.plain,
                  figures.engine / figures.plain, figures.new_bar);
      std::fflush(stdout);
    }
    std::printf("\n");
  }
}

bool is_same(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) ||
         std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

/// The loops aren't exact if they differ by a bit.
void check_same(const DrawnLines& drawn, const BenchHost& host, std::span<const Series> lines) {
  for (size_t line = 0; line < lines.size() && !drawn.lines[line].empty(); ++line) {
    const int32_t column = host.column_of(drawn.lines[line]);
    for (uint32_t row = 0; row < host.row_count(); ++row) {
      const double value = host.value(row, column);
      if (is_same(value, lines[line][row])) continue;
      std::fprintf(stderr, "%s, %s: %.17g and not %.17g at row %u\n", drawn.name.data(),
                   drawn.lines[line].data(), value, lines[line][row], row);
      std::exit(1);
    }
  }
}

/// The engine, the exact loops and, where there is one, a library that others use.
void print_drawn(const DrawnLines& drawn, size_t rows) {
  BenchHost host;
  host.compile("F:=O+H+L+C+V;");
  host.feed(random_walk(0, rows));
  const Bars bars = bars_of(host);
  host.compile(drawn.script);
  host.feed(random_walk(0, rows));
  const double per_bar = 1e9 / static_cast<double>(rows);
  const double engine = per_bar * quickest([&host] { host.calculate(0); });
  std::vector<Series> lines(drawn.lines.size(), Series(rows));
  std::printf("  | %8.1f", engine);
  if (has_exact_loops()) {
    const double exact = per_bar * quickest([&] { drawn.exact(bars, lines); });
    check_same(drawn, host, lines);
    std::printf(" %8.1f %6.2f", exact, engine / exact);
  } else {
    std::printf(" %8s %6s", "-", "-");
  }
  if (const LoopOverLines peer = peer_of(drawn.name)) {
    std::printf(" %8.1f", per_bar * quickest([&] { peer(bars, lines); }));
  } else {
    std::printf(" %8s", "-");
  }
  std::fflush(stdout);
}

void print_drawn_lines() {
  std::printf("\n%-20s", "drawn lines");
  for (const size_t size : sizes) std::printf("  | %28zu bars", size);
  std::printf("\n%-20s", "");
  for ([[maybe_unused]] const size_t size : sizes) {
    std::printf("  | %8s %8s %6s %8s", "ns/bar", "exact", "ratio", "peer");
  }
  std::printf("\n");
  for (const DrawnLines& drawn : drawn_lines()) {
    std::printf("%-20s", drawn.name.data());
    for (const size_t size : sizes) print_drawn(drawn, size);
    std::printf("\n");
  }
}

constexpr size_t history = 200000;
constexpr std::string_view seven_fields = "A:=O+H+L+C+V+AMOUNT;";

double seconds_of_intake(Order order) {
  const BenchHost host;
  host.compile(seven_fields);
  const std::string rows = random_walk(0, history, order);
  double best = 1e9;
  for (int round = 0; round < 5; ++round) {
    host.clear();
    const std::clock_t start = std::clock();
    host.feed(rows);
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    if (host.row_count() != history) std::exit(1);
  }
  return best;
}

/// The yardstick of the intake: what the JSON library alone needs for the same text, which comes
/// from a host without room behind it and so is copied by either.
double seconds_of_json(Order order) {
  const std::string rows = random_walk(0, history, order);
  simdjson::dom::parser parser;
  volatile double sink = 0.0;
  return quickest([&] {
    double sum = 0.0;
    for (const auto bar : simdjson::dom::array(parser.parse(rows.data(), rows.size()))) {
      for (const auto field : simdjson::dom::object(bar)) {
        sum += field.value.is_double() ? double(field.value)
                                       : static_cast<double>(int64_t(field.value));
      }
    }
    sink = sum;
  });
}

void print_intake() {
  std::printf("\n%-20s %14s %14s %6s\n", "intake", "rows/s", "JSON alone", "ratio");
  const struct {
    const char* name;
    Order order;
  } orders[] = {{"ascending keys", Order::ascending},
                {"descending keys", Order::descending},
                {"shuffled keys", Order::shuffled}};
  for (const auto& [name, order] : orders) {
    const double engine = seconds_of_intake(order);
    const double json = seconds_of_json(order);
    std::printf("%-20s %14.0f %14.0f %6.2f\n", name, history / engine, history / json,
                engine / json);
  }
}

/// One forming bar comes in, is calculated and read. The yardstick is what the JSON library alone
/// needs for the text, with a parser and a buffer that it keeps, and the calculation.
void print_tick() {
  constexpr int many = 10000;
  constexpr size_t rows = 10000;
  const BenchHost host;
  host.compile("A:=O+H+L+C+V+AMOUNT;B:MA(C,5);");
  host.feed(random_walk(0, rows));
  host.calculate(0);
  const int32_t column = host.column_of("B");
  constexpr auto last = static_cast<uint32_t>(rows - 1);
  std::string bar = random_walk(last, rows);
  bar.insert(bar.size() - 2, ",\"19\":123456.5");
  constexpr std::string_view close = "\"11\":";
  std::string moved = bar;
  moved.insert(moved.find(close) + close.size(), "1");
  simdjson::dom::parser parser;
  std::string padded = bar;
  padded.reserve(bar.size() + simdjson::SIMDJSON_PADDING);
  volatile double sink = 0.0;
  const double parse = quickest_of_many(many, [&] {
    double sum = 0.0;
    for (const auto fields : simdjson::dom::array(parser.parse(padded.data(), bar.size(), false))) {
      for (const auto field : simdjson::dom::object(fields)) {
        sum += field.value.is_double() ? double(field.value)
                                       : static_cast<double>(int64_t(field.value));
      }
    }
    sink = sum;
  });
  const auto calculated = [many](const BenchHost& one) {
    return seconds_of_bar(many, one, last, [&one](uint32_t row) { one.calculate_unread(row); });
  };
  const double calculation = calculated(host);
  const double tick = quickest_of_many(many, [&] {
    bar.swap(moved);
    host.feed(bar);
    host.calculate_unread(last);
    sink = host.value(last, column);
  });
  const BenchHost lean;
  lean.compile("B:=MA(C,5);");
  lean.feed(random_walk(0, rows));
  lean.calculate(0);
  const double one_line = calculated(lean);
  const double nothing = quickest_of_many(many, [&] { lean.calculate_unread(last); });
  std::printf("\n%-20s %10s %10s %10s %6s %10s %10s\n", "one forming bar, ns", "JSON alone",
              "calculated", "in all", "ratio", "one line", "none moved");
  std::printf("%-20s %10.0f %10.0f %10.0f %6.2f %10.0f %10.0f\n", "", parse * 1e9,
              calculation * 1e9, tick * 1e9, tick / (parse + calculation), one_line * 1e9,
              nothing * 1e9);
}

void print_reading() {
  const BenchHost host;
  host.compile("A:=MA(C,20);");
  host.feed(random_walk(0, history));
  host.calculate(0);
  const int32_t column = host.column_of("A");
  Series values(history);
  for (uint32_t row = 0; row < history; ++row) values[row] = host.value(row, column);
  volatile size_t sink = 0;
  const double engine = quickest([&] { sink = host.text_size(column); });
  const double plain = quickest([&] {
    char digits[352];
    size_t size = 0;
    for (const double value : values) {
      size += static_cast<size_t>(
          std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6).ptr -
          digits);
    }
    sink = size;
  });
  std::printf("\n%-20s %14s %14s %6s\n", "reading", "values/s", "to_chars", "ratio");
  std::printf("%-20s %14.0f %14.0f %6.2f\n", "get_data_arr", history / engine, history / plain,
              engine / plain);
}

/// 60 statements of the kinds that scripts are made of, each with a name of its own.
std::string sixty_statements() {
  std::string script;
  for (int i = 0; i < 15; ++i) {
    const std::string n = std::to_string(i + 2);
    script += "A" + n + ":=MA(C," + n + ")-MA((H+L)/2,2*" + n + ");\n";
    script += "B" + n + ":MA(A" + n + ",3),COLORRED,LINETHICK2;\n";
    script += "T" + n + ":=A" + n + ">B" + n + " AND C>O OR V>1000*" + n + ";\n";
    script += "S" + n + ":(A" + n + "+B" + n + ")*100/(H-L+0.01);\n";
  }
  return script;
}

/// Bytes of the process that are in memory; 0 where the system doesn't tell.
double resident_bytes() {
  std::ifstream file("/proc/self/statm");
  double pages = 0.0;
  file >> pages >> pages;
  return pages * 4096.0;
}

void print_the_rest() {
  const BenchHost host;
  const std::string script = sixty_statements();
  const double compile = quickest([&] { host.compile(script); });
  std::printf("\ncompile of 60 statements: %.0f us\n", compile * 1e6);

  const BenchHost table;
  table.compile(seven_fields);
  const std::string rows = random_walk(0, history);
  table.feed(rows);
  table.clear();
  const double before = resident_bytes();
  const BenchHost other;
  other.compile(sixty_statements());
  const double columns = other.column_count();
  other.feed(rows);
  other.calculate(0);
  std::printf("memory: %.1f bytes per bar and column\n",
              (resident_bytes() - before) / (history * columns));
}

/// An instance's whole life, many times: what stays in memory shows a leak.
void print_cycles() {
  const std::string rows = random_walk(0, 20);
  const std::string script = std::string(yardsticks().back().script) + "D:MA(A,3);";
  double settled = 0.0;
  for (int cycle = 1; cycle <= 100000; ++cycle) {
    const BenchHost host;
    host.compile(script);
    host.feed(rows);
    host.calculate(0);
    if (cycle == 1000) settled = resident_bytes();
  }
  std::printf("100,000 instances: %+.0f kB in memory since the 1000th, %.0f kB in all\n",
              (resident_bytes() - settled) / 1024, resident_bytes() / 1024);
}

}  // namespace
}  // namespace quor_bench

int main(int count, char** arguments) {
  if (count > 1 && std::string_view(arguments[1]) == "cycles") {
    quor_bench::print_cycles();
    return 0;
  }
  quor_bench::print_indicators();
  quor_bench::print_drawn_lines();
  quor_bench::print_intake();
  quor_bench::print_tick();
  quor_bench::print_reading();
  quor_bench::print_the_rest();
  return 0;
}
