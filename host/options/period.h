// The periods of bars, as they are read from files and options.
#pragma once

#include "bars/period.h"

namespace quor_host {

using quor_bars::end_of_period;
using quor_bars::infer_period;
using quor_bars::parse_period;
using quor_bars::period_of_a_day;
using quor_bars::period_text;
using quor_bars::seconds_of;

}  // namespace quor_host
