// How the panels of a chart lie: their heights, and what of their records lies over what.
#pragma once

#include <cstddef>
#include <vector>

#include "panels.h"
#include "records.h"
#include "view.h"

namespace quor_host {

/// Bars that tell which lines share an axis, though fewer are in sight.
inline constexpr size_t enough_bars = 250;

/// The panels of the script, and one of the volume, if given, where the script has none of its own
/// and the bars have a volume. The bars come first among the records.
std::vector<Panel> panels_of(const View& view, const View& wide, const std::vector<Record>& records,
                             const Record* volume, size_t most);

/// How much of the height each panel takes, 1 in all. The upper one takes what the lower ones
/// leave, which is at least four tenths. A single one below gets more than one of several.
std::vector<double> shares_of(const std::vector<Panel>& panels);

/// Greater ones lie over smaller ones.
double layer_of(const Record& record);

/// The records of a panel from the lowest layer up. Candles of the script's own take the place of
/// the bars.
std::vector<const Record*> layers_of(const Panel& panel, const Record& bars);

/// Candles that the script draws, not paints over the bars.
bool are_own_candles(const Record& record, const Record& bars);

}  // namespace quor_host
