#include "functions/call_memory.h"

#include <algorithm>

#include "tables/word_set.h"

namespace quor {
namespace {

/// Words whose value at a bar depends on nothing but their arguments at that bar and at bars before
/// it, whatever was evaluated in between. Missing are words that draw lots, read the clock or the
/// host, follow the number of rows, read a bar's fields without naming them, or keep a state in
/// their call's `value`.
constexpr std::string_view without_state[] = {
    "ABS",       "ACOS",    "ASIN",     "ATAN",     "COS",
    "SIN",       "TAN",     "EXP",      "LN",       "LOG10",
    "SQRT",      "CEILING", "FLOOR",    "INTPART",  "FRACPART",
    "REVERSE",   "SQUARE",  "CUBE",     "SIGN",     "POW",
    "MOD",       "LOG",     "ROUND",    "MAX",      "MIN",
    "NOT",       "ISNULL",  "BETWEEN",  "RANGE",    "MAX1",
    "MIN1",      "NULL",    "DRAWNULL", "IF",       "IFELSE",
    "IFF",       "IFN",     "CROSS",    "CROSSUP",  "CROSSDOWN",
    "MA",        "EMA",     "EXPMA",    "SMA",      "AMA",
    "DMA",       "TMA",     "WMA",      "EMA2",     "HHV",
    "LLV",       "HHVBARS", "LLVBARS",  "SUM",      "STD",
    "STDP",      "VAR",     "VARP",     "AVEDEV",   "REF",
    "COUNT",     "EVERY",   "EXIST",    "BARSLAST", "BARSLASTCOUNT",
    "VALUEWHEN",
};
constexpr WordSet steady_words(without_state);

/// Words that count as steady with a second argument that is a number and not negative.
constexpr std::string_view with_period[] = {"REF", "EVERY", "EXIST"};
constexpr WordSet steady_with_period(with_period);

/// Walks over the parts of an argument and gathers the columns that they read and write.
class Inspection {
 public:
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

 private:
  static constexpr int most_parts = 100;

  void note_columns(const Variable& variable) {
    if (variable.column_index != -1) columns_.push_back(variable.column_index);
    for (const int32_t column : variable.aux_column_indexes) {
      if (column != -1) columns_.push_back(column);
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
    if (call.function == nullptr || !steady_words.contains(call.function_word)) return false;
    if (steady_with_period.contains(call.function_word) && !has_fixed_period(call)) return false;
    return std::ranges::all_of(call.arguments, [this](const Variable* argument) {
      return argument != nullptr && is_steady(*argument);
    });
  }

  static bool has_fixed_period(const Variable& call) {
    const Variable* period = call.arguments.size() == 2 ? call.arguments[1] : nullptr;
    return period != nullptr && period->kind == VariableKind::number && period->value >= 0.0;
  }

  int visited_ = 0;
  std::vector<int32_t> columns_;
};

}  // namespace

bool Dependencies::can_be_remembered(const Call& call, size_t count) {
  const DataTable& table = call.table();
  if (table.layout() == layout_) return steady_;
  Inspection inspection;
  bool steady = !call.pool.sets_variables;
  for (size_t i = 0; i < count && steady; ++i) steady = inspection.is_steady(call.argument(i));
  std::vector<int32_t> columns = inspection.columns();
  std::ranges::sort(columns);
  columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
  sources_.clear();
  // A new source counts as changed.
  for (const int32_t column : columns) sources_.push_back({column, table.changes(column) - 1});
  steady_ = steady;
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
