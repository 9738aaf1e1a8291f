// What calls remember of the rows before never shows: an instance whose calls remember nothing, and
// so walk over the rows at each bar, leaves the same in every cell.
#include <gtest/gtest.h>

#include <random>

#include "support/plain_bars.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

/// Scripts in which words that remember stand in each other, share arguments, are passed over, read
/// columns of other lines, are late or early, and keep states in columns.
class Scripts {
 public:
  explicit Scripts(uint64_t seed) : random_(seed) {}

  std::string make() {
    parts_ = {"C", "O", "V", "N", "K"};
    std::string script = "N:=3;K:=2;";
    const int lines = 2 + below(4);
    for (int line = 0; line < lines; ++line) {
      const std::string name = "L" + std::to_string(line);
      script += name + ":=" + expression(2) + ";";
      parts_.push_back(name);
      if (below(12) == 0) script += "SET(" + std::string(1, "COVN"[below(4)]) + "," + name + ");";
    }
    return script;
  }
  int below(int bound) { return static_cast<int>(random_() % static_cast<uint64_t>(bound)); }

 private:
  /// Uses what has been made before now and then, so that texts and so arguments are shared.
  std::string expression(int depth) {
    if (depth == 0 || below(5) == 0) return parts_[random_() % parts_.size()];
    std::string made = fill(shapes[random_() % std::size(shapes)], depth - 1);
    // Walks within walks take long without a memory.
    if (made.size() < 24) parts_.push_back(made);
    return made;
  }

  std::string fill(std::string_view shape, int depth) {
    std::string text;
    for (const char c : shape) {
      if (c == 'x') {
        text += expression(depth);
      } else if (c == 'c') {
        text += "(" + expression(depth) + (below(2) == 0 ? ")>" : ")<=") + expression(depth);
      } else if (c == 'n') {
        text += period();
      } else {
        text += c;
      }
    }
    return text;
  }

  std::string period() {
    if (below(6) == 0) return "(" + expression(1) + ")";
    if (below(9) == 0) return odd_periods[random_() % std::size(odd_periods)];
    return std::to_string(below(7));
  }

  static constexpr const char* odd_periods[] = {"2.5", "0.4", "0-1", "C-2", "BARPOS/9"};
  static constexpr std::string_view shapes[] = {
      "BARSLAST(c)",
      "BARSLASTCOUNT(c)",
      "VALUEWHEN(c,x)",
      "BARSSINCEN(c,n)",
      "CONDBARS(c,c)",
      "COUNT(c,n)",
      "COUNT(c,0)",
      "SUM(x,n)",
      "SUM(x,0)",
      "EXIST(c,n)",
      "EVERY(c,n)",
      "EVERY(c,x)",
      "NDAY(x,x,n)",
      "UPNDAY(x,n)",
      "DOWNNDAY(x,n)",
      "LAST(c,9,2)",
      "LAST(c,n,n)",
      "CROSS(x,x)",
      "HHV(x,n)",
      "LLV(x,5)",
      "HHVBARS(x,4)",
      "HV(x,3)",
      "NEWHBARS(x,1)",
      "NEWLBARS1(x,x,2)",
      "SUMBARS(x,9)",
      "IF(c,x,x)",
      "IFN(c,x,x)",
      "REF(x,1)",
      "REF(x,n)",
      "REFX(x,2)",
      "MA(x,3)",
      "EMA(x,n)",
      "SMA(x,4,1)",
      "WMA(x,3)",
      "STD(x,4)",
      "HARMEAN(x,3)",
      "PERCENTILE(x,4,50)",
      "BARSCOUNT(x)",
      "MEMA(x,3)",
      "EXPMEMA(x,n)",
      "TRMA(x,4)",
      "SMMA(x,3)",
      "TSMA(x,n)",
      "ADMA(x,3,2,5)",
      "SLOPE(x,3)",
      "COVAR(x,x,n)",
      "LLVBARS(x,n)",
      "x-x",
      "x+x*2",
      "ABS(x)",
      "MAX(x,x)",
      "SORT(0,1,x,x)",
      "FILTER(c,3)",
      "BACKSET(c,2)",
      "REF(x,0-2)",
      "PEAKBARS(x,3,1,0)",
      "AVEDEV(x,n)",
      "x-TOTALBARSCOUNT",
      "IF(ISLASTBAR,x,x)",
      "DMA(x,x/6)",
      "MAX(0,REF(LLV(x,5),2))",
      "IF(c,REF(HHV(x,5),2),0)",
  };

