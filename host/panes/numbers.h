// Numbers as a reader wants them: as many digits as say something.
#pragma once

#include <span>
#include <string>

namespace quor_host {

/// A number of so many decimals.
std::string number_text(double value, int digits);

/// The same with commas between thousands from 10,000 on, or shortened from a million on: 1.10T,
/// 57.9B, 579M have three digits that count. Numbers of 1e16 and more read 1.00e+16.
std::string grouped_text(double value, int digits);
std::string short_text(double value, int digits);

/// How many decimals prices are given with, 4 at most or as many as prices below 1 ask for. A price
/// that was once kept in 32 bits, such as 1438.359985, has those it had before.
int decimals_of(std::span<const double> prices);

/// The decimals for values of which the largest has this size: two, and more below 1.
int decimals_for(double largest);

/// A step of 1, 2 or 5 times a power of ten that cuts the span into about `count` parts.
double nice_step(double span, double count);

/// The text of a tick on an axis whose ticks are a step apart and whose values reach so far from 0.
std::string tick_text(double value, double step, double largest);

}  // namespace quor_host
