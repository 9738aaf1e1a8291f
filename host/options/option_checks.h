// What the values of options must be.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

namespace quor_host {

/// A whole number within bounds, in decimal. Negative ones would wrap round, and those with a zero
/// in front be read as octal, which it takes away: for `transform`.
CLI::Validator whole_number(uint64_t least, uint64_t most = UINT64_MAX);

/// A text that isn't blank; `what` says what it is, "script".
CLI::Validator some_text(const std::string& what);

/// A period by name or code.
CLI::Validator period();

}  // namespace quor_host
