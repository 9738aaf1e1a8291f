// What goes to the error output.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "advice/advice.h"

namespace quor_host {

/// From now on no notes are told, and no warnings but where they fail.
void be_quiet(bool warnings_fail);
bool is_quiet();

/// "quor: " and a sentence: what the user should know, what may be wrong, what stopped the program.
void note(const std::string& text);
void warn(const std::string& text);
void tell_error(const std::string& text);

/// Findings as compilers print them, in colours where a person sees them; `name` is the script's.
void show_findings(const std::vector<quor_advice::Finding>& findings, std::string_view script,
                   std::string_view name);

}  // namespace quor_host
