// Every word with a column form over every word that gives a value: blocks and memories leave what
// plain bars leave, where windows reach back to row 0 and where arguments are read between runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/plain_bars.h"
#include "support/test_host.h"
#include "support/word_statements.h"
#include "tables/field_table.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor_test {
namespace {

constexpr size_t row_count = 90;

Bars make_bars() {
  std::mt19937_64 random(1);
  const auto draw = [&random](unsigned below) { return static_cast<double>(random() % below); };
  Bars bars;
  double close = 50;
  for (size_t row = 0; row < row_count; ++row) {
    close += draw(7) / 4 - 0.75;
    // At the bars that are read between runs, conditions have passed over what they guard.
    const double open = close + (row % 40 == 0 ? 0.25 : draw(5) / 4 - 0.5);
    bars["C"].push_back(draw(29) == 0 ? null : close);
    bars["O"].push_back(open);
    bars["H"].push_back(std::max(open, close) + draw(3) / 2);
    bars["L"].push_back(std::min(open, close) - draw(3) / 2);
    bars["V"].push_back(100 + draw(50));
    bars["AMOUNT"].push_back(1000 * draw(9));
  }
  return bars;
}

/// What a session leaves, with its places.
struct Record {
  struct Part {
    std::string name;
    size_t first;
  };
  Series values;
  std::vector<Part> parts;

  void open(std::string name) { parts.push_back({std::move(name), values.size()}); }
  /// Where the records first differ.
  std::string tell(const Record& expected) const {
    size_t place = 0;
    while (place < values.size() && place < expected.values.size() &&
           same(values[place], expected.values[place])) {
      ++place;
    }
    const auto part = std::ranges::upper_bound(parts, place, {}, &Part::first) - 1;
    return part->name + " row " + std::to_string(place - part->first) + ": " + text(place) +
           ", by bars " + expected.text(place);
  }
  std::string text(size_t place) const {
    return place < values.size() ? to_text({values[place]}) : "nothing";
  }
};

/// An instance that plays one script after the other over the same bars.
class Player {
 public:
  Player() {
    host_.set_info(0x3000, "600000", "USHA");
    for (size_t row = 0; row < row_count; ++row) keys_.push_back(host_.key_of(row));
    for (const auto& [field, values] : bars_) {
      const auto id = quor::reserved_field_id(field);
      fields_.push_back({static_cast<uint32_t>(id.value()), values.data()});
    }
  }

  /// Says where blocks and memories leave something else than plain bars, if the script stands.
  void check(const std::string& script, const quor::BlockRule& rule) {
    if (host_.compile(script).code != 0) return;
    go_by_plain_bars(host_.handle());
    play(expected_);
    host_.compile(script);
    parser_.calculator().set_block_rule(rule);
    play(found_);
    if (same(found_.values, expected_.values)) return;
    ADD_FAILURE() << script << ' ' << found_.tell(expected_);
  }

 private:
  static constexpr int32_t changed_row = 70;

  static Bars bars_with_a_change() {
    Bars bars = make_bars();
    for (auto& [field, values] : bars) values[changed_row] += 1;
    return bars;
  }

  void play(Record& record) {
    record.values.clear();
    record.parts.clear();
    for (int time = 0; time < 2; ++time) {
      // Calls have their columns only the second time.
      parser_.pool().table().clear_rows();
      parser_.add_columns(keys_, fields_);
      run(0, record);
    }
    read(0, record);
    read(40, record);
    run(60, record);
    // A reading behind a bar that has changed comes before the run that takes the change in.
    host_.feed(changed_bars_, changed_row, changed_row + 1);
    read(changed_row + 5, record);
    run(changed_row, record);
    run(row_count - 1, record);
    Bars moving = bars_;
    for (auto& [field, values] : moving) {
      values.back() += 2;
      host_.feed(moving, row_count - 1, row_count);
      tick("a tick of " + field, record);
    }
  }

  /// The last bar has moved in one field.
  void tick(std::string name, Record& record) {
    host_.run(row_count - 1);
    record.open(std::move(name));
    const quor::DataTable& table = parser_.pool().table();
    for (uint32_t column = 0; column < table.column_count(); ++column) {
      record.values.push_back(table.cell(row_count - 1, static_cast<int32_t>(column)));
    }
  }

