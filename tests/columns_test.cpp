// A run that works out blocks of rows column by column leaves what bar by bar leaves: answers,
// columns in the order in which they are taken, every cell, notices and signals.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <span>

#include "support/plain_bars.h"
#include "support/test_host.h"
#include "support/word_statements.h"
#include "tables/field_table.h"
#include "vocabulary/function_sets.h"

namespace quor_test {
namespace {

using quor::BlockRule;

constexpr BlockRule usual[] = {{}};
constexpr BlockRule small_blocks[] = {
    {1, 1, 1, 1}, {1, 2, 2, 2}, {1, 1, 3, 3}, {1, 3, 7, 7}, {1, 1, 1, 64}};

Bars random_bars(size_t rows, uint64_t seed) {
  std::mt19937_64 random(seed);
  const auto draw = [&random](unsigned below) { return static_cast<double>(random() % below); };
  Bars bars;
  double close = 50;
  for (size_t row = 0; row < rows; ++row) {
    close += draw(7) / 4 - 0.75;
    const double open = close + draw(5) / 4 - 0.5;
    // Nulls come alone and in stretches.
    const bool no_close = draw(29) == 0 || (row / 20) % 9 == 8;
    bars["C"].push_back(no_close ? null : close);
    bars["O"].push_back(draw(40) == 0 ? null : open);
    bars["H"].push_back(std::max(open, close) + draw(3) / 2);
    bars["L"].push_back(std::min(open, close) - draw(3) / 2);
    bars["V"].push_back(100 + draw(50));
    bars["AMOUNT"].push_back(1000 * draw(9));
  }
  return bars;
}

/// An instance that goes through a session by a rule of its own.
class Player {
 public:
  explicit Player(const BlockRule& rule) {
    quor::find_instance(host_.handle())->parser.calculator().set_block_rule(rule);
    host_.set_info(0x3000, "600000", "USHA");
  }

  void declare_field(const std::string& word, uint32_t id) { host_.declare_field(word, id); }
  int64_t compile(const std::string& script) { return host_.compile(script).code; }
  void feed(const Bars& bars, size_t first, size_t last) { host_.feed(bars, first, last); }
  void feed_json(const std::string& json) { host_.feed_json(json); }
  /// Other bars as arrays; what nobody has written yet lies there as the bars before left it.
  void replace(const Bars& bars) {
    std::vector<int64_t> keys;
    std::vector<quor::FieldColumn> columns;
    for (size_t row = 0; row < bars.at("C").size(); ++row) keys.push_back(host_.key_of(row));
    for (const auto& [field, values] : bars) {
      const auto id = quor::reserved_field_id(field);
      columns.push_back({static_cast<uint32_t>(id ? *id : std::stoi(field)), values.data()});
    }
    clear_data(host_.handle());
    quor::find_instance(host_.handle())->parser.add_columns(keys, columns);
  }

  /// What the host sees of a run.
  std::string run(uint32_t first_row) {
    clear_events();
    std::string seen = host_.run(first_row, true);
    for (const Signal& signal : events().signals) seen += " s" + std::to_string(signal.row);
    // The time of a notice is the clock's; its text begins with the row key.
    for (const Notice& notice : events().notices) {
      seen += " n" + notice.text.substr(0, notice.text.find(','));
    }
    return seen;
  }
  void put_bar(int64_t key) { set_column_data(host_.handle(), static_cast<uint64_t>(key), 11, 50); }
  void leave_gaps_between_keys() {
    std::vector<int64_t> keys;
    for (int64_t row = 0; row < 200; ++row) keys.push_back(20240101000000 + 10 * row);
    host_.set_keys(keys);
  }
  void overwrite(size_t row, uint32_t column, double value) {
    set_column_data(host_.handle(), static_cast<uint64_t>(host_.key_of(row)), column, value);
  }
  uint32_t column_count() const { return get_column_num(host_.handle()); }
  Series column(uint32_t id) const { return host_.column(id); }
  std::string text(uint32_t id) const {
    const auto rows = static_cast<int32_t>(get_row_num(host_.handle()));
    return host_.data_text(id, static_cast<uint32_t>(rows - 1), rows);
  }

