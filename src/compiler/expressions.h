// From the text of one expression, in which calls have become hidden names, to its element list.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "compiler/compile_context.h"

namespace quor {

/// Inlines constants and replaces declared names by hidden names, appending to `out`. With `check`
/// set an expression that nothing has changed is scanned, so that unknown words are found.
Status normalize_expression(CompileContext& context, std::string_view text, bool check,
                            int32_t line, std::string& out, std::string& error);

/// The word that a field word stands for on this instance's period and market.
std::string_view adapt_field_word(const DataPoolCenter& pool, std::string_view word);

struct ElementRequest {
  std::string_view text;
  VariableKind caller_kind;  ///< of the variable that will own the list
  int32_t line = 0;
  uint32_t column_id = no_column;   ///< of the statement or call that owns the list
  const Variable* owner = nullptr;  ///< a statement, which no word of its own text may name
  bool allow_unknown = false;       ///< passes over a word that resolves to nothing
};

/// Builds the element list of a normalised text. Sets `whole_series` if a word asks for it, notes
/// the fields that the script reads, and refuses a word that resolves to nothing with status 2
/// unless the request allows it.
Status build_elements(CompileContext& context, const ElementRequest& request, bool& whole_series,
                      std::vector<MathElement>& elements, std::string& error);

/// Marks what depends on a whole-series argument. Hidden names typed by a script may form a ring,
/// so the walk is refused beyond the depth that the evaluator bears.
void spread_whole_series(DataPoolCenter& pool, Variable& variable, VariableKind kind,
                         int depth = 0);

}  // namespace quor
