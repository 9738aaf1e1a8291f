// A script cut into statements, to show where an error is and to know the names of its lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quor_host {

struct Statement {
  std::string text;  ///< without comments, on one line; empty for a blank line
  size_t line = 0;   ///< where it begins, the first line is 1
};

/// The statements by the number under which the library reports errors: blank lines and lines with
/// only a comment count, a line end inside a statement does not. Unfinished text comes last.
std::vector<Statement> split_script(std::string_view source);

/// The name that each named statement declares, as the library knows it: in capitals and without
/// blanks. Each name once, in the order of the script.
std::vector<std::string> declared_names(const std::vector<Statement>& statements);

}  // namespace quor_host
