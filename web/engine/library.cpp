#include "library.h"

#include "advice/word_help.h"
#include "host/options/period.h"
#include "host/panes/measures.h"

namespace quor_host {
namespace {

Json lengths_json(const NamedDashes& dashes) {
  Json lengths = Json::array();
  for (const double length : dashes.lengths) {
    if (length > 0.0) lengths.push_back(length);
  }
  return lengths;
}

}  // namespace

Json words_json() {
  Json words = Json::array();
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) {
    words.push_back(help.word);
  }
  return words;
}

Json measures_json() {
  Json dashes = Json::object();
  for (const NamedDashes& named : named_dashes) dashes[named.name] = lengths_json(named);
  Json shares = Json::array();
  for (const auto& [share, name] : golden_shares) shares.push_back({share, name});
  return {{"timeMarkRoom", time_mark_room},
          {"tickRoom", tick_room},
          {"leastTickRoom", least_tick_room},
          {"enoughTicks", enough_ticks},
          {"backgroundAlpha", background_alpha},
          {"regionAlpha", region_alpha},
          {"volumeAlpha", volume_alpha},
          {"leadAlpha", lead_alpha},
          {"lastPriceAlpha", last_price_alpha},
          {"backPictureAlpha", back_picture_alpha},
          {"dashes", std::move(dashes)},
          {"levelDashes", lengths_json(level_dashes)},
          {"goldenShares", std::move(shares)},
          {"lineEase", line_ease},
          {"broadestLine", broadest_line},
          {"narrowSlot", narrow_slot},
          {"broadestNarrowLine", broadest_narrow_line},
          {"ringLine", ring_line},
          {"barShare", bar_share},
          {"broadestBar", broadest_bar},
          {"textSpace", text_space},
          {"farText", far_text},
          {"farthestText", farthest_text},
          {"halfTag", half_tag},
          {"tagRadius", tag_radius}};
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
