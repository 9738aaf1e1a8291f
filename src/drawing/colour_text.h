// From a colour word of a script to the colour text of a record.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/data_pool_center.h"
#include "core/status.h"

namespace quor {

/// The colour text of a word other than COLORAUTO: the brush key of a known word, else "#" and what
/// stands behind the first five characters, if that is six to eight characters that begin with a
/// hexadecimal digit. COLOR123ABC gives "#123ABC".
std::optional<std::string> fixed_colour_text(std::string_view word);

/// As `fixed_colour_text`, but COLORAUTO takes the next entry of the palette. A bad word gives
/// status 2013 with the word and line 0 in `error`, and an empty text.
Status colour_text(DataPoolCenter& pool, std::string_view word, std::string& error,
                   std::string& text);

}  // namespace quor
