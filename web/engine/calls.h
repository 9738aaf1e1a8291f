// What the page may ask of its desk.
#pragma once

#include <string>
#include <string_view>

#include "desk.h"

namespace quor_host {

/// Answers a call such as {"call": "script", "script": "A:C;"} by JSON, or where it is said so by
/// other bytes. `body` has the bars that come in as text. Throws Refusal, HostError.
std::string answer_to(Desk& desk, const Json& call, std::string_view body);

}  // namespace quor_host
