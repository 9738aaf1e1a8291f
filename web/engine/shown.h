// Where the records show that stand at single bars, and single bars.
#pragma once

#include "desk.h"
#include "host/studio/json.h"

namespace quor_host {

Json shown_json(const Desk& desk, size_t from, size_t to);
/// The fields and the lines at a row. Throws Refusal for one that isn't there.
Json values_json(const Desk& desk, size_t row);

/// The values of the lines at a row, in their order.
Json line_values(const Desk& desk, size_t row);
/// The date of a bar, with the time of day where the bars have one.
std::string time_text(const Desk& desk, int64_t key);
Json event_json(const Desk& desk, const quor::engine::Event& event);

}  // namespace quor_host
