// The two settings texts beside a script: parameter defaults and the look of lines.
#pragma once

#include <string_view>

#include "compiler/compile_context.h"

namespace quor {

/// Reads parameter JSON (already upper case) into `constants` and line JSON into `line_models`. Bad
/// JSON and elements of the wrong form set nothing; nothing is reported.
void load_settings(CompileContext& context, std::string_view parameters, std::string_view lines);

}  // namespace quor
