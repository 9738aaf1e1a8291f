// What a script may ask for beside the bars that it runs over.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "host/input/bars.h"
#include "host/studio/json.h"

namespace quor_host {

struct Surroundings {
  /// Of the security, but for its period.
  quor::engine::Subject subject;
  /// Bars of other securities, by their names in capitals; keys ascend.
  std::map<std::string, Bars> others;
};

/// What the page tells of the security. Throws Refusal.
quor::engine::Subject subject_of(const Json& call);

/// "BBB" and a field, of the reference "BBB|11".
struct OtherField {
  std::string name;
  uint32_t field = 0;

  explicit OtherField(const quor::engine::Reference& reference);
};

/// The bars that serve a reference; null for none.
const Bars* bars_for(const Surroundings& around, const quor::engine::Reference& reference);

/// The values of a field of other bars under the same keys; NaN where there are none.
std::vector<double> values_under(std::span<const int64_t> keys, const Bars& other, uint32_t field);

}  // namespace quor_host
