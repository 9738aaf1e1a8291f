// Why a line has no value at a bar.
#pragma once

#include "desk.h"
#include "host/studio/json.h"

namespace quor_host {

/// What is known of it, as sentences that go from the line down to what has no value of its own:
/// each part of an expression is calculated for itself, over the same bars. `line` counts the lines
/// of the script. Throws Refusal for a line or a row that isn't there, and for one with a value.
Json why_json(const Desk& desk, size_t line, size_t row);

}  // namespace quor_host
