// The face of the engine for C++ beside the C interface: the same table, the same lines, the same
// errors; and what only this face has.
#include "engine/engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <ctime>
#include <iterator>
#include <random>
#include <thread>

#include "support/engine_vectors.h"

namespace quor_test {
namespace {

using quor::engine::Field;
using quor::engine::Misuse;
using quor::engine::Script;
using quor::engine::Settings;

std::string number(double value) {
  if (value != value) return "null";
  char digits[40];
  const auto end =
      std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::scientific);
  return {std::begin(digits), end.ptr};
}

/// The bars as the text of `set_row_data`; every number reads back to the same bits.
std::string json_of(const Arrays& bars) {
  std::string text = "[";
  for (size_t row = 0; row < bars.keys.size(); ++row) {
    text += (row > 0 ? ",{\"1\":" : "{\"1\":") + std::to_string(bars.keys[row]);
    for (const auto& [id, values] : bars.fields) {
      text += ",\"" + std::to_string(id) + "\":" + number(values[row]);
    }
    text += '}';
  }
  return text + ']';
}

std::vector<uint64_t> bits_of(std::span<const double> values) {
  std::vector<uint64_t> bits;
  for (const double value : values) bits.push_back(std::bit_cast<uint64_t>(value));
  return bits;
}

void expect_same_column(const Script& script, const TestHost& host, uint32_t id) {
  EXPECT_EQ(bits_of(script.column(id)), bits_of(host.column(id))) << "column " << id;
}

/// Lines of both must be alike to the last bit, except that any null is like any other.
void expect_same_lines(const Script& script, const TestHost& host, const std::string& how) {
  for (const auto& line : script.lines()) {
    ASSERT_EQ(static_cast<int32_t>(line.column), host.id_of(line.name)) << how << line.name;
    const auto values = script.column(line.column);
    const Series got(values.begin(), values.end());
    EXPECT_TRUE(same(got, host.column(line.column))) << how << line.name;
  }
}

TEST(EngineTable, ArraysAndRowTextsGiveTheSameTableToTheLastBit) {
  constexpr const char* source = "A:=C+O;B:=MA(C,3);D:=TIME;E:=\"600000$CLOSE\";";
  std::mt19937_64 random(7);
  const double odd[] = {std::bit_cast<double>(0x7FF8000000000123ULL),
                        std::bit_cast<double>(0xFFF0000000000001ULL),
                        4294967295.0,
                        2147483648.0,
                        2147483649.0,
                        -0.0,
                        5e-324,
                        0.1};
  Script script(source);
  TestHost host;
  ASSERT_EQ(host.compile(source).code, 0);
  ASSERT_FALSE(script.report().failure);
  ASSERT_EQ(script.report().references.size(), 1U);
  const uint32_t reference = script.report().references[0].column;
  for (int text = 0; text < 40; ++text) {
    Arrays bars;
    const bool begins_anew = text % 4 == 1 && text < 20;
    if (begins_anew) {
      script.clear_rows();
      clear_data(host.handle());
    }
    // Ascending keys, or unsorted, repeated and impossible ones; fields that the script doesn't
    // read, such as 8.
    for (uint64_t n = random() % 60; n > 0; --n) {
      const auto any = static_cast<int64_t>(random() % 200) - 5;
      bars.keys.push_back(begins_anew ? 300 - static_cast<int64_t>(n) : any);
      for (const uint32_t id : {7U, 8U, 11U, reference}) {
        if (id == 7U && text % 3 == 0) continue;
        bars.fields[id].push_back(odd[random() % std::size(odd)]);
      }
    }
    script.set_rows(bars.keys, bars.spans());
    host.feed_json(json_of(bars));
    ASSERT_EQ(script.row_count(), get_row_num(host.handle()));
    for (const uint32_t id : {1U, 7U, 11U, reference}) expect_same_column(script, host, id);
  }
  EXPECT_GT(script.row_count(), 150U);
  EXPECT_THROW(script.column(8), Misuse);
  EXPECT_FALSE(script.calculate());
  EXPECT_EQ(host.run(), success);
  for (const auto& line : script.lines()) expect_same_column(script, host, line.column);
}

TEST(EngineTable, KeysAndRowsLeadToEachOther) {
  Script script("A:=C;");
  const int64_t keys[] = {30, 10, 20};
  const double close[] = {3, 1, 2};
  const Field fields[] = {{11, close}};
  script.set_rows(keys, fields);
  EXPECT_EQ(script.key_of(2), 30);
  EXPECT_EQ(script.row_of(20), 1U);
  EXPECT_EQ(script.row_of(25), std::nullopt);
  EXPECT_THROW(script.key_of(3), Misuse);
  script.clear_rows();
  EXPECT_EQ(script.row_count(), 0U);
}

TEST(Engine, ListsLinesWithTheirLook) {
  const Script script(
      "CLOSE2:C*2,COLORRED,LINETHICK3,DASH;hidden:=C;BARS:V,VOLSTICK;DOTS:C,CIRCLEDOT;"
      "CROSS(C,HIDDEN),NOTICE('up');");
  std::string list;
  for (const auto& line : script.lines()) {
    list += line.name + " " + std::to_string(line.statement);
    if (line.look) list += " " + line.look->shape + "/" + line.look->style + "/" + line.look->dash;
    list += "; ";
  }
  EXPECT_EQ(list,
            "CLOSE2 0 PolylineShape/Polyline/DASH; HIDDEN 1; BARS 2 BarShape/Line/; "
            "DOTS 3 TextShape/TextShape/; ");
  EXPECT_EQ(script.lines()[0].look->colour, "TempBrushKey.#CC3030");
  EXPECT_EQ(script.lines()[0].look->width, 3.0F);
  EXPECT_EQ(script.shapes().size(), 4U);
  EXPECT_EQ(script.words(), (std::vector<std::string>{"CROSS", "DRAWTEXT", "NOTICE", "POLYLINE",
                                                      "REF", "STICKLINE1"}));
}

TEST(Engine, GivesEventsAsValuesAndThoseOfTheExportsInTheSameOrder) {
  constexpr const char* source = "A:=C;CROSS(C,2),NOTICE('up');C>2,BK(3);C<2,SP;";
  const int64_t keys[] = {20240102000000, 20240103000000, 20240104000000};
  const double close[] = {1, 3, 4};
  const Field fields[] = {{11, close}};
  clear_events();
  Script script(source);
  script.set_rows(keys, fields);
  EXPECT_FALSE(script.calculate(0, true));
  EXPECT_TRUE(events().notices.empty() && events().signals.empty());
  std::string heard;
  for (const auto& event : script.events()) {
    heard += std::to_string(event.row) + event.word + event.name + std::to_string(event.quantity) +
             "@" + std::to_string(event.statement) + " ";
    EXPECT_EQ(event.key, keys[event.row]);
  }
  EXPECT_EQ(heard, "0SP-1@3 1NOTICEup-1@1 1BK3@2 2BK3@2 ");
  EXPECT_FALSE(script.calculate(2));
  EXPECT_TRUE(script.events().empty());

  TestHost host;
  host.compile(source);
  host.set_keys({keys[0], keys[1], keys[2]});
  host.feed({{"C", {1, 3, 4}}});
  host.run(0, true);
  EXPECT_FALSE(script.calculate(0, true));
  ASSERT_EQ(events().signals.size(), 3U);
  for (size_t i = 0, signal = 0; i < script.events().size(); ++i) {
    const auto& event = script.events()[i];
    if (event.word == "NOTICE") continue;
    EXPECT_EQ(event.key, events().signals[signal].bar);
    EXPECT_EQ(event.column, events().signals[signal].column_id);
    ++signal;
  }
}

TEST(Engine, CalculatesAConditionBesideTheLines) {
  Settings settings;
  settings.parameters = {{"n", 2.0}};
  settings.condition = "M>2 AND C<N+2";
  Script script("M:MA(C,N);", settings);
  ASSERT_FALSE(script.report().failure) << script.report().failure.text;
  ASSERT_EQ(script.lines().size(), 1U);
  const int64_t keys[] = {1, 2, 3};
  const double close[] = {2, 3, 4};
  const Field fields[] = {{11, close}};
  script.set_rows(keys, fields);
  EXPECT_FALSE(script.calculate());
  EXPECT_EQ(to_text({script.column(script.condition_column()).begin(),
                     script.column(script.condition_column()).end()}),
            "0 1 0");

  settings.condition = "NOTHING>1";
  const Script unknown("M:MA(C,N);", settings);
  EXPECT_EQ(unknown.report().failure.code, 2);
  EXPECT_TRUE(unknown.report().failure.in_condition);
  const Script wrong("M:MA(C,N,N);", settings);
  EXPECT_FALSE(wrong.report().failure.in_condition);
  for (const char* more : {"1;X:=2", "X:1", "1 // 2", "'a'", "1\n+1"}) {
    settings.condition = more;
    EXPECT_THROW(Script("M:MA(C,N);", settings), Misuse) << more;
  }
  EXPECT_THROW(Script("A:=C;").condition_column(), Misuse);
}

TEST(Engine, ScriptsOnManyThreadsHearTheirOwnEventsOnly) {
  std::vector<std::thread> threads;
  for (size_t number = 1; number <= 6; ++number) {
    threads.emplace_back([number] {
      Script script("C>0,BK(" + std::to_string(number) + ");CROSS(C,0),NOTICE('up');");
      std::vector<int64_t> keys;
      for (size_t bar = 1; bar <= number * 10; ++bar) keys.push_back(static_cast<int64_t>(bar));
      const Series close(keys.size(), 1.0);
      const Field fields[] = {{11, close}};
      for (int round = 0; round < 50; ++round) {
        script.restart({});
        script.set_rows(keys, fields);
        ASSERT_FALSE(script.calculate(0, true));
        ASSERT_EQ(script.events().size(), keys.size());
        for (const auto& event : script.events()) {
          ASSERT_EQ(event.quantity, static_cast<int64_t>(number));
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Engine, ARunThatFailsSaysWhere) {
  Script script("A:=C;B:=STD(C,0-5);");
  const int64_t keys[] = {1, 2};
  const double close[] = {1, 2};
  const Field fields[] = {{11, close}};
  script.set_rows(keys, fields);
  const auto failure = script.calculate();
  EXPECT_EQ(failure.code, 4000);
  EXPECT_EQ(failure.text, "vector too long");
  EXPECT_EQ(failure.statement, -1);
  EXPECT_EQ(Script("A:=C;").report().failure.statement, -1);
  EXPECT_EQ(Script(std::string(9, '\n') + "A:B;").report().failure.statement, 9);
}

TEST(Engine, RefusesWhatCanNotBeMeant) {
  Script script("A:=C;");
  const int64_t keys[] = {1, 2};
  const double two[] = {1, 2};
  const double one[] = {1};
  EXPECT_THROW(script.set_rows(keys, std::vector<Field>{{11, one}}), Misuse);
  EXPECT_THROW(script.set_rows(keys, std::vector<Field>{{11, two}, {11, two}}), Misuse);
  EXPECT_EQ(script.row_count(), 0U);
  EXPECT_THROW(script.calculate(0x80000000U), Misuse);
  Settings settings;
  settings.parameters = {{"N", __builtin_inf()}};
  EXPECT_THROW(Script("A:=C;", settings), Misuse);
  settings.parameters = {{"N\"", 1}};
  EXPECT_THROW(Script("A:=C;", settings), Misuse);
}

TEST(Engine, AnswersForTheSubjectThatItWasGiven) {
  Settings settings;
  settings.subject.security = "IF2401";
  settings.subject.min_price = 0.25;
  Script script("A:=MINPRICE;B:=CODELIKE('IF');", settings);
  const int64_t keys[] = {20240102000000};
  const auto values = [&] {
    script.set_rows(keys, {});
    EXPECT_FALSE(script.calculate());
    return to_text(
        {script.column(script.lines()[0].column)[0], script.column(script.lines()[1].column)[0]});
  };
  EXPECT_EQ(values(), "0.25 1");
  script.restart({});
  EXPECT_EQ(values(), "null 0");
}

/// Trading days with a session of the night before and one of the day.
std::string calendar_of(const std::string& dates) {
  return R"({"status_code":0,"data":{"timezone":"UTC+08:00","trade_dates":[)" + dates +
         R"(],"daylight_save_times":[],"trade_times":[{"start_date":"20230101",)"
         R"("end_date":"20991231","times":[{"start_time":"21:00:00","end_time":"23:00:00",)"
         R"("offset":"-1","trans_day_type":"1","type":""},{"start_time":"09:00:00",)"
         R"("end_time":"15:00:00","offset":"0","trans_day_type":"1","type":""}]}],)"
         R"("special_trade_times":[]}})";
}

TEST(Engine, EachRunHasTheCalendarOfItsScript) {
  struct Case {
    std::string calendar;
    double date;  ///< of the bar at 22:00 on 2024-01-08
  };
  const Case cases[] = {{{}, 20240108},
                        {calendar_of(R"("20240109","20240108")"), 20240109},
                        {calendar_of(R"("20240110","20240108")"), 20240110},
                        {{}, 20240108}};
  Settings settings;
  settings.subject.period = 0x3005;
  settings.subject.security = "calendars";
  settings.subject.market = "M";
  Script script("A:DATE;", settings);
  const int64_t key = 20240108220000;
  for (int round = 0; round < 2; ++round) {
    for (const auto& [calendar, date] : cases) {
      settings.subject.calendar = calendar;
      script.restart(settings.subject);
      script.set_rows({&key, 1}, {});
      ASSERT_FALSE(script.calculate());
      EXPECT_EQ(script.column(script.lines()[0].column)[0], date);
      Script follower("A:DATE;", settings);
      follower.set_rows({&key, 1}, {});
      ASSERT_FALSE(follower.calculate());
      EXPECT_EQ(follower.column(follower.lines()[0].column)[0], date);
    }
  }
  settings.subject.calendar = R"({"status_code":0})";
  script.restart(settings.subject);
  EXPECT_THROW(script.calculate(), Misuse);
}

TEST(Engine, OtherParametersAreAsANewScript) {
  const int64_t keys[] = {20240102000000, 20240103000000, 20240104000000};
  const double close[] = {1, 2, 4};
  const Field fields[] = {{11, close}};
  Settings settings;
  settings.parameters = {{"N", 1}};
  Script script("A:MA(C,N);C>N,BK;", settings);
  for (const double periods : {3.0, 2.0, 1.0}) {
    script.restart_with({{"N", periods}});
    ASSERT_FALSE(script.report().failure);
    EXPECT_EQ(script.row_count(), 0U);
    EXPECT_TRUE(script.events().empty());
    script.set_rows(keys, fields);
    ASSERT_FALSE(script.calculate(0, true));
    double sum = 0;
    for (size_t row = 3 - static_cast<size_t>(periods); row < 3; ++row) sum += close[row];
    EXPECT_EQ(script.column(script.lines()[0].column)[2], sum / periods);
    const auto events = std::ranges::count_if(close, [&](double price) { return price > periods; });
    EXPECT_EQ(script.events().size(), static_cast<size_t>(events));
  }
  script.restart_with({});
  EXPECT_EQ(script.report().failure.code, 1);
}

TEST(Engine, ReadsTheFieldsOfTheMarketAndOfTradingTime) {
  Settings settings;
  settings.subject.market = "USHA";
  Script script("A:=OPI+0;B:=AVPRICE+0;", settings);
  EXPECT_EQ(script.report().fields, (std::vector<uint32_t>{19, 2656718}));
  settings.subject.market = "SHFE";
  script.restart(settings.subject);
  EXPECT_EQ(script.report().fields, (std::vector<uint32_t>{65, 72}));
  settings.subject.is_trading = true;
  EXPECT_EQ(Script("A:=AVPRICE+0;", settings).report().fields, std::vector<uint32_t>{2656718});
}

/// Every vector, through both faces.
class EngineVectors : public testing::TestWithParam<Vector> {
 protected:
  /// Bars of another security: longer, and with other values.
  static Arrays other_than(const Arrays& bars) {
    Arrays other = bars;
    for (int64_t day = 1; day <= 3; ++day) other.keys.push_back(20300101000000 + day * 1000000);
    for (auto& [id, values] : other.fields) {
      for (double& value : values) value = 90.5 - value;
      for (int more = 0; more < 3; ++more) values.push_back(1.0 + more);
    }
    return other;
  }
};

TEST_P(EngineVectors, GiveTheSameAsByTheExportsAlsoBehindAnotherSecurity) {
  const Vector& vector = GetParam();
  TestHost host;
  host.set_info(vector.period, vector.security, vector.market);
  host.set_keys(vector.keys);
  const Report report = host.compile(vector.script, vector.parameters);
  const Settings settings = settings_of(vector);
  Script script(vector.script, settings);
  EXPECT_EQ(script.report().text, report.text);
  EXPECT_EQ(script.report().failure.code, report.code);
  if (report.code != 0) {
    EXPECT_EQ(script.report().failure.text, report.message);
    EXPECT_EQ(script.report().failure.statement, report.line);
    EXPECT_THROW(script.calculate(), Misuse);
    return;
  }
  const Arrays bars = arrays_of(vector);
  const Arrays other = other_than(bars);
  script.set_rows(other.keys, other.spans());
  const auto of_other = script.calculate();
  script.restart(settings.subject);
  EXPECT_EQ(script.row_count(), 0U);
  script.set_rows(bars.keys, bars.spans());
  const auto failure = script.calculate();
  host.feed(vector.bars);
  const std::string answer = host.run();
  EXPECT_EQ(answer == success, failure.code == 0) << answer << of_other.text;
  if (failure) {
    EXPECT_NE(answer.find(":" + std::to_string(failure.code) + ","), std::string::npos) << answer;
    EXPECT_NE(answer.find('"' + failure.text + '"'), std::string::npos) << answer;
  }
  expect_same_lines(script, host, vector.name + ": ");
}

TEST_P(EngineVectors, GiveTheSameUndrawnOverArraysThatStayWhereTheyAre) {
  const Vector& vector = GetParam();
  Settings settings = settings_of(vector);
  Script drawn(vector.script, settings);
  settings.draws = false;
  Script script(vector.script, settings);
  ASSERT_EQ(script.report().text, drawn.report().text);
  if (script.report().failure) return;
  const Arrays bars = arrays_of(vector);
  const Arrays lent = bars;
  drawn.set_rows(bars.keys, bars.spans());
  const auto failure = drawn.calculate();
  std::vector<uint32_t> ids;
  for (const auto& line : drawn.lines()) ids.push_back(line.column);
  ids.insert(ids.end(), ids.begin(), ids.end());
  for (int round = 0; round < 2; ++round) {
    script.restart(settings.subject);
    script.lend_rows(lent.keys, lent.spans());
    EXPECT_EQ(script.calculate().code, failure.code);
    const size_t rows = script.row_count();
    const auto columns = script.take_columns(ids);
    EXPECT_EQ(script.row_count(), 0U);
    for (size_t i = 0; i < ids.size(); ++i) {
      EXPECT_EQ(bits_of({columns[i].get(), rows}), bits_of(drawn.column(ids[i]))) << ids[i];
    }
    for (const auto& [id, values] : bars.fields) {
      EXPECT_EQ(bits_of(lent.fields.at(id)), bits_of(values)) << id;
    }
  }
}

TEST(Engine, ColumnsThatAreTakenHoldWhatIsRead) {
  constexpr size_t rows = 300;
  std::vector<int64_t> keys;
  for (size_t row = 0; row < rows; ++row)
    keys.push_back(20240101000000 + static_cast<int64_t>(row));
  const std::vector<double> close(rows, 3.5);
  const Field fields[] = {{11, close}};
  Script read("A:MA(C,2);B:7;", {});
  read.set_rows(keys, fields);
  EXPECT_FALSE(read.calculate());
  std::vector<uint32_t> ids;
  for (const auto& line : read.lines()) ids.push_back(line.column);
  Script taken("A:MA(C,2);B:7;", {});
  taken.set_rows(keys, fields);
  EXPECT_FALSE(taken.calculate());
  const auto columns = taken.take_columns(ids);
  for (size_t i = 0; i < ids.size(); ++i) {
    EXPECT_EQ(bits_of({columns[i].get(), rows}), bits_of(read.column(ids[i]))) << ids[i];
  }
}

TEST(Engine, WhoReadsKeysFindsThemOverArraysThatStayWhereTheyAre) {
  const int64_t before[] = {20190102000000, 20190103000000, 20190104000000};
  const int64_t keys[] = {20240102000000, 20240103000000, 20240104000000};
  const double close[] = {1, 3, 4};
  const Field fields[] = {{11, close}};
  Settings settings;
  settings.fields = {{"KEYOFTHEBAR", 1}};
  for (const char* source : {"A:KEYOFTHEBAR;", "A:REF(KEYOFTHEBAR+0,0);", "C>0,BK;"}) {
    SCOPED_TRACE(source);
    Script script(source, settings);
    script.set_rows(before, fields);
    EXPECT_FALSE(script.calculate());
    script.restart(settings.subject);
    script.lend_rows(keys, fields);
    EXPECT_FALSE(script.calculate(0, true));
    size_t seen = 0;
    for (const auto& event : script.events()) EXPECT_EQ(event.key, keys[seen++]);
    for (const auto& line : script.lines()) {
      for (const double key : script.column(line.column)) {
        EXPECT_EQ(key, static_cast<double>(keys[seen++]));
      }
    }
    EXPECT_EQ(seen, std::size(keys));
  }
}

/// `count` pieces behind a head, each with its number for the "#".
std::string long_script(std::string_view head, std::string_view piece, int count) {
  std::string script(head);
  for (int i = 0; i < count; ++i) {
    for (const char c : piece) script += c == '#' ? std::to_string(i) : std::string(1, c);
  }
  return script + ';';
}

/// By the processor's own clock: what else the machine does counts for little.
double seconds_to_compile(const std::string& source) {
  const std::clock_t start = std::clock();
  const Script script(source);
  EXPECT_FALSE(script.report().failure) << script.report().failure.text;
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

// Each piece was looked up among all others, so that eight times the script took sixty times as
// long.
TEST(Engine, compiles_in_time_that_grows_with_the_script) {
  const struct {
    std::string_view head;
    std::string_view piece;
  } scripts[] = {
      {"A:C", "+MA(C,5)"},      // calls of one statement
      {"", "A#:C+1;"},          // statements of one text
      {"", "A#:REFX(C,1)+#;"},  // lines that look ahead
  };
  for (const auto& [head, piece] : scripts) {
    const double once = seconds_to_compile(long_script(head, piece, 2000));
    const double eight_times = seconds_to_compile(long_script(head, piece, 16000));
    EXPECT_LT(eight_times, 24 * once) << piece;
  }
}

INSTANTIATE_TEST_SUITE_P(Vectors, EngineVectors, testing::ValuesIn(load_vectors()));

}  // namespace
}  // namespace quor_test
