// What the rows of the words say of them, against the vocabularies and against what the words do.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "compiler/declarations.h"
#include "compiler/pipeline.h"
#include "core/row_intake.h"
#include "support/test_host.h"
#include "support/vectors.h"
#include "support/word_statements.h"
#include "tables/field_table.h"
#include "text/strings.h"
#include "vocabulary/families.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor_test {
namespace {

using quor::Traits;

constexpr Traits beyond_the_past = quor::reads_forward | quor::follows_rows;
constexpr size_t row_count = 40;

Bars bars_with(unsigned seed, size_t rows) {
  std::mt19937 random(seed);
  const auto draw = [&random](unsigned most) { return static_cast<double>(random() % most); };
  Bars bars;
  for (size_t row = 0; row < rows; ++row) {
    const double wave = 10 + 3 * std::sin(static_cast<double>(row)) + draw(7);
    bars["O"].push_back(wave);
    bars["C"].push_back(wave + draw(3) - 1);
    bars["H"].push_back(wave + 2);
    bars["L"].push_back(wave - 2);
    bars["V"].push_back(100 + draw(50));
    bars["AMOUNT"].push_back(wave * (100 + draw(9)));
  }
  return bars;
}

int questions = 0;  ///< what the host was asked

/// The compiler and the engine of one instance, without the interface around them.
struct Engine {
  quor::DataPoolCenter pool;
  quor::CalculateCenter calculator{pool};
  quor::CompileContext context{pool, calculator};
  quor::RowIntake intake;

  Engine() {
    quor::build_function_registry();
    // No other test has a calendar for it, which would stay for the life of the process.
    static const std::string security = new_word("60");
    settle(security.c_str(), "USHA", 0x3005);
    for (const quor::Field& field : quor::reserved_fields()) {
      quor::add_reserved_variable(context, field.word, static_cast<uint32_t>(field.id), false);
    }
    pool.fire_signals = true;
    pool.extra_data_callback = [](const char*, const char*, const char*) {
      ++questions;
      return 1.0;
    };
  }

  void settle(const char* security, const char* market, int32_t period) {
    pool.set_extra_info(period, security, market, "UTC+08:00");
  }

  /// False if the script is refused.
  bool compile(const std::string& script) {
    return quor::pre_parse(context, script, "", "").find("\"ErrCode\":0") != std::string::npos;
  }

  void feed(const Bars& bars) {
    const size_t rows = bars.at("C").size();
    std::vector<int64_t> keys;
    for (size_t row = 0; row < rows; ++row) {
      keys.push_back(20240102093000 + static_cast<int64_t>(row));
    }
    intake.add_row(pool, rows_json(bars, 0, rows, keys));
  }

  /// Calculates all rows; false if it fails.
  bool run() {
    try {
      std::string error;
      return !failed(calculator.calculate(0, false, error));
    } catch (const std::exception&) {
      return false;
    }
  }

  quor::Variable& call_of(std::string_view word) {
    for (quor::Variable* variable : pool.script.variable_list) {
      if (variable->function_word == word) return *variable;
    }
    throw std::logic_error("no call of " + std::string(word));
  }

  /// Calculates one bar of the first statement.
  void calculate_bar(int32_t row) {
    quor::Variable& statement = *pool.script.statement_list.front();
    std::string error;
    double value = 0.0;
    EXPECT_FALSE(failed(calculator.evaluate(statement, row, false, error, value)));
    if (statement.column_id != quor::no_column) {
      pool.table().set_cell(row, statement.column_index, value);
    }
  }

