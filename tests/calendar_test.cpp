// The trading calendar over the C interface: what a host's JSON makes of the dates of its bars.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <tuple>

#include "calendar/civil_time.h"
#include "calendar/trade_day_model.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

using Lines = std::vector<std::string>;

constexpr uint32_t one_minute = 0x3001;
constexpr uint32_t one_day = 0x4000;
constexpr uint64_t uuid = 4711;

/// Parts of a calendar as JSON.
struct Calendar {
  std::string time_zone = "UTC+08:00";
  std::string dates = R"("20240109","20240108","20240105","20240104")";
  std::string saving;
  std::string times;
  std::string special;

  std::string json() const {
    return R"({"status_code":0,"data":{"timezone":")" + time_zone + R"(","trade_dates":[)" + dates +
           R"(],"daylight_save_times":[)" + saving + R"(],"trade_times":[)" + times +
           R"(],"special_trade_times":[)" + special + "]}}";
  }
};

std::string session(std::string_view start, std::string_view end, std::string_view offset = "0",
                    std::string_view trans_day_type = "1") {
  return R"({"start_time":")" + std::string(start) + R"(","end_time":")" + std::string(end) +
         R"(","offset":")" + std::string(offset) + R"(","trans_day_type":")" +
         std::string(trans_day_type) + R"(","type":"continuous"})";
}

std::string range(std::string_view start, std::string_view end, const std::string& sessions) {
  return R"({"start_date":")" + std::string(start) + R"(","end_date":")" + std::string(end) +
         R"(","times":[)" + sessions + "]}";
}

std::string whole_year(const std::string& sessions) {
  return range("20240101", "20241231", sessions);
}

Calendar with_times(const std::string& times) {
  Calendar calendar;
  calendar.times = times;
  return calendar;
}

/// A session in the night before the trade date, then one on it.
Calendar with_night_session() {
  return with_times(
      whole_year(session("21:00:00", "23:00:00", "-1") + "," + session("09:00:00", "15:00:00")));
}

Calendar with_day_session() { return with_times(whole_year(session("09:00:00", "15:00:00"))); }

/// The host's side of the trade dates handler.
struct Exchange {
  std::mutex lock;                             ///< guards what follows
  std::map<std::string, std::string> answers;  ///< by security and market
  Lines requests;                              ///< market, security, start and end date
  std::function<void()> before_answer;
};
Exchange& exchange() {
  static Exchange one;
  return one;
}

const char* answer_trade_dates(const char* market, const char* security, const char* start_date,
                               const char* end_date, int32_t* length) {
  const std::lock_guard guard(exchange().lock);
  exchange().requests.push_back(std::string(market) + " " + security + " " + start_date + " " +
                                end_date + " " + std::to_string(*length));
  if (exchange().before_answer) exchange().before_answer();
  const auto found = exchange().answers.find(std::string(security) + " " + market);
  return found == exchange().answers.end() ? nullptr : found->second.c_str();
}

/// Each test has a security of its own: calendars stay for the life of the process.
class CalendarTest : public testing::Test {
 protected:
  void SetUp() override {
    clear_events();
    set_get_trade_dates_callback(answer_trade_dates);
    exchange().requests.clear();
    exchange().before_answer = nullptr;
    take_new_security();
  }

  void take_new_security() { security_ = new_word("FU"); }

  void answer(const std::string& json) { exchange().answers[security_ + " UCFS"] = json; }
  void answer(const Calendar& calendar) { answer(calendar.json()); }

  void prepare(TestHost& host, uint32_t period = one_minute, const std::string& market = "UCFS") {
    set_parser_instance_uuid(host.handle(), uuid);
    host.set_info(period, security_, market);
    ASSERT_EQ(host.compile("A:=DATE;").code, 0);
  }

  Series dates_of(const std::vector<int64_t>& keys, uint32_t period = one_minute) {
    TestHost host;
    prepare(host, period);
    return dates_of(host, keys);
  }

  static Series dates_of(TestHost& host, const std::vector<int64_t>& keys) {
    host.set_keys(keys);
    host.feed({{"C", Series(keys.size(), 1.0)}});
    EXPECT_EQ(host.run(), success);
    return host.line("A");
  }

  /// All log lines since the last call, the level in front.
  static Lines log_lines() {
    Lines lines;
    for (const LogLine& line : events().log) {
      EXPECT_EQ(line.uuid, uuid);
      lines.push_back(std::to_string(line.level) + " " + line.text);
    }
    events().log.clear();
    return lines;
  }

