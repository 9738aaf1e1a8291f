// An expression lowered once: the operator-precedence walk over its element list, recorded.
#pragma once

#include <cstdint>
#include <vector>

#include "tables/operator_table.h"

namespace quor {

struct Variable;

/// Where an operand comes from when a step needs it. References stay unevaluated until then.
struct Operand {
  enum class Source : uint8_t {
    number,
    partial,    ///< the result of an earlier step
    field,      ///< a cell of the variable's column
    reference,  ///< any other variable
  };

  Source source = Source::number;
  uint32_t partial = 0;
  double number = 0;
  Variable* variable = nullptr;
};

/// One step of a program, run in order.
struct Step {
  enum class Kind : uint8_t {
    reduce,   ///< partial = left op right; the right operand is evaluated first
    negate,   ///< partial = right with its sign bit flipped
    discard,  ///< evaluate right for its effects and its status only
  };

  Kind kind = Kind::reduce;
  OpCode op = op_plus;
  uint32_t partial = 0;
  Operand right;
  Operand left;
};

/// How a program ends once its steps have run.
enum class Ending : uint8_t {
  untouched,         ///< the list was empty: the caller's start value stays
  value,             ///< the value of `result`; a reference gets the caller's own variable
  missing_operand,   ///< status 4, the line only
  missing_variable,  ///< status 2000, no text
  bare_reference,    ///< status 2001, the line of the variable of `result`
};

struct Program {
  std::vector<Step> steps;
  Ending ending = Ending::untouched;
  Operand result;
  /// Results of the steps of one run, the partial ones. An expression never evaluates itself, so a
  /// program needs one set only, and no run allocates.
  std::vector<double> partials;

  /// What the program evaluates if it is nothing but one reference; else null.
  Variable* lone_reference() const {
    return steps.empty() && ending == Ending::value ? result.variable : nullptr;
  }
};

}  // namespace quor