  /// The first rows of all columns.
  std::vector<Series> columns(size_t rows) const {
    std::vector<Series> all;
    for (uint32_t column = 0; column < pool.table().column_count(); ++column) {
      const auto cells = pool.table().cells(static_cast<int32_t>(column)).first(rows);
      all.emplace_back(cells.begin(), cells.end());
    }
    return all;
  }
};

bool same_columns(const std::vector<Series>& a, const std::vector<Series>& b) {
  return std::ranges::equal(
      a, b, [](const Series& one, const Series& other) { return same(one, other); });
}

/// Calls that show what the usual ones hide.
const std::multimap<std::string_view, std::string> telling_arguments = {
    {"DIVERGENCE", "C,0-C,1,9,1"}, {"DIVERGENCE", "C,0-C,1,6,1"},  {"DIVERGENCE", "C,0-C,2,4,1"},
    {"DIVERGENCE", "C,0-C,1,4,1"}, {"DIVERGENCE", "C,0-C,1,7,-1"}, {"EMAWH", "C,45"},
    {"EVERY", "BARPOS,-5"},        {"EXIST", "ISNULL(C),-5"},      {"LAST", "ISNULL(C),-5,0"},
    {"NDAY", "BARPOS,0.5,-5"},     {"UPNDAY", "BARPOS,-5"},        {"DOWNNDAY", "0-BARPOS,-5"},
};

/// The word's call as it is meant, and with strange arguments, one at a time.
std::vector<std::string> statements_of(std::string_view word) {
  const std::string usual(arguments_of(word));
  std::vector<std::string> statements = {statement_of(word, usual)};
  if (usual.empty()) return statements;
  const auto [first, last] = telling_arguments.equal_range(word);
  for (auto telling = first; telling != last; ++telling) {
    statements.push_back(statement_of(word, telling->second));
  }
  for (const char* strange : {"C>O", "-5", "0-5", "0", "2.5", "1000000", "DRAWNULL", "BARPOS-8"}) {
    for (std::string& changed : statements_with(word, strange)) {
      statements.push_back(std::move(changed));
    }
  }
  return statements;
}

/// Runs `check` on an engine that has calculated the statement, with what its row says of the call;
/// counts the failures of others.
using Check = std::function<void(const std::string& statement, Engine& engine, Traits traits)>;
int for_each_statement(std::string_view word, const Check& check) {
  int failures = 0;
  for (const std::string& statement : statements_of(word)) {
    Engine engine;
    if (!engine.compile(statement)) continue;
    const Traits traits = traits_of(engine.call_of(word));
    engine.feed(bars_with(1, row_count));
    clear_events();
    // Other tests leave a handler of theirs.
    set_get_trade_dates_callback([](const char*, const char*, const char*, const char*, int*) {
      ++questions;
      return "";
    });
    questions = 0;
    if (engine.run()) {
      check(statement, engine, traits);
    } else {
      EXPECT_TRUE(traits.has(quor::can_fail)) << statement;
      ++failures;
    }
  }
  return failures;
}

std::map<std::string_view, Traits> all_rows() {
  std::map<std::string_view, Traits> rows;
  for (const quor::Family family : quor::function_families()) {
    for (const quor::WordRow& row : family()) {
      EXPECT_TRUE(rows.emplace(row.word, row.traits).second) << row.word << " has two rows";
    }
  }
  return rows;
}

void for_each_word(const std::function<void(std::string_view word, Traits traits)>& check) {
  for (const auto& [word, traits] : all_rows()) check(word, traits);
}

TEST(Traits, EveryWordHasOneRowAndTheVocabulariesAgree) {
  const auto rows = all_rows();
  EXPECT_EQ(rows.size(), quor::FunctionIdTable().size());
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    ASSERT_TRUE(rows.contains(word)) << word;
    const Traits traits = rows.at(word);
    EXPECT_EQ(traits.has(quor::draws), quor::OutputFunctionSet().contains(word)) << word;
    const bool ahead = quor::LookAheadFunctionSet().contains(word);
    EXPECT_TRUE(!ahead || traits.has(quor::reads_forward)) << word;
    const bool whole = quor::WholeSeriesFunctionSet().contains(word);
    EXPECT_TRUE(!whole || traits.has_any(beyond_the_past)) << word;
    // Whoever isn't steady has a reason, so that no word is slow because it was forgotten.
    EXPECT_NE(traits.has(quor::steady), traits.has_any(beyond_the_past | quor::acts |
                                                       quor::hides_state | quor::reads_statement) ||
                                            word == "ZIG")
        << word;
  }
}

TEST(Traits, EveryWordHasAnIdOfItsOwnAndNumbersThatSomebodyDerived) {
  std::set<std::string, std::less<>> derived;
  for (Vector vector : load_vectors()) {
    std::ranges::replace_if(
        vector.script, [](unsigned char c) { return std::isalnum(c) == 0; }, ' ');
    for (const std::string_view word : quor::split(vector.script, " ")) derived.emplace(word);
  }
  std::map<int32_t, std::string> words_of_id;
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    words_of_id[id] += std::string(word) + " ";
    const bool gives_numbers = !all_rows().at(word).has_any(quor::draws | quor::acts);
    EXPECT_TRUE(derived.contains(word) || !gives_numbers) << word << " has no vectors";
  }
  for (const auto& [id, words] : words_of_id) {
    EXPECT_TRUE(id == 167 ? words == "REFX1 PEAK " : words.find(' ') == words.size() - 1) << words;
  }
}

