// What a page may ask of its session.
#pragma once

#include <string>

#include "desk.h"
#include "folder.h"
#include "web.h"

namespace quor_host {

/// Answers a request for what lies below the path of a session: "script", "play/step". Throws
/// Refusal, HostError.
Answer answer_at(Desk& desk, const std::string& what, const Securities& securities,
                 const Request& request);

}  // namespace quor_host
