// A script of the grammar goes through a session by blocks with memories and by plain bars: both
// leave the same answers, cells, records, notices and signals.
#include <bit>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>

#include "core/base_func.h"
#include "core/call.h"
#include "core/word_row.h"
#include "grammar.h"
#include "support/plain_bars.h"

using namespace quor_fuzz;

namespace {

/// Plain bars evaluate what is nested again and again; a session that takes more ends there.
constexpr int most_evaluations = 200'000;

constexpr int most_moves = 12;

constexpr quor::BlockRule rules[] = {{},
                                     {1, 1, 1, 1},
                                     {1, 2, 2, 2},
                                     {1, 3, 7, 7},
                                     {1, 1, 1, 64},
                                     {1, 16, 16, 32},
                                     {40, 5, 9, 21},
                                     quor_test::bar_by_bar};

std::string heard;  ///< from the callbacks of a run

/// Behind the row key, a notice has the time of the clock.
void hear_notice(int64_t, uint32_t, uint64_t, const char* text) {
  heard += std::string_view(text).substr(0, std::string_view(text).find(',') + 1);
}
void hear_signal(int64_t, int64_t, uint32_t row, uint64_t, uint32_t column, uint32_t action,
                 int64_t quantity) {
  for (const int64_t part : {int64_t{row}, int64_t{column}, int64_t{action}, quantity}) {
    heard += std::to_string(part) + ',';
  }
}

/// A word whose evaluations count, and that fails when there are too many.
class CountedWord final : public quor::BaseFunc {
 public:
  CountedWord(const quor::BaseFunc& word, int& left)
      : BaseFunc(word.word()), word_(word), left_(left) {}

  quor::Status execute(const quor::Call& call) const override {
    if (--left_ < 0) throw std::runtime_error("too many evaluations");
    return word_.execute(call);
  }
  bool by_columns() const override { return false; }
  quor::ColumnTraits column_traits() const override { return word_.column_traits(); }
  bool reads_argument(size_t position) const override { return word_.reads_argument(position); }

 private:
  const quor::BaseFunc& word_;
  int& left_;
};

/// One of the two ways through a session.
struct Player {
  FuzzHost host;
  quor::ScriptParser& parser = quor::find_instance(host.handle())->parser;

  bool compile(const std::string& script) const {
    return host.compile(script).find("\"ErrCode\":0,") != std::string::npos;
  }

  std::string run(uint32_t first_row) const {
    heard.clear();
    const std::string answer = host.run(first_row, true);
    // A failure that a word passes over leaves its text at each evaluation, and memories save some.
    return answer.substr(0, answer.find(',')) + heard + host.shapes();
  }
};

/// Plain bars, as long as there are evaluations left.
class PlainPlayer : public Player {
 public:
  bool is_spent() const { return left_ < 0; }

  void go_plain() {
    quor_test::go_by_plain_bars(host.handle());
    for (quor::Variable* variable : parser.pool().script.variable_list) {
      if (variable->function == nullptr) continue;
      auto& word = words_[variable->function];
      if (!word) word = std::make_unique<CountedWord>(*variable->function, left_);
      variable->function = word.get();
    }
  }

 private:
  int left_ = most_evaluations;
  std::map<const quor::BaseFunc*, std::unique_ptr<CountedWord>> words_;
};

bool same(double a, double b) {
  return a != a ? b != b : std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
}

/// Values from a few bytes: some that meet each other often, a walk, stretches of nulls, or numbers
/// of any size.
class Values {
 public:
  explicit Values(Bytes& bytes) : kind_(bytes.below(4)), state_(bytes.word()) {}

  double next() {
    const uint32_t drawn = draw();
    switch (kind_) {
      case 0:
        return drawn % 6 == 5 ? quor::null_value : drawn % 6;
      case 1:
        return walk_ += (drawn % 7 - 3.0) / 4;
      case 2:
        return drawn % 64 < 24 ? quor::null_value : drawn % 9 / 2.0;
      default:
        return drawn % 9 == 0 ? std::bit_cast<double>(uint64_t{draw()} << 32) : drawn % 100;
    }
  }

 private:
  uint32_t draw() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<uint32_t>(state_ >> 33);
  }

  size_t kind_;
  uint64_t state_;
  double walk_ = 50;
};

class Session {
 public:
  explicit Session(Bytes& bytes)
      : bytes_(bytes),
        rule_(bytes.below(std::size(rules))),
        rows_(40U + bytes.byte()),
        values_(bytes) {
    quick_.host.set_info(surroundings(0));
    plain_.host.set_info(surroundings(0));
  }

  void play() {
    const std::string script = Grammar(bytes_).script();
    story_ = script + " rule " + std::to_string(rule_) + ", " + std::to_string(rows_) + " rows";
    if (!quick_.compile(script) || !plain_.compile(script)) return;
    quick_.parser.calculator().set_block_rule(rules[rule_]);
    plain_.go_plain();
    fill();
    run(0);
    for (int left = most_moves; left > 0 && !bytes_.empty() && !plain_.is_spent(); --left) {
      (this->*moves[bytes_.below(std::size(moves))])();
    }
    if (!plain_.is_spent()) run(bytes_.byte());
  }

 private:
  template <typename Use>
  void each(const Use& use) {
    use(quick_);
    use(plain_);
  }

  void tell(const std::string& move, size_t row) {
    story_ += "; " + move + " at " + std::to_string(row);
  }