  static std::string mapping_line(const std::string& text) {
    return "0 [trade_day_help::try_get_trade_day_time_tm] " + text;
  }
  static std::string intake_line(const std::string& text) {
    return "1 [trade_day_help::init_security_trade_day_model] " + text;
  }
  std::string unknown_line() const {
    return mapping_line("cache does not find this key :" + security_ + "_UCFS");
  }

  std::string security_;
};

/// What `dates_of` gives for dates.
#define EXPECT_DATES(keys, ...) EXPECT_EQ(to_text(dates_of keys), to_text(Series __VA_ARGS__))

TEST_F(CalendarTest, NightSessionsBelongToTheNextTradeDate) {
  answer(with_night_session());
  const std::vector<int64_t> keys = {
      20240104100000,  // before an opening that no earlier trade date moves: its own date
      20240104220000,  // behind the close
      20240105003000,  // between the opening on Thursday evening and the close
      20240106010000,  // Saturday, in the session that opened on Friday
      20240108100000,  // Monday
      20240108150000,  // the close itself
      20240108150001, 20240108160000, 20240108220000,
      20240109160000,  // behind the close of the newest date: the date of its opening
      20240110100000,  // behind all trade dates
  };
  const Series expected = {20240104, 20240105, 20240105, 20240108, 20240108, 20240108,
                           20240109, 20240109, 20240109, 20240108, 20240110};
  EXPECT_EQ(to_text(dates_of(keys)), to_text(expected));
  EXPECT_EQ(log_lines(), Lines{mapping_line("current date is not in trade dates: 20240110")});
}