  void run(uint32_t first_row, Record& record) {
    const std::string name = "run from " + std::to_string(first_row);
    record.open(name + " fails");
    record.values.push_back(host_.run(first_row) == success ? 0.0 : 1.0);
    const quor::DataTable& table = parser_.pool().table();
    for (uint32_t column = 0; column < table.column_count(); ++column) {
      const uint32_t id = table.column_id(column);
      if (id < quor::DataTable::first_auxiliary_id) continue;
      record.open(name + " column " + std::to_string(id));
      const auto cells = table.cells(static_cast<int32_t>(column)).first(row_count);
      record.values.insert(record.values.end(), cells.begin(), cells.end());
    }
  }

  void read(int32_t row, Record& record) {
    for (const auto& [text, argument] : parser_.pool().script.argument_variables) {
      const auto id = static_cast<int32_t>(argument->column_id);
      record.open("argument " + std::to_string(id));
      record.values.push_back(get_field_val_by_index(host_.handle(), id, row));
    }
  }

  TestHost host_;
  quor::ScriptParser& parser_ = quor::find_instance(host_.handle())->parser;
  const Bars bars_ = make_bars();
  const Bars changed_bars_ = bars_with_a_change();
  std::vector<int64_t> keys_;
  std::vector<quor::FieldColumn> fields_;
  Record found_;
  Record expected_;
};

/// What stands for the periods of both calls and for the closes of the inner one, and the blocks.
/// The outer windows are full where a block begins, and so reach back to row 0 there.
struct Variation {
  std::string_view outer_period;
  std::string_view inner_period;
  std::string_view inner_closes;
  quor::BlockRule rule;
};
constexpr Variation variations[] = {
    {"17", "3", "C", {}}, {"33", "0", "C-O", {1, 1, 1, 1}}, {"65", "17", "O", {1, 1, 1, 64}}};

using Arguments = std::vector<std::string>;

Arguments arguments_with(std::string_view word, std::string_view period, std::string_view closes) {
  Arguments arguments = split_arguments(arguments_of(word));
  for (std::string& argument : arguments) {
    const bool is_period = argument.size() == 1 && argument[0] >= '3' && argument[0] <= '9';
    if (is_period) argument = period;
    if (argument == "C") argument = closes;
  }
  return arguments;
}

/// The calls of the words that may stand for a series.
std::vector<std::string> inner_calls(const Variation& variation) {
  std::vector<std::string> calls;
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    if (quor::OutputFunctionSet().contains(word) || word == "RAND" || word == "CURRENTTIME")
      continue;
    const Arguments arguments =
        arguments_with(word, variation.inner_period, variation.inner_closes);
    calls.push_back(call_of(word, join_arguments(arguments)));
  }
  return calls;
}

bool is_series(std::string_view argument) {
  return argument[0] >= 'A' && argument[0] <= 'Z' && !argument.starts_with("COLOR");
}

class Pairs : public testing::TestWithParam<Variation> {
 protected:
  void check_all_over(std::string_view outer) {
    const Arguments arguments = arguments_with(outer, GetParam().outer_period, "C");
    for (size_t place = 0; place < arguments.size(); ++place) {
      if (!is_series(arguments[place])) continue;
      for (const std::string& inner : inner_calls_) {
        Arguments nested = arguments;
        nested[place] = inner;
        player_.check(statement_of(outer, join_arguments(nested)), GetParam().rule);
      }
    }
  }

 private:
  Player player_;
  const std::vector<std::string> inner_calls_ = inner_calls(GetParam());
};

TEST_P(Pairs, LeaveWhatPlainBarsLeave) {
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    const std::string_view usual = arguments_of(word);
    if (usual.empty() || !quor::find_function(word)->by_columns()) continue;
    // Without a period, a word is another in each variation by what it holds alone.
    const bool has_period = arguments_with(word, "17", "C") != split_arguments(usual);
    if (has_period || GetParam().inner_period == "0") check_all_over(word);
  }
}

INSTANTIATE_TEST_SUITE_P(Windows, Pairs, testing::ValuesIn(variations), [](const auto& variation) {
  return "Of" + std::string(variation.param.outer_period);
});

}  // namespace
}  // namespace quor_test
