// The language as a grammar of TextMate, by which editors colour scripts without a server.
#pragma once

#include <string>

namespace quor_advice {

/// JSON of a grammar with the scope `source.quor`, made from the words of the language.
std::string textmate_grammar();

}  // namespace quor_advice
