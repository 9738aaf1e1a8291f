// What authors bring along from other ways of writing, and what they write here.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "reading.h"
#include "syntax.h"

namespace quor_advice {

/// What to write for a word of elsewhere, in capitals: "write SMA(X,N,1)"; empty if it isn't known.
/// A name with a dot is looked up by what stands behind the dot, too.
std::string advice_for_elsewhere(std::string_view word);

/// The same for a style item or a short form: BUY, RED.
std::string item_from_elsewhere(std::string_view item);

/// The sign of a comment of other languages in front of a statement.
std::optional<Problem> explain_foreign_comment(const Reading& reading, const Statement& statement);

/// A statement that begins as other languages declare, loop, return or comment.
std::optional<Problem> explain_declaring_word(const Reading& reading, const Statement& statement);

/// C[1] for REF(C,1) at the token; nothing if it holds no bracket with a number.
std::optional<Problem> explain_index(const Reading& reading, const Token& token);

/// A word that becomes one that `is_known` if its letters of other alphabets are replaced by those
/// of ASCII that look alike.
std::optional<Problem> explain_look_alike(const Reading& reading, const Token& token);

}  // namespace quor_advice