  std::mt19937_64 random_;
  std::vector<std::string> parts_;
};

class Player {
 public:
  Player(const std::string& script, bool remembers) {
    compiles_ = host_.compile(script).code == 0;
    if (!remembers) go_by_plain_bars(host_.handle());
  }

  bool compiles() const { return compiles_; }
  TestHost& host() { return host_; }

 private:
  TestHost host_;
  bool compiles_;
};

class Session {
 public:
  Session(const std::string& script, uint64_t seed)
      : script_(script), random_(seed), quick_(script, true), plain_(script, false) {}

  void play() {
    ASSERT_EQ(quick_.compiles(), plain_.compiles());
    if (!plain_.compiles()) return;
    for (size_t i = 20 + random_() % 60; i > 0; --i) append();
    for (size_t row = 0; row < rows(); ++row) {
      keys_.push_back(20240101000000 + 10 * static_cast<int64_t>(row));
    }
    each([this](TestHost& host) {
      host.set_keys(keys_);
      host.feed(bars_);
    });
    for (int move = 0; move < 12 && !::testing::Test::HasFailure(); ++move) {
      for (size_t i = random_() % 3; i > 0; --i) change();
      run(move);
      for (size_t i = random_() % 4; i > 0; --i) tick();
    }
  }

 private:
  template <typename Use>
  void each(const Use& use) {
    use(quick_.host());
    use(plain_.host());
  }

  double value() {
    const auto draw = static_cast<double>(random_() % 6);
    return draw == 5.0 ? null : draw;
  }

  void append() {
    for (const char* field : {"C", "O", "V"}) bars_[field].push_back(value());
  }

  size_t rows() const { return bars_.at("C").size(); }

  void change() {
    const size_t row = random_() % rows();
    switch (random_() % 6) {
      case 0:
        append();
        keys_.push_back(keys_.back() + 10);
        return feed(rows() - 1);
      case 1:
        bars_["C"][row] = value();
        return feed(row);
      case 2:
        return insert(row);
      case 3: {
        // A cell of a calculated column.
        const auto id = static_cast<uint32_t>(20000 + random_() % 9);
        const double cell = value();
        return each(
            [&](TestHost& host) { set_column_data(host.handle(), host.key_of(row), id, cell); });
      }
      default:
        return read(static_cast<int32_t>(row));
    }
  }

  void feed(size_t row) {
    each([this, row](TestHost& host) {
      host.set_keys(keys_);
      host.feed(bars_, row, row + 1);
    });
  }

  void insert(size_t row) {
    const int64_t key = keys_[row] - 1 - static_cast<int64_t>(random_() % 3);
    if (row > 0 && keys_[row - 1] >= key) return;
    keys_.insert(keys_.begin() + static_cast<ptrdiff_t>(row), key);
    for (auto& [field, values] : bars_) {
      values.insert(values.begin() + static_cast<ptrdiff_t>(row), value());
    }
    feed(row);
  }

  /// Evaluates an argument on the spot.
  void read(int32_t row) {
    const auto id = -static_cast<int32_t>(1 + random_() % 60);
    const auto read = [id, row](TestHost& host) {
      return get_field_val_by_index(host.handle(), id, row);
    };
    EXPECT_TRUE(same(read(quick_.host()), read(plain_.host()))) << script_;
  }

  void run(int move) {
    const size_t from[] = {0, rows() - 1, random_() % rows()};
    run_from(static_cast<uint32_t>(move == 0 && random_() % 4 != 0 ? 0 : from[random_() % 3]));
  }

