// What a client waits for: a first chart, a new bar, the intake of history, a changed script.
#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "bench_host.h"

namespace {

using quor_bench::BenchHost;
using quor_bench::Order;
using quor_bench::random_walk;

constexpr size_t history = 200000;

std::string ten_averages() {
  std::string script;
  for (const int bars : {5, 10, 20, 30, 40, 60, 90, 120, 180, 250}) {
    const std::string count = std::to_string(bars);
    script += "MA" + count + ":MA(C," + count + ");\n";
  }
  return script;
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

void run_ten_averages(benchmark::State& state) {
  const BenchHost host;
  host.compile(ten_averages());
  host.feed(random_walk(0, history));
  for ([[maybe_unused]] auto round : state) host.calculate(0);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * history));
}
BENCHMARK(run_ten_averages)->Name("run/ten averages, 200,000 bars")->Unit(benchmark::kMillisecond);

/// The forming bar comes again with every tick: intake of one bar and its calculation.
void run_new_bar(benchmark::State& state) {
  constexpr uint32_t bars = 10000;
  const BenchHost host;
  host.compile(ten_averages());
  host.feed(random_walk(0, bars));
  host.calculate(0);
  const std::string bar = random_walk(bars, bars + 1);
  for ([[maybe_unused]] auto round : state) {
    host.feed(bar);
    host.calculate(bars);
  }
}
BENCHMARK(run_new_bar)->Name("run/ten averages, one new bar on 10,000");

void take_rows(benchmark::State& state, Order order) {
  const BenchHost host;
  host.compile("A:=C+O+H+L+V;");
  const std::string rows = random_walk(0, history, order);
  for ([[maybe_unused]] auto round : state) {
    host.feed(rows);
    state.PauseTiming();
    if (host.row_count() != history) std::exit(1);
    host.clear();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rows.size()));
}
BENCHMARK_CAPTURE(take_rows, "ascending", Order::ascending)
    ->Name("intake/200,000 bars ascending")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(take_rows, "descending", Order::descending)
    ->Name("intake/200,000 bars descending")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(take_rows, "shuffled", Order::shuffled)
    ->Name("intake/200,000 bars shuffled")
    ->Unit(benchmark::kMillisecond);

/// The yardstick of the intake: what the JSON library alone needs for the same text.
void walk_json(benchmark::State& state) {
  const std::string rows = random_walk(0, history);
  simdjson::dom::parser parser;
  for ([[maybe_unused]] auto round : state) {
    double sum = 0.0;
    for (const auto bar : simdjson::dom::array(parser.parse(rows))) {
      for (const auto field : simdjson::dom::object(bar)) {
        sum += field.value.is_double() ? double(field.value)
                                       : static_cast<double>(int64_t(field.value));
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rows.size()));
}
BENCHMARK(walk_json)
    ->Name("intake/200,000 bars, JSON library alone")
    ->Unit(benchmark::kMillisecond);

void compile_sixty(benchmark::State& state) {
  const BenchHost host;
  const std::string script = sixty_statements();
  for ([[maybe_unused]] auto round : state) host.compile(script);
}
BENCHMARK(compile_sixty)->Name("compile/60 statements")->Unit(benchmark::kMicrosecond);

}  // namespace
