#include "functions/call_memory.h"

#include <algorithm>

#include "tables/field_table.h"
#include "tables/word_set.h"

namespace quor {
namespace {

/// Words whose value at a bar depends on nothing but their arguments and fields at that bar and at
/// bars before it, whatever was evaluated in between; what they keep lies in columns of the call
/// and its arguments. Missing are words that draw lots, read the clock or the host, follow the
/// number of rows, look ahead, read the column of their statement, or keep a state in their call's
/// `value`.
constexpr std::string_view without_state[] = {
    "ABS",         "ACOS",          "ASIN",       "ATAN",       "COS",      "SIN",
    "TAN",         "EXP",           "LN",         "LOG10",      "SQRT",     "CEILING",
    "FLOOR",       "INTPART",       "FRACPART",   "REVERSE",    "SQUARE",   "CUBE",
    "SIGN",        "POW",           "MOD",        "LOG",        "ROUND",    "NUMPOW",
    "NORMPDF",     "MAX",           "MIN",        "MAX1",       "MIN1",     "NOT",
    "ISNULL",      "BETWEEN",       "RANGE",      "NULL",       "DRAWNULL", "ISUP",
    "ISDOWN",      "ISEQUAL",       "IF",         "IFELSE",     "IFF",      "IFN",
    "CROSS",       "CROSSUP",       "CROSSDOWN",  "MA",         "EMA",      "EXPMA",
    "SMA",         "AMA",           "DMA",        "TMA",        "WMA",      "EMA2",
    "MEMA",        "EXPMEMA",       "TRMA",       "SMMA",       "TSMA",     "ADMA",
    "HHV",         "LLV",           "HHVBARS",    "LLVBARS",    "HV",       "LV",
    "SUM",         "COUNT",         "STD",        "STDP",       "VAR",      "VARP",
    "DEVSQ",       "AVEDEV",        "KURTOSIS",   "SLOPE",      "FORCAST",  "COVAR",
    "CORRELATION", "COEFFICIENTR",  "HARMEAN",    "PERCENTILE", "MV",       "SORT",
    "SORTPOS",     "REF",           "GET",        "VALUEWHEN",  "BARPOS",   "BARSCOUNT",
    "BARSLAST",    "BARSLASTCOUNT", "BARSSINCEN", "CONDBARS",   "SUMBARS",  "NEWHBARS",
    "NEWLBARS",    "NEWHBARS1",     "NEWLBARS1",  "EVERY",      "EXIST",    "NDAY",
    "UPNDAY",      "DOWNNDAY",      "LAST",
};
constexpr WordSet steady_words(without_state);

/// Words that look ahead or follow the number of rows unless their arguments from `first` on are
/// numbers and not negative.
struct PeriodRule {
  std::string_view word;
  size_t first;
};
constexpr PeriodRule period_rules[] = {
    {"REF", 1},      {"EVERY", 1}, {"EXIST", 1}, {"UPNDAY", 1},
    {"DOWNNDAY", 1}, {"NDAY", 2},  {"LAST", 1},
};

/// Words that come to a bar some bars later: as many as the argument at a position says, or one.
struct LagRule {
  std::string_view word;
  size_t argument;  ///< 0 for one bar
};
constexpr LagRule lag_rules[] = {
    {"REF", 1}, {"LAST", 2}, {"HV", 0}, {"LV", 0}, {"NEWHBARS1", 0}, {"NEWLBARS1", 0},
};

template <typename Rule, size_t count>
const Rule* find_rule(const Rule (&rules)[count], std::string_view word) {
  const auto rule = std::ranges::find(rules, word, &Rule::word);
  return rule == std::end(rules) ? nullptr : rule;
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
    if (call.function == nullptr || !steady_words.contains(call.function_word)) return false;
    const PeriodRule* rule = find_rule(period_rules, call.function_word);
    if (rule != nullptr && !has_fixed_periods(call, rule->first)) return false;
    note_unnamed_fields(*call.function);
    const int64_t lag = lag_;
    lag_ += own_lag(call);
    const bool steady = std::ranges::all_of(call.arguments, [this](const Variable* argument) {
      return argument != nullptr && is_steady(*argument);
    });
    lag_ = lag;
    return steady;
  }

  static bool has_fixed_periods(const Variable& call, size_t first) {
    const auto& arguments = call.arguments;
    return arguments.size() > first &&
           std::all_of(arguments.begin() + static_cast<ptrdiff_t>(first), arguments.end(),
                       [](const Variable* argument) {
                         return argument != nullptr && argument->kind == VariableKind::number &&
                                argument->value >= 0.0 && to_int(argument->value) >= 0;
                       });
  }

  static int64_t own_lag(const Variable& call) {
    const LagRule* rule = find_rule(lag_rules, call.function_word);
    if (rule == nullptr || rule->argument >= call.arguments.size()) return 0;
    return rule->argument == 0 ? 1 : to_int(call.arguments[rule->argument]->value);
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
  bool steady = !call.pool.sets_variables;
  for (size_t i = 0; i < count && steady; ++i) steady = inspection.is_steady(call.argument(i));
  std::vector<int32_t> columns = inspection.columns();
  std::ranges::sort(columns);
  columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
  sources_.clear();
  // A new source counts as changed.
  for (const int32_t column : columns) sources_.push_back({column, table.changes(column) - 1});
  steady_ = steady;
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