 private:
  TestHost host_;
};

/// An instance that goes bar by bar, and one for each rule that goes by blocks.
class Siblings {
 public:
  Siblings(std::string script, std::span<const BlockRule> rules) : script_(std::move(script)) {
    for (const BlockRule& rule : rules) by_blocks_.push_back(std::make_unique<Player>(rule));
  }

  void declare_field(const std::string& word, uint32_t id) {
    each([&](Player& player) { player.declare_field(word, id); });
  }
  bool compile() {
    const int64_t code = by_bars_.compile(script_);
    for (auto& player : by_blocks_) EXPECT_EQ(player->compile(script_), code) << script_;
    return code == 0;
  }
  void feed(const Bars& bars, size_t first = 0, size_t last = SIZE_MAX) {
    each([&](Player& player) { player.feed(bars, first, last); });
  }
  void feed_json(const std::string& json) {
    each([&](Player& player) { player.feed_json(json); });
  }
  void replace(const Bars& bars) {
    each([&](Player& player) { player.replace(bars); });
  }
  void overwrite(size_t row, double value) {
    each([&](Player& player) {
      for (uint32_t id = 20000; id < 20008; ++id) player.overwrite(row, id, value);
    });
  }
  void put_bar(int64_t key) {
    each([key](Player& player) { player.put_bar(key); });
  }
  void leave_gaps_between_keys() {
    each([](Player& player) { player.leave_gaps_between_keys(); });
  }
  /// Columns are looked at after every so many runs only.
  void read_every(int runs) { runs_to_a_look_ = runs; }
  /// False where something differs.
  bool run(uint32_t first_row, const char* move) {
    const std::string expected = by_bars_.run(first_row);
    const bool is_read = ++runs_ % runs_to_a_look_ == 0;
    std::vector<Series> columns;
    for (uint32_t id = 20000; id < 20000 + by_bars_.column_count(); ++id) {
      columns.push_back(by_bars_.column(id));
    }
    for (size_t rule = 0; rule < by_blocks_.size(); ++rule) {
      SCOPED_TRACE(script_ + ' ' + move + ", rule " + std::to_string(rule));
      EXPECT_EQ(by_blocks_[rule]->run(first_row), expected);
      if (is_read && !has_columns(*by_blocks_[rule], columns)) return false;
      if (is_read && runs_to_a_look_ > 1 && !has_texts(*by_blocks_[rule])) return false;
    }
    return !::testing::Test::HasFailure();
  }

 private:
  template <typename Use>
  void each(const Use& use) {
    use(by_bars_);
    for (auto& player : by_blocks_) use(*player);
  }

  static bool has_columns(const Player& player, const std::vector<Series>& columns) {
    EXPECT_EQ(player.column_count(), columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
      const Series found = player.column(static_cast<uint32_t>(20000 + i));
      if (same(found, columns[i])) continue;
      ADD_FAILURE() << "column " << 20000 + i << '\n'
                    << to_text(found) << '\n'
                    << to_text(columns[i]);
      return false;
    }
    return true;
  }

  bool has_texts(const Player& player) const {
    for (uint32_t id = 20000; id < 20000 + player.column_count(); ++id) {
      EXPECT_EQ(player.text(id), by_bars_.text(id)) << "column " << id;
    }
    return !::testing::Test::HasFailure();
  }

