#include "calendar/calendar_intake.h"

#include <simdjson.h>

#include <cstdint>
#include <optional>

#include "text/numbers.h"

namespace quor {
namespace {

namespace dom = simdjson::dom;

/// The value of a key that may be missing. Anything but an object throws.
std::optional<dom::element> find(dom::element parent, std::string_view key) {
  dom::element value;
  const simdjson::error_code fault = dom::object(parent).at_key(key).get(value);
  if (fault == simdjson::NO_SUCH_FIELD) return std::nullopt;
  if (fault != simdjson::SUCCESS) throw simdjson::simdjson_error(fault);
  return value;
}

std::string_view text_at(dom::element parent, std::string_view key) {
  return dom::object(parent)[key];
}

int64_t integer_at(dom::element parent, std::string_view key) { return dom::object(parent)[key]; }

/// The decimal integer at the start of a text, 0 if there is none.
int32_t decimal_integer(std::string_view text) {
  return leading_integer(text.substr(0, text.find_first_of("xX")));
}

/// How far moments move behind their conversion to local time.
int64_t moment_shift(const TradeDayModel& model) { return int64_t{28800} - model.timezone_offset; }

BarTime moment_at(dom::element parent, std::string_view key, const TradeDayModel& model) {
  return shifted(local_moment(integer_at(parent, key)), moment_shift(model));
}

void read_timezone(dom::element value, TradeDayModel& model) {
  model.timezone_offset = parse_timezone(value);
}

void read_trade_dates(dom::element value, TradeDayModel& model) {
  for (const dom::element date : dom::array(value)) model.trade_dates.append(date);
}

void read_daylight_save_times(dom::element value, TradeDayModel& model) {
  for (const dom::element element : dom::array(value)) {
    TradeSession saving;
    saving.start = moment_at(element, "start", model);
    saving.end = moment_at(element, "end", model);
    saving.offset = static_cast<int32_t>(integer_at(element, "offset"));
    model.daylight_save_times.push_back(std::move(saving));
  }
}

/// A date or a time that fails its reader leaves its fields zero.
TradeSession read_session(dom::element element) {
  const std::string_view start = text_at(element, "start_time");
  const std::string_view end = text_at(element, "end_time");
  const std::string_view offset = text_at(element, "offset");
  const std::string_view trans_day_type = text_at(element, "trans_day_type");
  const std::string_view type = text_at(element, "type");
  TradeSession session;
  read_time_of_day(start, session.start);
  read_time_of_day(end, session.end);
  session.offset = decimal_integer(offset);
  session.trans_day_type = trans_day_type;
  session.is_continuous = type == "continuous";
  return session;
}

void read_trade_times(dom::element value, TradeDayModel& model) {
  for (const dom::element element : dom::array(value)) {
    TradeTimeRange range;
    read_date(text_at(element, "start_date"), range.start_date);
    read_date(text_at(element, "end_date"), range.end_date);
    if (const std::optional<dom::element> times = find(element, "times")) {
      for (const dom::element time : dom::array(*times)) {
        range.sessions.push_back(read_session(time));
      }
    }
    model.trade_times.push_back(std::move(range));
  }
}

/// Moves the start if it lies in daylight saving, or else the end: never both.
void apply_daylight_saving(SpecialTimeRange& range, const TradeDayModel& model) {
  for (const TradeSession& saving : model.daylight_save_times) {
    for (BarTime* moment : {&range.start, &range.end}) {
      if (!is_inside(*moment, saving.start, saving.end)) continue;
      *moment = shifted(*moment, int64_t{saving.offset} * 60);
      return;
    }
  }
}

void read_special_trade_times(dom::element value, TradeDayModel& model) {
  for (const dom::element element : dom::array(value)) {
    // Hosts write a null for an empty list: what has no list adds nothing.
    dom::array times;
    if (element["times"].get(times) != simdjson::SUCCESS) continue;
    std::vector<SpecialTimeRange> ranges;
    for (const dom::element time : times) {
      SpecialTimeRange range{moment_at(time, "start_time", model),
                             moment_at(time, "end_time", model)};
      apply_daylight_saving(range, model);
      ranges.push_back(range);
    }
    model.special_trade_times.try_emplace(std::string(text_at(element, "date")), std::move(ranges));
  }
}

struct Section {
  std::string_view key;
  std::string_view missing;  ///< the refusal of a calendar without it
  void (*read)(dom::element value, TradeDayModel& model);
};

// In the order of reading: each section builds on those before it.
constexpr Section sections[] = {
    {"timezone", "", read_timezone},
    {"trade_dates", "error found in trade_dates.", read_trade_dates},
    {"daylight_save_times", "error found in res daylight_save_times.", read_daylight_save_times},
    {"trade_times", "error found in trade_times.", read_trade_times},
    {"special_trade_times", "error found in special_trade_times.", read_special_trade_times},
};

}  // namespace

CalendarAnswer read_calendar(const std::string& json) {
  if (json.empty()) return {nullptr, "Trade day resp json is empty, return."};
  dom::parser parser;
  dom::element root;
  if (parser.parse(json).get(root) != simdjson::SUCCESS) {
    return {nullptr, "Trade day resp json deserialize error, return."};
  }
  if (integer_at(root, "status_code") != 0) return {nullptr, "trade day get resp error."};
  const std::optional<dom::element> data = find(root, "data");
  if (!data) return {nullptr, "error parse in data."};

  const auto model = std::make_shared<TradeDayModel>();
  for (const Section& section : sections) {
    const std::optional<dom::element> value = find(*data, section.key);
    if (!value) return {nullptr, section.missing};
    section.read(*value, *model);
  }
  return {model, {}};
}

}  // namespace quor
