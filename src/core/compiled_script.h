// What a compile leaves: variables, settings, what the host must deliver, and records.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/model.h"
#include "core/name_index.h"
#include "core/shape_management.h"

namespace quor {

/// The next compile replaces it whole, so that nothing of a script outlives the script.
class CompiledScript {
 public:
  /// Takes a variable over, at a stable address; unlisted, for arguments that no name finds.
  Variable& take(std::unique_ptr<Variable> variable);
  /// Appends a variable with its name and text to `variable_list`.
  void list(Variable& variable);
  /// Appends a field or a reference to `reserved_list`, under the next hidden name.
  void list_reserved(Variable& variable);

  /// The next hidden name: "~" and the count of all listed variables.
  std::string next_hidden_name() const;
  size_t hidden_name_count() const { return reserved_list.size() + variable_list.size(); }
  /// The first variable whose hidden name or text is the word and that `take` takes, the reserved
  /// ones before the others, each in the order of their list; null if there is none.
  template <typename Take>
  Variable* find_variable(std::string_view word, const Take& take) const {
    Variable* reserved = reserved_index_.find(word, take);
    return reserved != nullptr ? reserved : compiled_index_.find(word, take);
  }
  /// The first variable of the text that has a column or an argument id.
  Variable* find_with_column(std::string_view text) const;
  /// To be told of every listed variable that gets a column or an argument id.
  void note_column(Variable& variable);
  /// The listed variables that have got a column or an argument id, in the order of the list;
  /// some of them may have another one by now.
  const std::vector<Variable*>& variables_of_column(uint32_t column_id) const;
  /// The first variable of the text that stands for a cell of the table.
  Variable* find_field(std::string_view text) const;
  Variable* find_reserved(std::string_view text) const;

  /// All variables, the unlisted ones, too.
  size_t variable_count() const { return variables_.size(); }

  /// Raises the look-back that the report tells; a negative count changes nothing.
  void raise_period(int32_t count) { max_period_count = std::max(max_period_count, count); }
  /// "EMPTY_LINE_NAME_RESERVED" and the next number, counted from 1.
  std::string auto_line_name();

  /// Has calls forget what comes from a row or those behind it.
  void forget_rows(int32_t first);

  std::optional<uint64_t> planned_layout;  ///< of the table that `Plan` was made for last
  /// How many rows there were when a run came to its end; 0 once what it has left may be touched
  /// otherwise than by intake and the next run.
  int32_t rows_of_last_run = 0;
  bool may_remember = true;  ///< its calls may carry anything from bar to bar
  /// A field that it reads may be a column of its own: every bar is worked out anew.
  bool shares_columns = false;
  std::vector<Variable*> remembering_calls;  ///< those with a memory
  std::vector<Variable*> statement_list;     ///< what the driver runs, in order
  std::vector<Variable*> variable_list;      ///< every compiled variable in order of creation
  std::vector<Variable*> reserved_list;      ///< fields and references; first in the hidden names
  /// Variables without a column by their normalised text, for the host to read by argument id.
  std::map<std::string, Variable*, std::less<>> argument_variables;

  std::map<std::string, double, std::less<>>
      constants;  ///< CONST statements and parameter defaults
  std::unordered_map<std::string, LineModel> line_models;

  std::set<int32_t> extra_field_set;                  ///< ids of the fields that the script reads
  std::map<int32_t, std::string> cross_security_map;  ///< column id to the key of a reference
  std::map<int32_t, std::string> cross_period_map;
  std::map<int32_t, std::string> realtime_map;
  std::set<std::string, std::less<>> invoked_functions;
  ShapeManagement shapes;

  int32_t max_period_count = 0;
  uint8_t auto_color_counter = 0;
  int32_t empty_line_counter = 0;
  bool needs_extra_data = false;
  bool needs_trade_day = false;
  bool contains_notice = false;
  bool looks_ahead = false;
  bool sets_variables = false;  ///< it changes its constants while it runs

 private:
  std::vector<std::unique_ptr<Variable>> variables_;
  NameIndex reserved_index_;
  NameIndex compiled_index_;
  NameIndex field_index_;   ///< of the compiled variables that are fields
  NameIndex column_index_;  ///< of those with a column or an argument id
  std::unordered_map<uint32_t, std::vector<Variable*>> by_column_;
};

}  // namespace quor
