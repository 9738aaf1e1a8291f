// The compiled script: elements of an expression, variables, and the settings of output lines.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/call_memory.h"
#include "core/program.h"
#include "tables/field_table.h"

namespace quor {

class BaseFunc;
class BaseShape;
class DataPoolCenter;
struct Variable;

/// How deep variables may nest. A call and its argument are two levels. A level takes at most half
/// a kilobyte of stack in an optimised build, so that the deepest script fits into a quarter of the
/// one megabyte that a thread of a Windows host has.
inline constexpr int max_nesting = 512;
/// Deeper expressions go bar by bar, where the stack is watched.
inline constexpr int most_column_levels = 100;

/// The place of a variable that stands in no list.
inline constexpr size_t unlisted = SIZE_MAX;

enum class ElementKind : uint8_t { operation = 0, number = 1, reference = 2, end = 3 };

/// One token of an expression, in infix order. Every list closes with an end element.
struct MathElement {
  ElementKind kind = ElementKind::end;
  double value = 0;              ///< the op code or the number
  Variable* variable = nullptr;  ///< what a reference names
};

enum class VariableKind : uint8_t {
  call = 0,        ///< a call of a built-in function
  expression = 1,  ///< the value of its elements, a text literal, or an undefined name
  field = 2,       ///< a cell of the table
  number = 3,      ///< `value` at every row
  undeclared = 4,  ///< not compiled yet; reads as 0
  missing = 5,     ///< stands for an argument that isn't there; reads as null with status 2000
};

/// What a call may take as known of the rows before one that it is evaluated at.
enum class Remembering : uint8_t {
  nothing,
  unchanged,    ///< values of its arguments, until a result changes that they may rest on
  in_order,     ///< what it makes of them, too, as long as it has passed them one after the other
  catching_up,  ///< and it may pass those late that it has been left out at
};

/// A call that can be worked out along with one or two others of its word, a row behind them, since
/// its series is what they say.
struct Follower {
  Variable* call = nullptr;    ///< null for none
  size_t statement = 0;        ///< that it belongs to
  bool of_difference = false;  ///< of two, the left one less the right one; else of one
};

/// One statement, one function call, one argument of a call or one data field.
///
/// The compiled script owns every variable, at a stable address; all pointers between variables are
/// plain.
struct Variable {
  explicit Variable(DataPoolCenter& owner) : pool(&owner) {}

  /// Whether the variable's own column holds its series: an argument id is no data column.
  bool has_column() const { return static_cast<int32_t>(column_id) >= 0 && column_index != -1; }

  /// Of an expression: a quoted text, which is read as the number that it begins with.
  bool is_text() const { return text.starts_with('\''); }
  /// Of an expression without elements: the word that is null, where others are undefined names.
  bool is_draw_null() const { return text == "DRAWNULL"; }

  DataPoolCenter* pool;
  VariableKind kind = VariableKind::undeclared;
  bool whole_series = false;       ///< calculated from row 0 on every run
  bool reserved = false;           ///< a data field or a reference
  bool reference = false;          ///< made for a reference to another security, period or quote
  size_t place = unlisted;         ///< in the list of compiled variables
  int32_t line = -1;               ///< slot index of the statement; goes into error texts
  uint32_t column_id = no_column;  ///< the data column, or a negative argument id
  int32_t column_index = -1;       ///< position of `column_id` in the table
  uint32_t owner_column_id = no_column;  ///< for readers of the model; words go by the index
  int32_t owner_column_index = -1;       ///< column of the statement that holds this call
  int32_t function_id = -1;              ///< for readers of the model; calls go by the object
  const BaseFunc* function = nullptr;    ///< what a call runs; null for a word nobody serves
  /// The number of a constant; working storage of FILTER, SET and the trade signals.
  double value = 0;
  std::vector<int32_t> aux_column_indexes;  ///< parallel to `aux_column_ids`
  std::vector<uint32_t> aux_column_ids;     ///< columns that this call reserved for itself
  std::vector<Variable*> arguments;         ///< in source order; null where a compile broke off
  std::vector<MathElement> elements;        ///< the source of truth of `program`
  Program program;
  std::string name;           ///< the hidden name: "~" and a decimal number
  std::string text;           ///< expression, field word, function word or declared name
  std::string source_text;    ///< a call or argument as the script wrote it
  std::string function_word;  ///< empty for everything but a call
  Remembering remembering = Remembering::nothing;  ///< of a call
  bool for_one_run = false;                        ///< a call that remembers nothing beyond it
  const Variable* twin = nullptr;      ///< of calls that say the same at every row, the first one
  Follower follower;                   ///< of a call
  std::unique_ptr<CallMemory> memory;  ///< of a word that carries on what it worked out
  std::unique_ptr<CallMemory> known_values;  ///< of a word that looks at its arguments again
  std::shared_ptr<BaseShape> shape;  ///< the record of an output function, made on its first pass
};

/// Whether a statement is nothing but the name of what stands in its own column, as the second of
/// two lines that show one series is.
inline bool names_own_column(const Variable& statement) {
  const Variable* named = statement.program.lone_reference();
  return named != nullptr && named->kind == VariableKind::field &&
         named->column_id == statement.column_id;
}

/// The host's settings of one output line.
struct LineModel {
  std::string line_name;
  std::string color_key;
  double line_thick = 0;
  int64_t is_selected = 0;
};

}  // namespace quor
