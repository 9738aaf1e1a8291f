// What is wrong with the form of a statement, whether or not the library refuses it.
#pragma once

#include <string>
#include <vector>

#include "reading.h"

namespace quor_advice {

struct Problem {
  Place place;
  std::string sentence;
  std::string suggestion;  ///< may be empty
};

/// That a ";" belongs behind the token.
Problem missing_end(const Reading& reading, const Token& before);

/// Parentheses without a partner, operands and operators that are missing or too many, signs that
/// are none, in the order of the script.
std::vector<Problem> check_form(const Reading& reading, const Statement& statement);

}  // namespace quor_advice
