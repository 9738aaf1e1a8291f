// What the page works on: bars, a script over them, the place in play.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "drawing.h"
#include "host/input/bars.h"
#include "run.h"

namespace quor_host {

/// Bars with what a page wants to know of them; keys ascend.
struct Security {
  std::string name;
  Bars bars;
  uint32_t period = 0;
  bool is_period_guessed = false;
  bool is_resampled = false;  ///< the bars are made of shorter ones
};

/// Where play is.
struct Play {
  Bars bars;         ///< those that came, the last one may be forming
  size_t row = 0;    ///< of the bar that forms or comes next
  size_t tick = 0;   ///< how many ticks of it came
  size_t ticks = 1;  ///< of a whole bar
};

/// The close of another security, drawn over the bars.
struct Overlay {
  Other other;
  std::vector<double> values;  ///< under the keys of the security that is seen
};
inline constexpr uint32_t overlay_column = 4'000'000'000;

struct Desk {
  /// The bars that are seen; none without a security.
  const Bars& bars() const;
  size_t row_count() const { return bars().keys.size(); }
  /// The values of a bar field, of a column of the script or of the overlay; none for what isn't
  /// there.
  std::span<const double> cells(uint32_t column) const;

  Surroundings around;
  std::optional<Security> security;
  std::optional<Task> task;  ///< the last one that was sent
  std::unique_ptr<Run> run;  ///< of the last sound script
  Drawing drawing;
  std::optional<Play> play;
  std::optional<Overlay> overlay;
};

}  // namespace quor_host
