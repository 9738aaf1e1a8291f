#include "surroundings.h"

#include <algorithm>
#include <limits>

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

const Bars* bars_for(const Surroundings& around, const quor::engine::Reference& reference) {
  if (reference.kind != quor::engine::Reference::Kind::security) return nullptr;
  const OtherField other(reference);
  const auto found = around.others.find(other.name);
  const bool serves = found != around.others.end() && found->second.columns.contains(other.field);
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

}  // namespace quor_host
