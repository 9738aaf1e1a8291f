// Nanoseconds per bar of every word, in tables of a few hundred to many thousand bars. A word whose
// cost per bar grows with the row number is marked; only words without a bound by their rule may
// be.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "bench_host.h"
#include "support/word_calls.h"

namespace quor_bench {
namespace {

constexpr size_t sizes[] = {2000, 10000, 200000};
constexpr double longest_run_ns = 2e9;
constexpr double growth = 4.0;  ///< from one size to the next, beyond the noise of a machine

struct Entry {
  std::string word;
  std::string statement;
};

/// Walks that lead far back: to a turn long ago, over a series that never gets there, to a hit of
/// long ago at each bar anew.
const Entry far_walks[] = {
    {"PEAK far", "A:=PEAK(C,1,500,0);"},
    {"TROUGHBARS far", "A:=TROUGHBARS(C,1,500,0);"},
    {"NEWLBARS far", "X:=0-BARPOS;A:=NEWLBARS(X,3);"},
    {"NEWHBARS1 far", "X:=0-BARPOS;A:=NEWHBARS1(X+500,X,1);"},
    {"NEWHBARS many", "A:=NEWHBARS(C,200);"},
};

std::vector<Entry> entries() {
  std::vector<Entry> list;
  const auto add_all = [&list](std::string_view words, auto&& statement_of) {
    std::istringstream stream{std::string(words)};
    for (std::string word; stream >> word;) list.push_back({word, statement_of(word)});
  };
  for (const auto& [words, arguments] : quor_test::word_groups) {
    add_all(words, [args = std::string(arguments)](const std::string& word) {
      return "X:=C;A:=" + word + "(" + args + ");";
    });
  }
  add_all(quor_test::signal_words, [](const std::string& word) { return "C>O," + word + ";"; });
  add_all(quor_test::bare_words, [](const std::string& word) { return "A:=" + word + ";"; });
  std::ranges::sort(list, {}, &Entry::word);
  list.insert(list.end(), std::begin(far_walks), std::end(far_walks));
  return list;
}

/// The quickest of a few whole runs, in nanoseconds per bar.
double measure(const Entry& entry, const std::string& rows, size_t count) {
  const BenchHost host;
  host.compile(entry.statement);
  host.feed(rows);
  double best = std::numeric_limits<double>::infinity();
  for (int run = 0; run < 3; ++run) {
    // The processor's own time: what else the machine does must not look like growth.
    const std::clock_t start = std::clock();
    host.calculate(0);
    const auto ticks = static_cast<double>(std::clock() - start);
    best = std::min(best, ticks / CLOCKS_PER_SEC * 1e9);
    if (best > longest_run_ns / 10) break;
  }
  return best / static_cast<double>(count);
}

void print_word(const Entry& entry, const std::vector<std::string>& texts) {
  std::printf("%-20s", entry.word.c_str());
  double before = 0.0;
  bool grows = false;
  for (size_t i = 0; i < std::size(sizes); ++i) {
    // What a cost that grows with the row would come to is known before it is paid.
    const double ratio =
        i == 0 ? 1.0 : static_cast<double>(sizes[i]) / static_cast<double>(sizes[i - 1]);
    if (before * ratio * static_cast<double>(sizes[i]) > longest_run_ns && grows) {
      std::printf("%12s", "-");
      continue;
    }
    const double cost = measure(entry, texts[i], sizes[i]);
    std::printf("%12.1f", cost);
    grows = grows || (i > 0 && cost > growth * before && cost > 100.0);
    before = cost;
  }
  std::printf("%s\n", grows ? "  *" : "");
  std::fflush(stdout);
}

int run() {
  std::vector<std::string> texts;
  std::printf("%-20s", "ns per bar");
  for (const size_t size : sizes) {
    texts.push_back(random_walk(0, size));
    std::printf("%12zu", size);
  }
  std::printf("\n");
  for (const Entry& entry : entries()) print_word(entry, texts);
  std::printf("* the cost per bar grows with the row number\n");
  return 0;
}

}  // namespace
}  // namespace quor_bench

int main() { return quor_bench::run(); }