TEST(Traits, ARepeatableWordGivesTheSameInWhateverOrder) {
  std::mt19937 random(7);
  for_each_word([&random](std::string_view word, Traits) {
    for_each_statement(word, [&](const std::string& statement, Engine& engine, Traits traits) {
      if (!traits.has(quor::repeatable)) return;
      const auto columns = engine.columns(row_count);
      for (size_t i = 0; i < 3 * row_count; ++i) {
        engine.calculate_bar(static_cast<int32_t>(random() % row_count));
      }
      EXPECT_TRUE(same_columns(engine.columns(row_count), columns)) << statement;
    });
  });
}

/// How many bars behind its own one a call evaluates its arguments at most.
size_t lag_of(const quor::Variable& call) {
  static const std::map<std::string_view, size_t> argument_of = {{"REF", 1}, {"LAST", 2}};
  static const std::set<std::string_view> late_by_one = {"HV", "LV", "NEWHBARS1", "NEWLBARS1"};
  const auto argument = argument_of.find(call.function_word);
  if (argument == argument_of.end()) return late_by_one.contains(call.function_word) ? 1 : 0;
  return static_cast<size_t>(std::max(call.arguments[argument->second]->value, 0.0));
}

TEST(Traits, AWordThatLooksBackDoesNotSeeLaterBars) {
  for_each_word([](std::string_view word, Traits row_traits) {
    bool saw_later_bars = false;
    for_each_statement(word, [&](const std::string& statement, Engine& engine, Traits traits) {
      if (traits.has(quor::acts)) return;
      for (const size_t known : {size_t{1}, size_t{17}, row_count}) {
        Bars bars = bars_with(1, row_count);
        const Bars others = bars_with(2, row_count + 13);
        for (auto& [field, values] : bars) {
          const Series& other = others.at(field);
          values.resize(known);
          values.insert(values.end(), other.begin() + static_cast<ptrdiff_t>(known), other.end());
        }
        Engine changed;
        changed.compile(statement);
        changed.feed(bars);
        // A word that comes late to its arguments writes their columns as late.
        const size_t settled = known - std::min(known, lag_of(engine.call_of(word)));
        const bool equal =
            changed.run() && same_columns(changed.columns(settled), engine.columns(settled));
        EXPECT_TRUE(equal || !traits.has(quor::looks_back)) << statement << " before row " << known;
        if (!equal) saw_later_bars = true;
      }
    });
    const bool may_see =
        (Traits{row_traits.with_other_periods} | row_traits).has_any(beyond_the_past);
    EXPECT_EQ(saw_later_bars, may_see) << word;
  });
}

TEST(Traits, AWordThatCanFailDoes) {
  for_each_word([](std::string_view word, Traits traits) {
    const int failures = for_each_statement(word, [](const auto&, Engine&, Traits) {});
    const bool may_fail = (Traits{traits.with_other_periods} | traits).has(quor::can_fail);
    // A script with one of these is refused before it runs.
    const bool refused = word == "ZIG" || word == "NOTICE" || quor::TradeSignalSet().contains(word);
    EXPECT_EQ(failures > 0, may_fail && !refused) << word;
  });
}

TEST(Traits, AWordThatActsReachesTheHost) {
  const std::set<std::string_view> of_the_machine = {"RAND", "CURRENTDATE", "CURRENTTIME"};
  for_each_word([&of_the_machine](std::string_view word, Traits traits) {
    for_each_statement(word, [&](const std::string& statement, Engine&, Traits) {
      const bool reached = questions > 0 || !events().log.empty() || !events().notices.empty() ||
                           !events().signals.empty();
      const bool expected = traits.has(quor::acts) && !of_the_machine.contains(word);
      EXPECT_EQ(reached, expected) << statement;
    });
  });
}

TEST(Traits, AWordFollowsTheSettingsOrNot) {
  for_each_word([](std::string_view word, Traits traits) {
    if (!traits.has(quor::repeatable)) return;
    bool followed = false;
    for_each_statement(word, [&](const std::string& statement, Engine& engine, Traits) {
      const auto columns = engine.columns(row_count);
      engine.settle("000001", "USHI", 0x4000);
      EXPECT_TRUE(engine.run());
      const bool equal = same_columns(engine.columns(row_count), columns);
      if (!equal) followed = true;
      EXPECT_TRUE(equal || traits.has(quor::follows_settings)) << statement;
    });
    EXPECT_EQ(followed, traits.has(quor::follows_settings)) << word;
  });
}

}  // namespace
}  // namespace quor_test
