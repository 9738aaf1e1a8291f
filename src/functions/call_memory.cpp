#include "functions/call_memory.h"

#include <algorithm>

#include "core/call.h"
#include "tables/field_table.h"

namespace quor {
namespace {

/// Words whose values can be taken as known. A drawn record's columns want every evaluation.
bool can_be_taken_as_known(const Variable& call) {
  if (call.function == nullptr) return false;
  const Traits traits = traits_of(call);
  return traits.has(steady) && !traits.has_any(follows_settings | draws);
}

/// Walks over the parts of an argument and gathers the columns that they read and write.
class Inspection {
 public:
  explicit Inspection(const DataTable& table) : table_(table) {}

  bool is_steady(const Variable& variable) {
    // Shared arguments may make a small script a large tree.
    if (++visited_ > most_parts) return false;
    note_columns(variable);
    switch (variable.kind) {
      case VariableKind::field:
      case VariableKind::number:
        return true;
      case VariableKind::expression:
        return variable.text.starts_with('\'') || is_steady_expression(variable);
      case VariableKind::call:
        return is_steady_call(variable);
      default:
        return false;
    }
  }

  const std::vector<int32_t>& columns() const { return columns_; }
  /// How many bars late the part is that writes its columns last.
  int64_t lag() const { return greatest_lag_; }

 private:
  static constexpr int most_parts = 100;

  void note_columns(const Variable& variable) {
    const size_t before = columns_.size();
    note_column(variable.column_index);
    for (const int32_t column : variable.aux_column_indexes) note_column(column);
    const bool writes = columns_.size() > before && variable.kind != VariableKind::field;
    if (writes) greatest_lag_ = std::max(greatest_lag_, lag_);
  }

  void note_column(int32_t column) {
    if (column != -1) columns_.push_back(column);
  }

  void note_unnamed_fields(const BaseFunc& function) {
    for (const std::string_view word : function.required_fields()) {
      const auto id = reserved_field_id(word);
      if (id) note_column(table_.column_index_of(static_cast<uint32_t>(*id)));
    }
  }

  /// An expression that always has a value, so that no evaluation fails.
  bool is_steady_expression(const Variable& variable) {
    if (variable.program.ending != Ending::value) return false;
    return std::ranges::all_of(variable.elements, [this](const MathElement& element) {
      return element.variable == nullptr || is_steady(*element.variable);
    });
  }

  bool is_steady_call(const Variable& call) {
    if (!can_be_taken_as_known(call)) return false;
    note_unnamed_fields(*call.function);
    const int64_t lag = lag_;
    lag_ += lag_of(call);
    const bool all_steady = std::ranges::all_of(call.arguments, [this](const Variable* argument) {
      return argument != nullptr && is_steady(*argument);
    });
    lag_ = lag;
    return all_steady;
  }

  const DataTable& table_;
  int64_t lag_ = 0;
  int64_t greatest_lag_ = 0;
  int visited_ = 0;
  std::vector<int32_t> columns_;
};

}  // namespace

bool Dependencies::can_be_remembered(const Call& call, size_t count) {
  const DataTable& table = call.table();
  if (table.layout() == layout_) return steady_;
  Inspection inspection(table);
  steady_ = !call.script().sets_variables;
  for (size_t i = 0; i < count && steady_; ++i) steady_ = inspection.is_steady(call.argument(i));
  std::vector<int32_t> columns = inspection.columns();
  std::ranges::sort(columns);
  columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
  sources_.clear();
  // A new source counts as changed.
  for (const int32_t column : columns) sources_.push_back({column, table.changes(column) - 1});
  lag_ = inspection.lag();
  layout_ = table.layout();
  return steady_;
}

bool Dependencies::have_changed(const DataTable& table) const {
  return std::ranges::any_of(sources_, [&table](const Source& source) {
    return table.changes(source.column) != source.changes;
  });
}

void Dependencies::watch(DataTable& table, int32_t rows) {
  for (Source& source : sources_) {
    table.watch(source.column, rows);
    source.changes = table.changes(source.column);
  }
}

}  // namespace quor
