// A script over all securities, on the threads of `quor scan`.
#pragma once

#include "desk.h"
#include "folder.h"
#include "json.h"

namespace quor_host {

/// Begins a scan at a desk, in place of one under way. Throws Refusal for a script or a condition
/// that has an error or reads other securities.
Json start_scan(Desk& desk, const Securities& securities, const Json& request);
/// What came since a place. Throws Refusal if there was no scan.
Json scan_json(Desk& desk, size_t since);
Json cancel_scan(Desk& desk);

}  // namespace quor_host
