// What an editor asks about a script while it is written. All that is told is advice's; nothing is
// read from a desk or left on it.
#pragma once

#include "host/studio/json.h"

namespace quor_host {

/// Each takes `script`, `parameters` and mostly `at`, and gives null where there is nothing to say.
/// They throw Refusal.
Json completions(const Json& call);
Json hover(const Json& call);
Json call_hint(const Json& call);
/// The help of a `word` of the language.
Json word_help(const Json& call);
Json name_at(const Json& call);
/// Refused with the reason for a name that can't become `to`.
Json renamed(const Json& call);
Json formatted(const Json& call);
Json colours(const Json& call);
/// How the colour `code` is written, "COLORRED" before "RGB(204, 48, 48)".
Json colour_texts(const Json& call);
/// For each of `findings` what mends it, on bars of a `period`.
Json fixes(const Json& call);

}  // namespace quor_host
