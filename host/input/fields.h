// The fields of bars, and which of them no file has.
#pragma once

#include <cstdint>

#include "bars/fields.h"

namespace quor_host {

using quor_bars::field_amount;
using quor_bars::field_close;
using quor_bars::field_high;
using quor_bars::field_low;
using quor_bars::field_open;
using quor_bars::field_text;
using quor_bars::field_time;
using quor_bars::field_volume;

/// Fields that a script is said to read and that no file of bars has: the row key, and the time of
/// a notice, for which the library takes its own.
constexpr bool is_given_elsewhere(uint32_t id) {
  constexpr uint32_t field_notice_time = 199;
  return id == field_time || id == field_notice_time;
}

}  // namespace quor_host
