// All errors of a script, though the library stops at the first: each faulty statement is left out,
// and the rest compiled again.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "explain.h"
#include "finding.h"

namespace quor_advice {

struct ToldError {
  int64_t code;
  Problem problem;
};

struct AllErrors {
  std::vector<ToldError> errors;  ///< the first one as the library found it
  /// The script with every faulty statement replaced by one that declares its name, at the same
  /// offsets; blank where that is impossible.
  std::string rest;
  Failure last;  ///< of the rest, where it is still refused
};

AllErrors find_all_errors(const Input& input, const Failure& first, Reading reading);

}  // namespace quor_advice