  /// The last bar moves in one of its fields.
  void tick() {
    bars_[std::string(1, "COV"[random_() % 3])].back() = value();
    feed(rows() - 1);
    if (random_() % 9 == 0) change();
    run_from(static_cast<uint32_t>(rows() - 1));
  }

  void run_from(uint32_t first) {
    ASSERT_EQ(quick_.host().run(first), plain_.host().run(first)) << script_;
    const uint32_t columns = get_column_num(plain_.host().handle());
    ASSERT_EQ(get_column_num(quick_.host().handle()), columns) << script_;
    for (uint32_t id = 20000; id < 20000 + columns; ++id) {
      const Series expected = plain_.host().column(id);
      ASSERT_TRUE(same(quick_.host().column(id), expected))
          << script_ << " from row " << first << ", column " << id << '\n'
          << to_text(quick_.host().column(id)) << '\n'
          << to_text(expected);
    }
  }

  const std::string script_;
  std::mt19937_64 random_;
  Player quick_;
  Player plain_;
  Bars bars_;
  std::vector<int64_t> keys_;
};

TEST(Memories, NeverShow) {
  const char* first = getenv("FIRST_SEED");
  const uint64_t from = first ? strtoull(first, nullptr, 10) : 1;
  const char* n = getenv("SEEDS");
  const uint64_t count = n ? strtoull(n, nullptr, 10) : 400;
  for (uint64_t seed = from; seed < from + count && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Session(Scripts(seed).make(), seed).play();
  }
}

/// States that a walk comes to out of their order are others at the next one, and what it works out
/// first may change what it knew of the rows below.
TEST(Memories, OfStatesOutOfTheirOrderNeverShow) {
  const char* const scripts[] = {
      "L:=CONDBARS(C<=NDAY(2,ADMA(3,3,2,5),BARSSINCEN(V>O,2)),V>C);",
      "L:=COUNT(C<=COUNT(EMA(C,3)>O,V),5);",
      "L:=BARSLAST(REFX(COUNT(EMA(C,3)>O,5),1)>C);",
      "L:=CONDBARS(BACKSET(BARSCOUNT(TSMA(V,3))>C,2),V>C);",
      "L:=BARSSINCEN(1<=COUNT(REFX(SMA(C,4,1),2)>O,5),BARPOS/9);",
      "K:=REFX(EMA(C,2.5),2);L:=EXIST(V>REFX(EMA(C,2.5),2),0-1);",
      "L:=LAST(O<=REFX(DMA(V,O/6),2),6,SMA(HARMEAN(V,3),4,1));",
  };
  for (const char* const script : scripts) {
    for (uint64_t seed = 1; seed <= 40 && !HasFailure(); ++seed) Session(script, seed).play();
  }
}

/// An evaluation that a reading makes writes cells like any other, so that what rests on them has
/// to be forgotten.
TEST(Memories, AReadingOfAnArgumentChangesCells) {
  const struct {
    const char* script;
    uint32_t rows;
    uint32_t second_run;
  } cases[] = {{"A:IFF(BARPOS>5,SUM(C-O,0),0);", 30, 29},
               {"A:MEMA(SUM(O*1,9),2);", 10, 8},
               {"A:COUNT(IFF(V,EMA(AMOUNT,2),0),244);", 40, 37}};
  for (const auto& [script, rows, second_run] : cases) {
    Bars bars;
    for (uint32_t row = 0; row < rows; ++row) {
      bars["O"].push_back(10 + row % 3);
      bars["C"].push_back(11 + row % 5);
      bars["V"].push_back(row % 4);
      bars["AMOUNT"].push_back(row % 4 == 0 ? 50 : -1);
    }
    Series lines[2];
    for (const bool remembers : {false, true}) {
      Player player(script, remembers);
      player.host().feed(bars);
      player.host().run();
      for (int32_t id = -1; id >= -60; --id) {
        for (const int32_t row : {0, 8}) get_field_val_by_index(player.host().handle(), id, row);
      }
      player.host().run(second_run);
      lines[remembers] = player.host().line("A");
    }
    EXPECT_TRUE(same(lines[true], lines[false])) << script;
  }
}

}  // namespace
}  // namespace quor_test