  std::string script_;
  int runs_ = 0;
  int runs_to_a_look_ = 1;
  std::vector<std::unique_ptr<Player>> by_blocks_;
  Player by_bars_{bar_by_bar};
};

/// The whole history, an old bar changed, later rows over stale ones, bars between others and
/// behind them, the history again, and another one. The bars beyond `known` come late.
bool play(Siblings& siblings, Bars bars, size_t known) {
  const auto rows = static_cast<uint32_t>(known);
  siblings.feed(bars, 0, known);
  if (!siblings.run(0, "in full")) return false;
  for (const uint32_t changed : {rows / 2, rows / 4}) {
    bars["C"][changed] += 3;
    siblings.feed(bars, changed, changed + 1);
    // The second time from a row that the change is far behind of.
    if (!siblings.run(changed == rows / 2 ? changed : rows / 3 * 2, "from a row")) return false;
  }
  siblings.feed_json(R"([{"1":20240101000000.5},{"1":20231231000000,"11":48,"9":49}])");
  if (!siblings.run(rows / 8, "behind an inserted bar")) return false;
  siblings.feed(bars, known, bars["C"].size());
  if (!siblings.run(rows, "from the new bars") || !siblings.run(0, "again")) return false;
  Bars others = random_bars(known, 2 * known);
  siblings.replace(others);
  if (!siblings.run(0, "over other bars")) return false;
  others.erase("O");
  siblings.replace(others);
  return siblings.run(0, "without a field");
}

/// Scripts in which a word stands alone, feeds others, and is fed by calls and by other lines.
std::vector<std::string> scripts_of(std::string_view word) {
  const std::string arguments(arguments_of(word));
  std::vector<std::string> scripts = {statement_of(word)};
  if (!scripts[0].starts_with("A:=")) {
    scripts[0] = "N:=EMA(C,3);" + scripts[0] + "M:MA(N,4);";
    return scripts;
  }
  const std::string value = scripts[0].substr(3, scripts[0].size() - 4);
  scripts.push_back("A:=" + value + ";B:=EMA(A,3)-REF(A,2);D:HHV(B,4)+IF(A>B,A,C);");
  scripts.push_back("A:=MA(" + value + ",3);B:=CROSS(" + value + ",EMA(C,5));");
  if (arguments.starts_with("C")) {
    const std::string rest = arguments.substr(1);
    const std::string name(word);
    scripts.push_back("A:=" + name + "(EMA(C,4)-O" + rest + ");");
    scripts.push_back("N:=SMA(C,3,1);A:=" + name + "(N" + rest + ");B:=COUNT(A>N,5);");
  }
  return scripts;
}

void play_all(std::string_view word, size_t known, std::span<const BlockRule> rules,
              size_t least_script = 0, size_t step = 1) {
  const std::vector<std::string> scripts = scripts_of(word);
  for (size_t i = least_script; i < scripts.size(); i += step) {
    Siblings siblings(scripts[i], rules);
    if (siblings.compile() && !play(siblings, random_bars(known + 9, word.size() + known), known)) {
      return;
    }
  }
}

/// Whether two runs may differ by the clock or by chance.
bool is_chancy(std::string_view word) { return word == "RAND" || word == "CURRENTTIME"; }

TEST(Columns, EveryWordInSmallBlocks) {
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    if (!is_chancy(word)) play_all(word, 70, small_blocks);
  }
}

TEST(Columns, EveryWordOverThousandsOfBars) {
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    const bool is_slow = word == "COST" || word == "WINNER" || word.starts_with("WAVE");
    if (!is_chancy(word)) play_all(word, is_slow ? 300 : 2200, usual, 1, 2);
  }
}

/// Periods below a bar, without bars, with a fraction or varying, weights, switches and series that
/// no word is meant to take.
constexpr const char* odd_arguments[] = {"0.4", "1", "0", "0-1", "2.5", "O-O", "BARPOS/9", "C>O"};

TEST(Columns, EveryWordWithAnOddArgument) {
  constexpr BlockRule odd_rule = {1, 3, 7, 7};
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    if (is_chancy(word)) continue;
    for (const char* argument : odd_arguments) {
      for (const std::string& script : statements_with(word, argument)) {
        Siblings siblings(script, {&odd_rule, 1});
        if (siblings.compile() && !play(siblings, random_bars(79, word.size()), 70)) return;
      }
    }
  }
}

