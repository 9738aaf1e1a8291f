// What the program answers to a command line that it doesn't understand: what to write instead.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace quor_host {

/// A text for the user, without a line end. `arguments` are those behind the program's name.
std::string explain(const CLI::App& app, const CLI::ParseError& error,
                    const std::vector<std::string>& arguments);

}  // namespace quor_host
