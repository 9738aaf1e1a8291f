// JSON as the language server reads and writes it.
#pragma once

#include <nlohmann/json.hpp>

namespace quor_lsp {

using Json = nlohmann::ordered_json;

}  // namespace quor_lsp