/// Statements that see each other, fail in the middle, or take their columns late.
constexpr const char* entangled[] = {
    "A:=EMA(C,5);B:=STD(C,5-(BARPOS=41)*10);D:=MA(A,3);E:=B+D;",
    "A:=MA(C-O,5);B:=HHV(C-O,4);D:=WMA(C-O,3);E:=STD(C-O,6);",
    "B:=HHV(C-O,4);A:=MA(C-O,5);",
    "A:=MA(C,5);B:=REFX(A,1);D:=A+B;",
    "A:=MA(C,5);B:=REF(A,C-50);D:=EMA(A,3);",
    "A:=EMA(C,5);B:=IF(C>O,EMA(C,3),0);D:=REF(B,1)+A;",
    "A:=HV(MA(C,3),4);B:=LAST(EMA(C,3)>C,6,2);D:=REF(EMA(C,4),3);",
    "A:=EMA(C,3);C>A,BK;C<A,SP;C>O,NOTICE('x');D:=MA(A,4);",
    "A:=CROSS(MA(C,3),MA(C,5));B:=BARSLAST(A);D:=COUNT(A,0);E:FILTER(A,3);",
    "A:SIGN(C-O);B:=SIGN(SIGN(C-O))+MOD(C,O-O);D:=MAX(SIGN(C-O),B);",
    "A:=ZIGZAG(C,2,0);B:=MA(C,4);D:=HHV(A,5)+B;",
    "A:=DIVERGENCE(C,O,2,5,1);B:=MA(C,3);",
    "X:C-O;B:REF(HHVBARS(C-O,7),0-4);D:=LLV(C-O,3)+REFX(X,1);",
    "X:C-O;B:HHV(C-O,7);X2:O-X;D:=STD(O-X,4)+MA(C-O,3);",
    "K:C;M:K;A:=MA(K,3)+EMA(M,2);",
    "A:=MV(C,REF(O,C-50));B:=EMA(A,3);",
    "A:=SMMA(BARSCOUNT(H),17);B:=SMMA(SUM(C,0),17);D:=SMMA(MA(C,2),33);",
    "A:=COVAR(C,C-O,4);B:=HHV(C-O,5);D:=CROSS(O,C-O)+A;",
    "A:=BARSSINCEN(C>O,0.3);B:=COUNT(C>O,0.3)+MA(A,3);",
    "A:=COUNT(C>O,EMA(BARPOS,3));B:=SUM(V,BARPOS/2);D:=MA(C,3+(C>O)*2);",
    "A:=MA(C,3);B:=MA(O,5)-MA(C,3);D:=MA(V,2);E:=STD(C,5-(BARPOS=41)*10);F:=MA(L,9)+MA(H,1);",
    "A:EMA(C,3)-EMA(C,9);B:=REF(EMA(C,3),2);D:=EMA(C,0)+EMA(O,2);E:=BARSSINCE(C>O)+EMA(O,4);",
    "K:=C;A:=SMA(K,3,1)+SMA(C,5,2);B:=SMA(O,4,1)/SMA(C,5,2);D:=IF(C>O,SMA(C,7,1),0)+SMA(V,2,1);",
    "A:=LOG(C,O)+ROUND(C/3,BARPOS/9-4);B:=LOG(O,3);D:=MA(A,3);",
    "N:=3;A:=HHV(C,N);B:=SET(N,BARPOS/9);D:=MA(O,N)+COUNT(C>O,N);",
    "A:=DIVERGENCE(C,O,2,5,1)*0+C;B:=BARSCOUNT(A);",
    "A:=DIVERGENCE(C-O,O,2,5,1);B:=MA(C-O,4);D:=HHV(C-O,3);",
    "A:=HHV(C-O,3);B:=DIVERGENCE(C-O,O,2,5,1);",
    "B:=HHV(1+1,1);A:=MA(1+1,5);D:=SUM(1+1,3);",
    "B:=HHV(1+1,1);A:=COVAR(C,1+1,4);",
    "B:=HHV(1+1,4);A:=DIVERGENCE(1+1,O,2,5,1);",
    "RSV:=(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;K:SMA(RSV,3,1);D:SMA(K,3,1);J:3*K-2*D;",
    "A:=EMA(C,3)-EMA(C,9);B:EMA(A,4);D:=EMA(A,2)+B;E:=EMA(B,3);",
    "A:=EMA(C,3)-EMA(O,9);B:=EMA(A,4)+STD(C,5-(BARPOS=41)*10);D:=EMA(B,3);",
    "A:=EMA(STD(C,5-(BARPOS=41)*10),3);B:=EMA(A,4);D:=SMA(A,4,1);",
    "A:=EMA(EMA(C,3)-EMA(C,5),4)-EMA(EMA(O,3),9);B:=EMA(A,2);D:=REF(B,1);",
    "A:=SMA(O,3,1);B:=SMA(A,3,0);D:=SMA(B,3,1);E:=REF(A,2)+D;F:=SMA(A,BARPOS,1);",
    "K:SMA(C-O,3,1);D:SMA(K,3,1);E:=STD(C,5-(BARPOS=41)*10);J:3*K-2*SMA(K,5,2);F:SMA(D,2,1);",
    "A:=EMA(O,3);B:=STD(C,5-(BARPOS=41)*10);D:=EMA(A,5)+B;E:=EMA(D-A,4);F:=EMA(E,3)+MEMA(E,4);",
    "A:=DMA(C-O,0.3);B:=DMA(A,0.2)+REF(C,C-50);D:=DMA(A,0)+DMA(A,0.5);E:=DMA(D,0.1);",
    "A:=EMA(C-O,3);B:=REFX(A,1);D:=EMA(A,4)+B;",
    "A:=EMA(IF(C>O,EMA(C,2),O),3);B:=EMA(A,0)+REF(EMA(A,4),2);D:=IF(C>O,EMA(A,3),1);",
    "PARTLINE(1,C+1,COLORRED);POLYLINE(C>O,C+1,COLORBLUE);A:=C;",
};