TEST_F(CalendarTest, TheTimeOfDayStaysAndAllDateWordsFollow) {
  answer(with_night_session());
  TestHost host;
  host.set_info(one_minute, security_, "UCFS");
  ASSERT_EQ(host.compile("A:=DAY;B:=HOUR;D:=MINUTE;E:=TIME0;F:=WEEKDAY;G:=DATE1;").code, 0);
  host.set_keys({20240106013059});
  host.feed({{"C", {1}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_EQ(to_text(host.line("A")), "8");
  EXPECT_EQ(to_text(host.line("B")), "1");
  EXPECT_EQ(to_text(host.line("D")), "30");
  EXPECT_EQ(to_text(host.line("E")), "5459");
  EXPECT_EQ(to_text(host.line("F")), "1");
  EXPECT_EQ(to_text(host.line("G")), "1240108");
}

TEST_F(CalendarTest, BarsOnTheEdgesOfASessionAreInIt) {
  answer(with_day_session());
  EXPECT_DATES(({20240108085959, 20240108090000, 20240108150000, 20240108150001}),
               {20240105, 20240108, 20240108, 20240109});
}

TEST_F(CalendarTest, ADayPeriodHasNoUseForTheCalendar) {
  answer(with_day_session());
  EXPECT_DATES(({20240108000000, 20240110000000}, one_day), {20240108, 20240110});
  EXPECT_EQ(log_lines(), Lines{});
}

TEST_F(CalendarTest, RangesOfDatesEndAtMidnightAndNeedSessions) {
  // On the start date itself a bar at midnight isn't in the range; on the end date none is.
  Calendar calendar;
  calendar.times = R"({"start_date":"20240101","end_date":"20241231"},)" +
                   range("20240101", "20241231", "") + "," +
                   range("20240105", "20240108", session("09:00:00", "15:00:00"));
  answer(calendar);
  EXPECT_DATES(({20240104080000, 20240105000000, 20240105000001, 20240107230000, 20240108080000}),
               {20240104, 20240105, 20240104, 20240105, 20240108});
  EXPECT_EQ(log_lines(), Lines{});
}

TEST_F(CalendarTest, TheOffsetOfTheFirstSessionMovesTheOpening) {
  struct Case {
    const char* offset;
    const char* type;
    double saturday;  ///< 1:00, in a session that began on Friday or else before the opening
    double monday;    ///< 10:00
  };
  const Case cases[] = {
      {"-1", "1", 20240108, 20240108},  // the trade date before, Friday 21:00
      {"-3", "2", 20240108, 20240108},  // three days before, Friday 21:00
      {"-1", "2", 20240105, 20240108},  // Sunday 21:00
      {"-1", "3", 20240105, 20240105},  // unknown: the opening stays on Monday 21:00
      {"-9", "1", 20240105, 20240105},  // no such trade date
      {"1", "1", 20240105, 20240105},   // the trade date behind, Tuesday 21:00
      {"-1 day", "1", 20240108, 20240108},
      {"-x", "1", 20240105, 20240105},   // no number: 0
      {"0x1", "1", 20240105, 20240105},  // decimal only: 0
      {"-99999999999", "2", 20240108, 20240108},
      {"-99999999999", "1", 20240105, 20240105},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.offset) + " of type " + c.type);
    take_new_security();
    answer(with_times(whole_year(session("21:00:00", "23:00:00", c.offset, c.type) + "," +
                                 session("09:00:00", "15:00:00"))));
    EXPECT_DATES(({20240106010000, 20240108100000}), {c.saturday, c.monday});
  }
}

TEST_F(CalendarTest, ADateBeyondTheListIsThatOfTheOpening) {
  // The oldest date: the bar of 8:00 lies before an opening two days earlier or later.
  Calendar calendar = with_day_session();
  calendar.dates = R"("20240108")";
  calendar.times = whole_year(session("09:00:00", "15:00:00", "2", "2"));
  answer(calendar);
  EXPECT_DATES(({20240108080000, 20240107080000}), {20240110, 20240110});
}

TEST_F(CalendarTest, SessionsMoveFromTheMarketsZoneWithoutAndWithDaylightSaving) {
  // 9:30 to 16:00 in UTC-5 is 22:30 to 5:00 here, with an hour of saving 21:30 to 4:00. Saving
  // lasts from 1:00 to 1:00 UTC, 9:00 here, and is moved by 28800 + 18000 s to 22:00.
  Calendar calendar;
  calendar.time_zone = "UTC-05:00";
  calendar.saving = R"({"start":1704675600,"end":1704762000,"offset":60})";
  calendar.times = whole_year(session("09:30:00", "16:00:00"));
  answer(calendar);
  EXPECT_DATES(({20240108214500, 20240108220000, 20240108220001, 20240109030000, 20240109214500,
                 20240109220000, 20240109223000}),
               {20240105, 20240105, 20240108, 20240108, 20240109, 20240108, 20240109});
}

TEST_F(CalendarTest, AnOpeningFoundByTradeDatesStaysInTheMarketsZone) {
  // UTC+7: the close moves to 16:00. By trade dates the opening of Monday is Friday 23:30; by
  // calendar days it is moved to Saturday 0:30, so that a bar before that belongs to Friday.
  for (const auto& [offset, type, saturday] :
       {std::tuple{"-1", "1", 20240108.0}, std::tuple{"-3", "2", 20240105.0}}) {
    take_new_security();
    Calendar calendar = with_times(whole_year(session("23:30:00", "23:45:00", offset, type) + "," +
                                              session("09:00:00", "15:00:00")));
    calendar.time_zone = "UTC+07:00";
    answer(calendar);
    EXPECT_DATES(({20240106001500, 20240108160000, 20240108160001}),
                 {saturday, 20240108, 20240109});
  }
}

TEST_F(CalendarTest, SpecialTimesKeepTheDate) {
  // 12:00 to 15:00 UTC, 20:00 to 23:00 here, edges left out. Of two entries the first counts.
  Calendar calendar = with_night_session();
  calendar.special =
      R"({"date":"20240104"},)"
      R"({"date":"20240108","times":[{"start_time":1704715200,"end_time":1704726000}]},)"
      R"({"date":"20240105","times":[]},)"
      R"({"date":"20240105","times":[{"start_time":1704412800,"end_time":1704499200}]})";
  answer(calendar);
  EXPECT_DATES(({20240105220000, 20240108200000, 20240108220000, 20240108230000}),
               {20240108, 20240109, 20240108, 20240109});
  EXPECT_EQ(log_lines(), Lines{mapping_line("current date is special time: 20240108")});
}

TEST_F(CalendarTest, SpecialTimesThatAreNoListAddNothing) {
  // Monday 20:00 to 23:00 is special; what hosts make of an empty list doesn't stand before it.
  for (const std::string times : {"null", "\"\"", "{}", "false", "8.5"}) {
    SCOPED_TRACE(times);
    take_new_security();
    Calendar calendar = with_night_session();
    calendar.special = times + R"(,{"times":)" + times + R"(},{"date":"20240108","times":)" +
                       times + R"(},{"date":"20240108","times":[{"start_time":1704715200,)" +
                       R"("end_time":1704726000}]})";
    answer(calendar);
    EXPECT_DATES(({20240105220000, 20240108200000, 20240108220000}),
                 {20240108, 20240109, 20240108});
  }
}

TEST_F(CalendarTest, DaylightSavingMovesOneEndOfASpecialTime) {
  // Monday 20:00 to 23:00 with saving around both: 21:00 to 23:00. Tuesday 18:00 to 19:00 with
  // saving around the end: 18:00 to 20:00.
  Calendar calendar = with_night_session();
  calendar.saving = R"({"start":1704715140,"end":1704729540,"offset":60},)"
                    R"({"start":1704796200,"end":1704799800,"offset":60})";
  calendar.special =
      R"({"date":"20240108","times":[{"start_time":1704715200,"end_time":1704726000}]},)"
      R"({"date":"20240109","times":[{"start_time":1704794400,"end_time":1704798000}]})";
  answer(calendar);
  EXPECT_DATES(({20240108203000, 20240108210000, 20240108210001, 20240108231500, 20240109180000,
                 20240109193000, 20240109200000}),
               {20240109, 20240109, 20240108, 20240109, 20240108, 20240109, 20240108});
}

TEST_F(CalendarTest, SpecialMomentsMoveByTheMarketsZone) {
  // 1:00 to 3:00 UTC, 9:00 to 11:00 here, moved by 28800 - 32400 s to 8:00 to 10:00. The session
  // of UTC+9 is moved to 8:00 to 14:00.
  Calendar calendar = with_day_session();
  calendar.time_zone = "UTC+09:00";
  calendar.special =
      R"({"date":"20240106","times":[{"start_time":1704502800,"end_time":1704510000}]})";
  answer(calendar);
  EXPECT_DATES(({20240106080000, 20240106080001, 20240106095959, 20240106100000}),
               {20240105, 20240106, 20240106, 20240105});
}

TEST_F(CalendarTest, TextsThatFailTheirReaderLeaveZeros) {
  // A start of seven characters is midnight; hours of 24 and a date of the year 1899 are none.
  Calendar calendar;
  calendar.times = range("18991231", "20241231", session("9:00:00", "15:00:00"));
  answer(calendar);
  EXPECT_DATES(({20240108000000, 20240108085959, 20240108150001}), {20240108, 20240108, 20240109});
  take_new_security();
  calendar.times = whole_year(session("09:00:00", "24:00:00"));
  answer(calendar);
  EXPECT_DATES(({20240108100000}), {20240109});
  take_new_security();
  calendar.times = range("20240101", "20241331", session("09:00:00", "15:00:00"));
  answer(calendar);
  EXPECT_DATES(({20240108200000}), {20240108});
}

TEST_F(CalendarTest, ATradeDateThatIsNoDateHelpsNobody) {
  // "0x" reads as day 0. Saturday finds it as the next trade date; before Tuesday's session it
  // can't be the date before, so the opening on Tuesday itself counts.
  for (const std::string text : {"2024010x", "20240140", "20240108x"}) {
    take_new_security();
    Calendar calendar = with_day_session();
    calendar.dates = "\"20240109\",\"" + text + "\",\"20240105\"";
    answer(calendar);
    EXPECT_DATES(({20240105100000, 20240106100000, 20240109080000, 20240109100000}),
                 {20240105, 20240106, 20240109, 20240109});
    EXPECT_EQ(log_lines(), Lines{mapping_line("trade_date_str convert fail, value is " + text)});
  }
}

TEST_F(CalendarTest, AFaultyTradeDateDropsTheCalendar) {
  Calendar calendar = with_day_session();
  calendar.dates = R"("2024ab08","20240105","20240104")";
  answer(calendar);
  TestHost host;
  prepare(host);
  const std::vector<int64_t> keys = {20240105080000, 20240106100000, 20240106110000};
  EXPECT_EQ(to_text(dates_of(host, keys)), to_text({20240104, 20240106, 20240106}));
  EXPECT_EQ(log_lines(), (Lines{"2 [try_get_trade_day_time_tm] exception occurs.",
                                "2 invalid stoi argument", unknown_line()}));

  calendar.dates = R"("20240108","20240105","20240104")";
  answer(calendar);
  host.run();
  EXPECT_EQ(to_text(host.line("A")), to_text({20240105, 20240106, 20240106}));
  prepare(host);
  EXPECT_EQ(to_text(dates_of(host, keys)), to_text({20240104, 20240105, 20240105}));
}

TEST_F(CalendarTest, ASignIsNoDigit) {
  Calendar calendar = with_day_session();
  calendar.dates = R"("2024-1-8")";
  answer(calendar);
  EXPECT_DATES(({20231230100000}), {20231230});
  EXPECT_EQ(log_lines(),
            (Lines{"2 [try_get_trade_day_time_tm] exception occurs.", "2 invalid stoi argument"}));
}

TEST_F(CalendarTest, AnUnorderedListIsWalkedFromItsEnd) {
  // The first place of a date counts; for a date that isn't there the last entry greater than it.
  Calendar calendar = with_day_session();
  calendar.dates = R"("20240104","20240109","20240105","20240108","20240105")";
  answer(calendar);
  // Friday stands at 2, so the date before it is that of place 3. From the end the first entry
  // greater than Saturday is Monday at place 3, than Wednesday night none but Friday at place 4.
  EXPECT_DATES(({20240103160000, 20240105080000, 20240106160000}), {20240105, 20240108, 20240105});
}

TEST(TradeDates, FindsAsAWalkFromTheEndDoes) {
  const std::vector<std::string> texts = {"20240112", "20240110", "20240110", "20240108",
                                          "2024010",  "20240105", ""};
  quor::TradeDates dates;
  for (const std::string& text : texts) dates.append(text);
  for (const std::string date : {"20240104", "20240105", "20240106", "20240108", "20240109",
                                 "20240110", "20240111", "20240112", "20240113", "2024010", ""}) {
    std::optional<int64_t> expected;
    for (size_t i = 0; i < texts.size(); ++i) {
      if (texts[i] > date) expected = static_cast<int64_t>(i);
    }
    for (size_t i = texts.size(); i-- > 0;) {
      if (texts[i] == date) expected = static_cast<int64_t>(i);
    }
    EXPECT_EQ(dates.find(date), expected) << date;
  }
  EXPECT_EQ(quor::TradeDates().find("20240101"), std::nullopt);
}

// Intake.

TEST_F(CalendarTest, TheHostIsAskedOnceForSecurityAndMarket) {
  using namespace std::chrono;
  const auto request = [this](const std::string& market) {
    // 1000 days back and 30 ahead, as dates of UTC+8.
    const auto date = [](hours distance) {
      const year_month_day day(floor<days>(system_clock::now() + 8h + distance));
      char text[16];
      std::snprintf(text, sizeof text, "%04d%02u%02u", static_cast<int>(day.year()),
                    static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
      return std::string(text);
    };
    return market + " " + security_ + " " + date(-24000h) + " " + date(720h) + " 0";
  };
  const auto expect_requests = [](const Lines& before, const Lines& after) {
    // The day may change between the question and the answer.
    EXPECT_TRUE(exchange().requests == before || exchange().requests == after)
        << testing::PrintToString(exchange().requests);
  };

  answer(with_day_session());
  Lines before = {request("UCFS")};
  TestHost first;
  prepare(first);
  EXPECT_EQ(first.run(), success);  // without a bar
  Lines after = {request("UCFS")};
  expect_requests(before, after);
  first.run();
  expect_requests(before, after);
  EXPECT_EQ(log_lines(), Lines{});

  TestHost second;
  prepare(second);
  EXPECT_EQ(to_text(dates_of(second, {20240108160000})), "20240109");
  expect_requests(before, after);
  const std::string hit = intake_line("current _trade_day_map cache contains key, return.");
  EXPECT_EQ(log_lines(), Lines{hit});

  TestHost elsewhere;
  prepare(elsewhere, one_minute, "UHFS");
  before.push_back(request("UHFS"));
  elsewhere.run();
  after.push_back(request("UHFS"));
  expect_requests(before, after);
  EXPECT_EQ(log_lines(), Lines{intake_line("Trade day resp json is empty, return.")});
}

TEST_F(CalendarTest, WithoutASecurityNothingIsAsked) {
  security_.clear();
  EXPECT_DATES(({20240108160000}), {20240108});
  EXPECT_EQ(exchange().requests, Lines{});
  EXPECT_EQ(log_lines(), (Lines{intake_line("security or market str is empty."),
                                mapping_line("security or market str is empty.")}));
  clear_events(1);
  EXPECT_DATES(({20240108160000}), {20240108});
  EXPECT_EQ(log_lines(), Lines{intake_line("security or market str is empty.")});
}

TEST_F(CalendarTest, ACalendarWithoutDatesIsAskedForAgainAndStays) {
  Calendar calendar = with_day_session();
  calendar.dates = "";
  answer(calendar);
  EXPECT_DATES(({20240108160000}), {20240108});
  answer(with_day_session());
  EXPECT_DATES(({20240108160000}), {20240108});
  EXPECT_EQ(exchange().requests.size(), 2U);
  EXPECT_EQ(log_lines(), (Lines{unknown_line(), unknown_line()}));
}

struct Refused {
  std::string json;
  Lines lines;
};

constexpr const char* no_field = "2 The JSON field referenced does not exist in this object.";
constexpr const char* wrong_type = "2 The JSON element does not have the requested type.";
constexpr const char* no_digit = "2 invalid stoi argument";

/// A good calendar with a piece of its text replaced.
std::string altered(std::string_view from, std::string_view to) {
  Calendar calendar = with_day_session();
  calendar.saving = R"({"start":1704675600,"end":1704762000,"offset":60})";
  calendar.special =
      R"({"date":"20240108","times":[{"start_time":1704715200,"end_time":1704726000}]})";
  std::string json = calendar.json();
  const size_t place = json.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  return json.replace(place, from.size(), to);
}

TEST_F(CalendarTest, RefusesWhatIsNoCalendar) {
  const auto refused = [](const std::string& text) { return Lines{intake_line(text)}; };
  const auto fault = [](const char* text) {
    return Lines{"2 [init_security_trade_day_model] exception occurs.", text};
  };
  const Refused cases[] = {
      {"", refused("Trade day resp json is empty, return.")},
      {"{", refused("Trade day resp json deserialize error, return.")},
      {" ", refused("Trade day resp json deserialize error, return.")},
      {altered("\"status_code\":0", "\"status_code\":1"), refused("trade day get resp error.")},
      {R"({"status_code":0})", refused("error parse in data.")},
      {R"({"status_code":0,"data":{}})", {}},
      {altered("trade_dates", "x"), refused("error found in trade_dates.")},
      {altered("daylight_save_times", "x"), refused("error found in res daylight_save_times.")},
      {altered("trade_times", "x"), refused("error found in trade_times.")},
      {altered("special_trade_times", "x"), refused("error found in special_trade_times.")},
      {"[]", fault(wrong_type)},
      {"{}", fault(no_field)},
      {altered("\"status_code\":0", "\"status_code\":\"0\""), fault(wrong_type)},
      {R"({"status_code":0,"data":null})", fault(wrong_type)},
      {altered("\"UTC+08:00\"", "8"), fault(wrong_type)},
      {altered("\"20240109\"", "20240109"), fault(wrong_type)},
      {altered("\"start\"", "\"x\""), fault(no_field)},
      {altered("\"offset\":60", "\"offset\":\"60\""), fault(wrong_type)},
      {altered("\"end_date\"", "\"x\""), fault(no_field)},
      {altered("\"times\":[{\"start_time\":\"09", "\"times\":3,\"x\":[{\"start_time\":\"09"),
       fault(wrong_type)},
      {altered("\"type\"", "\"x\""), fault(no_field)},
      {altered("\"offset\":\"0\"", "\"offset\":0"), fault(wrong_type)},
      {altered("\"20240101\"", "\"2024ab01\""), fault(no_digit)},
      {altered("\"20240101\"", "\"2024-1-1\""), fault(no_digit)},
      {altered("\"09:00:00\"", "\"ab:00:00\""), fault(no_digit)},
      {altered("\"date\"", "\"x\""), fault(no_field)},
      {altered("1704726000", "1704726000.5"), fault(wrong_type)},
  };
  for (const Refused& refusal : cases) {
    SCOPED_TRACE(refusal.json);
    answer(refusal.json);
    EXPECT_DATES(({20240108160000}), {20240108});
    Lines expected = refusal.lines;
    expected.push_back(unknown_line());
    EXPECT_EQ(log_lines(), expected);
  }
  // None of them has left anything behind.
  answer(with_day_session());
  EXPECT_DATES(({20240108160000}), {20240109});
}

TEST_F(CalendarTest, ExceptionsOfTheHostStayInside) {
  answer(with_day_session());
  exchange().before_answer = [] { throw std::runtime_error("no line"); };
  EXPECT_DATES(({20240108160000}), {20240108});
  EXPECT_EQ(log_lines(), (Lines{"2 [init_security_trade_day_model] runtime error occurs.",
                                "2 no line", unknown_line()}));
  exchange().before_answer = [] { throw 1; };
  EXPECT_DATES(({20240108160000}), {20240108});
  EXPECT_EQ(log_lines(),
            (Lines{"2 [init_security_trade_day_model] unknown exception occurs in catch ... .",
                   unknown_line()}));
}

TEST_F(CalendarTest, HugeNumbersAreHarmless) {
  Calendar calendar = with_day_session();
  calendar.saving =
      R"({"start":-9223372036854775808,"end":9223372036854775807,"offset":9223372036854775807},)"
      R"({"start":-9223372036854775808,"end":9223372036854775807,"offset":-2147483648})";
  calendar.times = whole_year(session("09:00:00", "15:00:00", "-2147483648", "2"));
  calendar.special = R"({"date":"20240108","times":[{"start_time":-9223372036854775808,)"
                     R"("end_time":9223372036854775807}]})";
  answer(calendar);
  // Saving of -1 minute, the low half of the number; the opening lies millions of years back.
  EXPECT_DATES(({20240105150100, 20240105150101}), {20240105, 20240108});
}

// Arithmetic and the wall clock.

TEST(CivilTime, AgreesWithTheCalendarOfTheStandardLibrary) {
  using namespace std::chrono;
  for (int32_t count = -200000; count < 200000; ++count) {
    const year_month_day day{sys_days{days{count}}};
    const int32_t year = static_cast<int>(day.year()) - 1900;
    const auto month0 = static_cast<int32_t>(static_cast<unsigned>(day.month())) - 1;
    const auto day_of_month = static_cast<int32_t>(static_cast<unsigned>(day.day()));
    const quor::BarTime expected{year, month0, day_of_month, 23, 59, 58};
    // 23:59:58 here is 15:59:58 UTC.
    ASSERT_EQ(quor::local_moment(count * int64_t{86400} + 57598), expected) << count;
    ASSERT_EQ(quor::shifted(quor::shifted(expected, 3), -3), expected) << count;
  }
}

TEST(CivilTime, ADayBeyondItsMonthIsCarriedOnlyByAShift) {
  const quor::BarTime moment{124, 1, 31, 1, 0, 0};
  EXPECT_EQ(quor::shifted(moment, 0), moment);
  EXPECT_EQ(quor::shifted(moment, 1), (quor::BarTime{124, 2, 2, 1, 0, 1}));
}

TEST(ClockWords, TellTheLocalTimeOfTheMachine) {
  const auto local_number = [](const char* format) {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    char text[32];
    std::strftime(text, sizeof text, format, std::localtime(&now));
    return std::stod(text);
  };
  TestHost host;
  ASSERT_EQ(host.compile("A:=CURRENTDATE;B:=CURRENTTIME;").code, 0);
  host.feed({{"C", {1}}});
  for (int attempt = 0; attempt < 3; ++attempt) {
    const double date = local_number("1%y%m%d");
    const double time = local_number("%H%M%S");
    ASSERT_EQ(host.run(), success);
    if (time != local_number("%H%M%S")) continue;  // the second has changed in between
    EXPECT_EQ(host.line("A"), Series{date});
    EXPECT_EQ(host.line("B"), Series{time});
    return;
  }
  FAIL() << "three runs took a second each";
}

TEST(DateWords, AskForTheCalendarInTheReport) {
  TestHost host;
  host.set_info(one_minute, "", "");
  for (const std::string word :
       {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "QUARTER", "DATE", "DATE1", "WEEKDAY", "TIME"}) {
    EXPECT_EQ(host.compile("A:=" + word + ";").needs_trade_day, "true") << word;
  }
  for (const std::string word :
       {"TIME0", "CURRENTDATE", "CURRENTTIME", "PERIOD", "BARINTERVAL", "BARTYPE"}) {
    EXPECT_EQ(host.compile("A:=" + word + ";").needs_trade_day, "false") << word;
  }
}

}  // namespace
}  // namespace quor_test
