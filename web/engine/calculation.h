// Bars and scripts come to a desk and are calculated.
#pragma once

#include <optional>
#include <string>

#include "desk.h"
#include "host/studio/json.h"

namespace quor_host {

inline constexpr size_t most_rows = 2'000'000;

/// Bars out of a text, sorted. The period is the one that the user names, or for an empty one what
/// the bars tell. Throws HostError for a text that is wrong, Refusal for too many rows and for a
/// period that is none.
Security read_security(const std::string& name, std::string_view csv, const std::string& period);

/// Each gives the answer for the page. What is refused changes nothing.
Json take_bars(Desk& desk, Security security);
/// Newer bars of the file that is seen, the first of them in place of those of its time and behind.
Json take_more(Desk& desk, const Security& more);
Json take_script(Desk& desk, Task task);
/// What is known of the security, and bars of another one: both give the answer to the script anew,
/// null without one.
Json take_subject(Desk& desk, quor::engine::Subject subject);
Json take_other(Desk& desk, Security security);
/// Whether scripts read longer periods as they form; the same answer.
Json take_forming(Desk& desk, bool takes_forming);
/// Lays the close of another security over the bars; nothing without one.
void take_overlay(Desk& desk, std::optional<Security> security);
/// For other bars: the last task again and, if that has an error by now, the script that was seen,
/// or else the bars alone. Null without a task.
Json recalculate(Desk& desk);

}  // namespace quor_host