TEST(Columns, StatementsThatSeeEachOther) {
  std::vector<BlockRule> rules(std::begin(small_blocks), std::end(small_blocks));
  rules.emplace_back();
  for (const char* script : entangled) {
    Siblings siblings(script, rules);
    ASSERT_TRUE(siblings.compile()) << script;
    if (!play(siblings, random_bars(149, 3), 140)) return;
  }
}

/// Steps of a formula that go over the rows as one, and those that can't, on either side of
/// another.
TEST(Columns, OperatorsBesideEachOther) {
  const std::string operators[] = {"+", "-", "*", "/", "<", " AND "};
  for (const std::string& first : operators) {
    for (const std::string& second : operators) {
      const std::string inner = "(C" + first + "O)";
      Siblings siblings("A:=" + inner + second + "H;B:=L" + second + inner + ";D:=" + inner +
                            second + "(H" + first + "2);E:=3" + second + inner + first +
                            "V;F:=(0-" + inner + second + "L)" + first + inner + second + "0.1;",
                        usual);
      ASSERT_TRUE(siblings.compile());
      if (!play(siblings, random_bars(149, 3), 140)) return;
    }
  }
}

/// What may come between a run over all bars and the next one, time and again.
bool play_live(Siblings& siblings, const Bars& bars, size_t known) {
  const auto last = static_cast<uint32_t>(known - 1);
  Bars moved = bars;
  for (auto& [field, values] : moved) values[last] += 2;
  const auto feeds = [&siblings](const Bars& from, size_t first, size_t end) {
    return [&siblings, &from, first, end] { siblings.feed(from, first, end); };
  };
  const auto overwrites = [&siblings](size_t row) {
    return [&siblings, row] { siblings.overwrite(row, static_cast<double>(row) + 0.5); };
  };
  const struct {
    const char* name;
    std::function<void()> act;
    uint32_t next_run_from;
  } scenes[] = {
      {"over a tick", feeds(moved, last, known), last},
      {"over all bars after a tick", feeds(moved, last, known), 0},
      {"over a cell of the host's", overwrites(last), last},
      {"behind a cell of the host's", overwrites(last / 2), last / 2 + 1},
      {"before a cell of the host's", overwrites(last / 2), last / 4},
      {"from a new bar", feeds(bars, known, known + 1), last + 1},
      {"over all bars with new ones", feeds(bars, known, known + 9), 0},
      // Rows between others have no results before a run gets there.
      {"behind new rows between others",
       [&] { siblings.feed_json(R"([{"1":20240101000205,"11":48},{"1":20240101000405,"11":5}])"); },
       last / 2},
      {"behind a row of one cell", [&] { siblings.put_bar(20240101000305); }, last / 2},
  };
  Bars first = bars;
  for (auto& [field, values] : first) values.resize(known);
  siblings.leave_gaps_between_keys();
  for (const auto& [name, act, next_run_from] : scenes) {
    siblings.replace(first);
    if (!siblings.run(0, "in full")) return false;
    act();
    if (!siblings.run(next_run_from, name)) return false;
  }
  return true;
}