  /// One of the first rows or one from the end.
  size_t some_row() {
    const size_t place = bytes_.byte();
    return place < 16 ? place : keys_.size() - 1 - place % keys_.size();
  }

  /// A history in one piece.
  void fill() {
    static constexpr uint32_t fields[] = {7, 8, 9, 11, 13, 19};
    keys_.clear();
    std::vector<double> values[std::size(fields)];
    for (size_t row = 0; row < rows_; ++row) {
      keys_.push_back(20240101000000 + 10 * static_cast<int64_t>(row));
      for (auto& column : values) column.push_back(values_.next());
    }
    std::vector<quor::FieldColumn> columns;
    for (size_t i = 0; i < std::size(fields); ++i) columns.push_back({fields[i], values[i].data()});
    each([&](const Player& player) {
      clear_data(player.host.handle());
      player.parser.add_columns(keys_, columns);
    });
  }
  void refill() {
    tell("other bars", 0);
    fill();
    run_from_somewhere();
  }

  void feed(int64_t key) {
    std::string json = "[{\"1\":" + std::to_string(key);
    for (const char* field : {"11", "7", "13"}) {
      const double value = values_.next();
      if (value != value || bytes_.below(4) == 0) continue;
      json += std::string(",\"") + field + "\":" + std::to_string(value);
    }
    json += "}]";
    each([&](const Player& player) { player.host.feed(json); });
  }
  void change() {
    const size_t row = some_row();
    tell("change", row);
    feed(keys_[row]);
  }
  void insert() {
    const size_t row = some_row();
    const int64_t key = keys_[row] - 1;
    if (row > 0 && keys_[row - 1] == key) return;
    tell("insert", row);
    keys_.insert(keys_.begin() + static_cast<ptrdiff_t>(row), key);
    feed(key);
  }
  void append() {
    tell("append", keys_.size());
    keys_.push_back(keys_.back() + 10);
    feed(keys_.back());
    run(keys_.size() - 1);
  }
  void write_cell() {
    const size_t row = some_row();
    const auto id = static_cast<uint32_t>(20000 + bytes_.below(12));
    const double value = values_.next();
    tell("cell of " + std::to_string(id), row);
    each([&](const Player& player) {
      set_column_data(player.host.handle(), static_cast<uint64_t>(keys_[row]), id, value);
    });
  }
  void settle() {
    const size_t choice = bytes_.below(6);
    tell("settings", choice);
    each([&](const Player& player) { player.host.set_info(surroundings(choice)); });
  }

  /// Evaluates an argument on the spot.
  void read() {
    const auto& arguments = plain_.parser.pool().script.argument_variables;
    if (arguments.empty()) return;
    const auto place = static_cast<ptrdiff_t>(bytes_.below(arguments.size()));
    const auto id = static_cast<int32_t>(std::next(arguments.begin(), place)->second->column_id);
    const size_t row = some_row();
    tell("read " + std::to_string(id), row);
    const auto value_of = [id, row](const Player& player) {
      return get_field_val_by_index(player.host.handle(), id, static_cast<int32_t>(row));
    };
    const double expected = value_of(plain_);
    if (!plain_.is_spent()) compare("the value", value_of(quick_), expected);
  }

  void run_in_full() { run(0); }
  void run_from_somewhere() { run(some_row()); }
  void run(size_t first_row) {
    tell("run", first_row);
    const std::string expected = plain_.run(static_cast<uint32_t>(first_row));
    if (plain_.is_spent()) return;
    const std::string found = quick_.run(static_cast<uint32_t>(first_row));
    if (found != expected) differ("the answer", found, expected);
    compare_cells();
  }

  void compare_cells() {
    const quor::DataTable& found = quick_.parser.pool().table();
    const quor::DataTable& expected = plain_.parser.pool().table();
    compare("the count of columns", found.column_count(), expected.column_count());
    for (uint32_t column = 0; column < expected.column_count(); ++column) {
      const double* found_cells = found.cells(static_cast<int32_t>(column)).data();
      const double* expected_cells = expected.cells(static_cast<int32_t>(column)).data();
      for (size_t row = 0; row < keys_.size(); ++row) {
        if (same(found_cells[row], expected_cells[row])) continue;
        tell("column " + std::to_string(expected.column_id(column)), row);
        compare("the cell", found_cells[row], expected_cells[row]);
      }
    }
  }

  void compare(const char* what, double found, double expected) {
    if (!same(found, expected)) differ(what, std::to_string(found), std::to_string(expected));
  }
  void differ(const char* what, const std::string& found, const std::string& expected) {
    std::fprintf(stderr, "%s\nby blocks %s\nby bars %s\n", story_.c_str(), found.c_str(),
                 expected.c_str());
    expect(false, what);
  }

  static constexpr void (Session::*moves[])() = {
      &Session::change,      &Session::insert,
      &Session::append,      &Session::write_cell,
      &Session::settle,      &Session::refill,
      &Session::read,        &Session::read,
      &Session::run_in_full, &Session::run_from_somewhere};

  Bytes& bytes_;
  Player quick_;
  PlainPlayer plain_;
  size_t rule_;
  size_t rows_;  ///< of a history in one piece
  Values values_;
  std::vector<int64_t> keys_;
  std::string story_;  ///< for the reader of a finding
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  set_quiet_handlers();
  set_parser_notice_callback_handler(hear_notice);
  set_trade_callback(hear_signal);
  Bytes bytes({reinterpret_cast<const char*>(data), size});
  Session(bytes).play();
  return 0;
}
