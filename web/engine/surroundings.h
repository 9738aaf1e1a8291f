// What a script may ask for beside the bars that it runs over.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "host/input/bars.h"
#include "host/studio/json.h"

namespace quor_host {

/// Bars of another security, as they were read; keys ascend.
struct Other {
  Bars bars;
  uint32_t period = 0;
};

struct Surroundings {
  /// Of the security, but for its period.
  quor::engine::Subject subject;
  /// By their names in capitals.
  std::map<std::string, Other> others;
  /// Of longer periods scripts read the bar that is under way, as far as it has come.
  bool takes_forming = false;
};

/// What the page tells of the security. Throws Refusal.
quor::engine::Subject subject_of(const Json& call);

/// "BBB" and a field, of the reference "BBB|11".
struct OtherField {
  std::string name;
  uint32_t field = 0;

  explicit OtherField(const quor::engine::Reference& reference);
};

/// What serves a reference of a script over some bars of a period, at the bars from `first` on:
/// another security's bars of the same keys, NaN where it has none, or the last longer period that
/// is over, or the one that is under way, made of the bars themselves. Nothing where there is no
/// such data.
std::optional<std::vector<double>> values_for(const Surroundings& around,
                                              const quor::engine::Reference& reference,
                                              const Bars& bars, uint32_t period, size_t first);

/// A field of another security at bars of a period with these keys; NaN where it has none.
std::vector<double> values_of(const Other& other, uint32_t field, std::span<const int64_t> keys,
                              uint32_t period);

/// Whether there is such data.
bool is_served(const Surroundings& around, const quor::engine::Reference& reference,
               const Bars& bars, uint32_t period);

}  // namespace quor_host