/// Columns of one number are written when somebody asks for them: soon, later or never.
TEST(Columns, ThatAreReadLate) {
  std::vector<const char*> scripts = {
      "A:MA(C,5);B:7;D:MA(B,3);E:REF(B,2)+BARPOS;F:=9;G:COUNT(F>8,3);STICKLINE(C>O,C,O,1,0);",
      "A:MA(C,5),COLORRED;B:STD(C,5-(BARPOS=41)*10);D:MA(C,3);E:6;",
      "A:IF(BARPOS>70,C,O);PARTLINE(1,C,COLORRED);POLYLINE(C>O,C,COLORBLUE);B:=MA(C,2);",
  };
  scripts.insert(scripts.end(), std::begin(entangled), std::end(entangled));
  for (const char* script : scripts) {
    for (const int every : {2, 3, 4}) {
      for (const bool is_live : {false, true}) {
        Siblings siblings(script, usual);
        siblings.read_every(every);
        ASSERT_TRUE(siblings.compile()) << script;
        const Bars bars = random_bars(149, 3);
        if (!(is_live ? play_live(siblings, bars, 140) : play(siblings, bars, 140))) return;
      }
    }
  }
}

/// Windows longer than blocks, and than most of the bars, over nulls and zeros of both signs.
TEST(Columns, ExtremesOfLongWindows) {
  constexpr BlockRule rules[] = {{}, {1, 1, 1, 64}, {1, 3, 300, 300}};
  Siblings siblings(
      "A:=HHV(C,300);B:=LLV(H,1000);D:=HV(C-O,257);E:=LLV(O,1900);F:=HHV(V,5000);"
      "G:=LLV((C=C)*(0-MOD(BARPOS,2)),300);I:=HHV(ABS(G)*(MOD(BARPOS,3)-1),256);",
      rules);
  ASSERT_TRUE(siblings.compile());
  play(siblings, random_bars(2209, 5), 2200);
}

/// A word of the host may name a column that the script's calls write.
TEST(Columns, AFieldThatIsAColumnOfTheScript) {
  for (uint32_t id = 20000; id < 20010; ++id) {
    const std::string word = new_word("HOSTSCOLUMN");
    Siblings siblings("A:" + word + "+1;B:MA(" + word + ",2);D:COUNT(" + word + ">1,0);", usual);
    siblings.declare_field(word, id);
    ASSERT_TRUE(siblings.compile());
    Bars bars = random_bars(149, 3);
    if (!play(siblings, bars, 140)) return;
    siblings.read_every(3);
    bars[std::to_string(id)] = bars["V"];
    if (!play_live(siblings, bars, 140)) return;
  }
}

}  // namespace
}  // namespace quor_test
