// Random bytes and random words in every text: a defined answer, never a crash.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/test_host.h"
#include "support/word_statements.h"
#include "vocabulary/function_sets.h"

namespace quor_test {
namespace {

class Noise {
 public:
  explicit Noise(unsigned seed) : random_(seed) {}

  std::string bytes(size_t most) {
    std::string text(random_() % most, '\0');
    for (char& c : text) c = static_cast<char>(random_() % 256);
    return text;
  }

  /// Words, signs and numbers of the language in no order.
  std::string words(size_t most) {
    static const std::string signs[] = {
        "(",  ")", ",",  ";",   ":",        ":=",    "+",  "-",      "*",     "/",
        "%",  "=", "<>", "&&",  "|",        "'",     "\"", "{",      "}",     "//",
        "\n", "#", "@",  "~31", "~",        "0",     "-1", "1E99",   "0.5",   "NULL",
        "C",  "H", "A",  "'X'", "COLORRED", "STICK", "$",  "CONST ", " AND ", "!"};
    const auto rows = quor::FunctionIdTable();
    std::string text;
    for (auto count = random_() % most; count > 0; --count) {
      text += random_() % 3 == 0 ? std::string(rows[random_() % rows.size()].word) + "("
                                 : signs[random_() % std::size(signs)];
    }
    return text;
  }

  /// Pieces of the older forms, whose passes cut and join the text of a statement.
  std::string short_forms(size_t most) {
    static const std::string forms[] = {
        "RGB(1,2,3)", "RGB(",   "SOUND(",        "ICON(1,",  "ICON(",      "WORD(1,",
        "CJLVOL(0)",  "STICK",  "CROSSDOT",      "NOTICE('", "NOTICE",     "BK",
        "HHV(C,2)",   "IF(",    "CLOSEOUT(2)",   "NEW",      "GETPRICE('", "GETSTOCKPRICE(",
        "DAY$1$C",    "MIN$5$", "SETSTYLECOLOR("};
    static const std::string signs[] = {"C>O", ",", ":", "=", "'", "'x'", "\"", "$", ")", "-"};
    std::string text;
    for (auto count = random_() % most; count > 0; --count) {
      text += random_() % 2 == 0 ? forms[random_() % std::size(forms)]
                                 : signs[random_() % std::size(signs)];
    }
    return text;
  }

  size_t below(size_t limit) { return random_() % limit; }

 private:
  std::mt19937 random_;
};

void play(TestHost& host, const std::string& script, const std::string& parameters,
          const std::string& lines, const std::string& rows) {
  // The report of a message with a quote is no JSON, so the text isn't taken apart here.
  uint32_t length = 0;
  char* report = get_pre_parse_res(host.handle(), script.data(), parameters.data(), lines.data(),
                                   static_cast<uint32_t>(script.size()),
                                   static_cast<uint32_t>(parameters.size()),
                                   static_cast<uint32_t>(lines.size()), &length);
  ASSERT_NE(report, nullptr);
  ASSERT_EQ(report[length], '\0');
  release_ptr_val(report);
  host.feed({{"C", series("1 null 3 4")}, {"H", series("2 5 1 7")}});
  host.feed_json(rows);
  EXPECT_TRUE(host.run().starts_with("{\"ErrCode\":"));
  EXPECT_TRUE(host.run(2, true).starts_with("{\"ErrCode\":"));
  for (int id = 30; id < 40; ++id) get_field_val_by_index(host.handle(), ~id, 2);
  EXPECT_TRUE(host.shapes().starts_with('['));
}

TEST(Hostile, RandomBytes) {
  Noise noise(1);
  for (int i = 0; i < 300; ++i) {
    TestHost host;
    play(host, noise.bytes(200), noise.bytes(60), noise.bytes(60), noise.bytes(60));
  }
}

TEST(Hostile, RandomShortForms) {
  Noise noise(3);
  TestHost host;
  for (int i = 0; i < 3000; ++i) {
    play(host, noise.short_forms(8) + ";A:" + noise.short_forms(10) + ";", "", "", "");
  }
}

TEST(Hostile, RandomWords) {
  Noise noise(2);
  TestHost host;
  for (int i = 0; i < 1500; ++i) {
    play(host, "A:" + noise.words(14) + ";" + noise.words(10) + ";", "", "",
         "[{\"1\":" + noise.words(3) + "}]");
  }
}

/// Numbers out of bounds, and K, which holds one after the other.
constexpr const char* hostile_numbers[] = {
    "-1", "-5", "0", "0.5", "2147483647", "-2147483648", "3000000000", "-1E300", "1E300", "K"};

/// What a run may answer to them.
bool is_defined(const std::string& answer) {
  return answer == success || answer.starts_with(R"({"ErrCode":2012,)") ||
         answer == R"({"ErrCode":4000,"ExtraMsg":"","ErrLine":"vector too long"})" ||
         answer.ends_with(R"("ErrLine":"Invalid parametrization for the distribution."})");
}

TEST(Hostile, NumbersInEveryPlaceOfEveryWord) {
  constexpr size_t rows = 60;
  const Series numbers =
      series("null 3 -1 0 2147483647 -2147483648 1e300 -7 0.5 2 1e-300 2147483648 -1e300");
  Bars bars;
  for (size_t row = 0; row < rows; ++row) {
    bars["C"].push_back(row % 11 == 5 ? null : 10 + static_cast<double>(row * 7 % 13));
    bars["O"].push_back(row % 3 == 0 ? 1 : 0);
    for (const char* field : {"H", "L", "V"}) bars[field].push_back(static_cast<double>(row % 17));
    bars["AMOUNT"].push_back(numbers[row % numbers.size()]);
  }
  for (const auto& [word, id] : quor::FunctionIdTable()) {
    for (const char* number : hostile_numbers) {
      for (const std::string& statement : statements_with(word, number)) {
        TestHost host;
        if (host.compile("K:=AMOUNT;" + statement).code != 0) continue;
        host.feed(bars);
        for (const uint32_t first : {0U, 30U, 59U}) {
          const std::string answer = host.run(first);
          EXPECT_TRUE(is_defined(answer)) << statement << '\n' << answer;
        }
        for (int32_t argument = -1; argument > -12; --argument) {
          for (const int32_t row : {INT32_MIN, -1, 59, 60}) {
            get_field_val_by_index(host.handle(), argument, row);
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace quor_test
