#include "library.h"

#include "advice/word_help.h"
#include "host/options/period.h"
#include "host/panes/measures.h"

namespace quor_host {
Json words_json() {
  Json words = Json::array();
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) {
    words.push_back(help.word);
  }
  return words;
}

Json measures_json() {
  return {{"timeMarkRoom", time_mark_room},
          {"tickRoom", tick_room},
          {"leastTickRoom", least_tick_room},
          {"enoughTicks", enough_ticks}};
}

Json periods_json() {
  Json periods = Json::array();
  for (const char* const name :
       {"1min", "5min", "15min", "30min", "1hour", "day", "week", "month", "quarter", "year"}) {
    const uint32_t code = parse_period(name).value_or(period_of_a_day);
    periods.push_back({{"code", code}, {"name", period_text(code)}});
  }
  return periods;
}

}  // namespace quor_host
