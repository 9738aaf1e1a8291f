#include "surroundings.h"

#include <algorithm>
#include <limits>

#include "bars/resample.h"
#include "host/options/period.h"
#include "host/studio/refusal.h"
#include "host/text.h"

namespace quor_host {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

}  // namespace

quor::engine::Subject subject_of(const Json& call) {
  quor::engine::Subject subject;
  subject.security = text_of(call, "code", "");
  subject.market = text_of(call, "market", "");
  subject.time_zone = text_of(call, "timeZone", subject.time_zone);
  subject.calendar = text_of(call, "calendar", "");
  if (!subject.calendar.empty() && !Json::parse(subject.calendar, nullptr, false).is_object()) {
    throw Refusal(400, "the calendar is no JSON object");
  }
  subject.min_price = number_of(call, "minPrice").value_or(nan);
  subject.unit = number_of(call, "unit").value_or(nan);
  subject.share_count_per_unit = number_of(call, "shareCountPerUnit").value_or(nan);
  return subject;
}

OtherField::OtherField(const quor::engine::Reference& reference) {
  const size_t mark = reference.source.rfind('|');
  if (mark == std::string::npos) return;
  name = to_upper(reference.source.substr(0, mark));
  field = static_cast<uint32_t>(to_number(reference.source.substr(mark + 1)).value_or(0));
}

namespace {

/// The longer period that the bars make for a reference; 0 if it asks for another one.
uint32_t period_for(const quor::engine::Reference& reference, const Bars& bars, uint32_t period) {
  if (reference.kind != quor::engine::Reference::Kind::period) return 0;
  const OtherField wanted(reference);
  const uint32_t longer = parse_period(wanted.name).value_or(0);
  const bool is_made = longer != 0 && quor_bars::is_longer(longer, period);
  return is_made && bars.columns.contains(wanted.field) ? longer : 0;
}

/// Null if there is none, or none with the field.
const Other* other_for(const Surroundings& around, const quor::engine::Reference& reference) {
  if (reference.kind != quor::engine::Reference::Kind::security) return nullptr;
  const OtherField wanted(reference);
  const auto found = around.others.find(wanted.name);
  const bool serves =
      found != around.others.end() && found->second.bars.columns.contains(wanted.field);
  return serves ? &found->second : nullptr;
}

std::vector<double> values_under(std::span<const int64_t> keys, const Bars& other, uint32_t field) {
  const std::vector<double>& known = other.columns.at(field);
  std::vector<double> values;
  values.reserve(keys.size());
  if (keys.empty()) return values;
  auto at =
      static_cast<size_t>(std::ranges::lower_bound(other.keys, keys.front()) - other.keys.begin());
  for (const int64_t key : keys) {
    while (at < other.keys.size() && other.keys[at] < key) ++at;
    const bool is_there = at < other.keys.size() && other.keys[at] == key;
    values.push_back(is_there ? known[at] : nan);
  }
  return values;
}

}  // namespace

std::optional<std::vector<double>> values_for(const Surroundings& around,
                                              const quor::engine::Reference& reference,
                                              const Bars& bars, uint32_t period, size_t first) {
  const uint32_t field = OtherField(reference).field;
  if (const uint32_t longer = period_for(reference, bars, period); longer != 0) {
    const auto make = around.takes_forming ? quor_bars::under_way : quor_bars::last_finished;
    return make(bars, field, longer, first);
  }
  const Other* const other = other_for(around, reference);
  if (other == nullptr) return std::nullopt;
  return values_of(*other, field, std::span(bars.keys).subspan(first), period);
}

std::vector<double> values_of(const Other& other, uint32_t field, std::span<const int64_t> keys,
                              uint32_t period) {
  if (!quor_bars::is_longer(period, other.period)) return values_under(keys, other.bars, field);
  return values_under(keys, quor_bars::resampled(other.bars, period), field);
}

bool is_served(const Surroundings& around, const quor::engine::Reference& reference,
               const Bars& bars, uint32_t period) {
  return other_for(around, reference) != nullptr || period_for(reference, bars, period) != 0;
}

}  // namespace quor_host
