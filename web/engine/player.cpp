#include "player.h"

#include <algorithm>
#include <cmath>

#include "calculation.h"
#include "host/input/fields.h"
#include "host/studio/refusal.h"
#include "shown.h"

namespace quor_host {
namespace {

constexpr size_t few_bars = 50;  ///< of which each tick is told

/// The way of the price through a bar: first to the end that the close lies farther from.
class Path {
 public:
  Path(const Bars& bars, size_t row)
      : open_(value(bars, field_open, row)),
        high_(value(bars, field_high, row)),
        low_(value(bars, field_low, row)),
        close_(value(bars, field_close, row)) {
    const bool rises = close_ >= open_;
    points_[0] = open_;
    points_[1] = rises ? low_ : high_;
    points_[2] = rises ? high_ : low_;
    points_[3] = close_;
  }

  /// A field of the bar when a share of it is over; `whole` is its value at the end.
  double at(uint32_t field, double share, double whole) const {
    if (field == field_volume || field == field_amount) return std::floor(whole * share);
    const bool is_price =
        field == field_open || field == field_high || field == field_low || field == field_close;
    if (!is_price || std::isnan(open_ + high_ + low_ + close_)) return whole;
    if (field == field_open) return open_;
    const auto passed = static_cast<size_t>(share * 3.0);
    const double price = points_[passed] + (points_[passed + 1] - points_[passed]) *
                                               (share * 3.0 - static_cast<double>(passed));
    double high = price;
    double low = price;
    for (size_t i = 0; i <= passed; ++i) {
      high = std::max(high, points_[i]);
      low = std::min(low, points_[i]);
    }
    return field == field_close ? price : field == field_high ? high : low;
  }

 private:
  static double value(const Bars& bars, uint32_t field, size_t row) {
    const auto column = bars.columns.find(field);
    return column == bars.columns.end() ? std::nan("") : column->second[row];
  }

  double open_;
  double high_;
  double low_;
  double close_;
  double points_[4];
};

Bars first_bars(const Bars& bars, size_t count) {
  const auto end = static_cast<ptrdiff_t>(count);
  Bars first;
  first.keys.assign(bars.keys.begin(), bars.keys.begin() + end);
  for (const auto& [id, values] : bars.columns) {
    first.columns[id].assign(values.begin(), values.begin() + end);
  }
  return first;
}

Play& play_of(Desk& desk) {
  if (!desk.play) throw Refusal(409, "nothing is played; start with a row");
  return *desk.play;
}

bool is_over(const Desk& desk) { return desk.play->row >= desk.security->bars.keys.size(); }

/// Brings the next tick into the bars. True if its bar is whole then.
bool take_tick(const Bars& all, Play& play) {
  const bool is_new = play.tick == 0;
  const bool is_whole = ++play.tick >= play.ticks;
  if (is_new) play.bars.keys.push_back(all.keys[play.row]);
  const Path path(all, play.row);
  const double share =
      static_cast<double>(play.tick - 1) / static_cast<double>(std::max<size_t>(play.ticks, 2) - 1);
  for (const auto& [id, values] : all.columns) {
    const double whole = values[play.row];
    std::vector<double>& come = play.bars.columns[id];
    if (is_new) come.emplace_back();
    come.back() = is_whole ? whole : path.at(id, share, whole);
  }
  return is_whole;
}

Json tick_json(const Desk& desk, bool is_whole) {
  const Play& play = *desk.play;
  Json bar = Json::object();
  for (const auto& [id, values] : play.bars.columns) bar[std::to_string(id)] = values.back();
  return {{"row", play.row},        {"key", play.bars.keys.back()},
          {"tick", play.tick},      {"final", is_whole},
          {"bar", std::move(bar)},  {"values", line_values(desk, play.row)},
          {"events", Json::array()}};
}

/// Plays a tick and adds what came of it to the steps, or only the events of it to those of the bar
/// if ticks aren't told one by one. True if the bar is whole.
bool play_tick(Desk& desk, Json& steps, Json& events, bool tells_all) {
  Play& play = *desk.play;
  const bool is_whole = take_tick(desk.security->bars, play);
  if (desk.run) {
    if (!desk.run->calculate_last(play.bars)) {
      throw Refusal(409, "the script fails at this bar");
    }
    for (const auto& event : desk.run->last_events()) {
      Json json = event_json(desk, event);
      json["final"] = is_whole;
      events.push_back(std::move(json));
    }
  }
  if (tells_all || is_whole) {
    Json step = tick_json(desk, is_whole);
    step["events"] = std::exchange(events, Json::array());
    steps.push_back(std::move(step));
  }
  if (is_whole) {
    ++play.row;
    play.tick = 0;
  }
  return is_whole;
}

Json step(Desk& desk, size_t ticks, size_t bars) {
  play_of(desk);
  if (is_over(desk)) throw Refusal(409, "no bar is left to play");
  Json steps = Json::array();
  Json events = Json::array();
  const bool tells_all = bars <= few_bars;
  while (ticks + bars > 0 && !is_over(desk)) {
    const bool is_whole = play_tick(desk, steps, events, tells_all);
    if (ticks > 0) --ticks;
    if (bars > 0 && is_whole) --bars;
  }
  return {{"row", desk.play->row},
          {"rows", desk.row_count()},
          {"of", desk.security->bars.keys.size()},
          {"done", is_over(desk)},
          {"steps", std::move(steps)}};
}

}  // namespace

Json start_play(Desk& desk, size_t row, size_t ticks) {
  if (!desk.security) throw Refusal(409, "there are no bars to play");
  const Bars& all = desk.security->bars;
  if (row < 1 || row >= all.keys.size()) throw Refusal(400, "\"row\" must be one behind the first");
  Play play{first_bars(all, row), row, 0, ticks};
  if (desk.run) {
    auto run = std::make_unique<Run>(desk.run->task(), desk.around, desk.security->period);
    if (!run->calculate(play.bars)) throw Refusal(409, "the script fails on the bars so far");
    desk.run = std::move(run);
  }
  desk.play = std::move(play);
  return {{"row", row}, {"rows", row}, {"of", all.keys.size()}, {"ticks", ticks}};
}

Json step_ticks(Desk& desk, size_t count) { return step(desk, count, 0); }

Json step_bars(Desk& desk, size_t count) { return step(desk, 0, count); }

Json stop_play(Desk& desk) {
  desk.play.reset();
  Json answer = recalculate(desk);
  if (!answer.is_null()) return answer;
  return {{"sound", false}, {"findings", Json::array()}, {"sliders", Json::array()}};
}

}  // namespace quor_host
