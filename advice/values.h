// What an expression gives, as far as an author can be held to it.
#pragma once

#include "reading.h"

namespace quor_advice {

enum class Gives {
  unknown,
  constant,   ///< the same number on every bar
  condition,  ///< 1 or 0
  price,      ///< a price or an average of prices: above 0 on every bar
  change,     ///< a difference of prices, of either sign
};

/// Names of lines are followed to their declarations.
Gives what_gives(const Reading& reading, const Statement& statement, Range range);

/// Whether the expression is the same on every bar, as numbers, constants and words for the period
/// are.
bool is_steady(const Reading& reading, const Statement& statement, Range range);

/// A range of one token.
const Token* lone_token(const Statement& statement, Range range);

/// The text of a call in which two arguments have changed places.
std::string with_exchanged(const Reading& reading, const Statement& statement, const Call& call,
                           size_t first, size_t second);

/// The call that opens at a token; null if none does.
const Call* call_at(const Statement& statement, size_t word);

}  // namespace quor_advice
