#include "compiler/expressions.h"

#include <algorithm>

#include "compiler/tokenizer.h"
#include "core/base_func.h"
#include "core/lowering.h"
#include "core/status.h"
#include "tables/field_table.h"
#include "tables/operator_table.h"
#include "tables/style_table.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "vocabulary/registry.h"

namespace quor {
namespace {

/// The text with the encoded minus signs written out.
std::string with_minus_signs(std::string_view text) {
  std::string plain(text);
  std::ranges::replace(plain, '?', '-');
  std::ranges::replace(plain, '^', '-');
  return plain;
}

std::string normalized_token(const CompileContext& context, std::string_view token) {
  const std::string_view word = adapt_field_word(context.pool, token);
  const auto constant = context.script.constants.find(word);
  if (constant != context.script.constants.end()) return fixed_text(constant->second);
  const Variable* named = context.script.find_field(word);
  return named != nullptr ? named->name : std::string(word);
}

/// Scans the conditions of a text, each on its own, to find words that mean nothing. A word that
/// names an earlier call must neither act nor leave anything in cells.
Status check_condition(CompileContext& context, std::string_view text, int32_t line,
                       std::string& error) {
  constexpr std::string_view separators[] = {"||", "&&"};
  for (const std::string_view piece : split_in_order(text, separators)) {
    std::string condition(piece);
    std::erase_if(condition, [](char c) { return c == '(' || c == ')'; });
    replace_all(condition, "!", "<>");
    bool whole_series = false;
    std::vector<MathElement> elements;
    Status status = build_elements(context, {condition, VariableKind::number, line}, whole_series,
                                   elements, error);
    if (failed(status)) return status;
    Program program = lower(elements);
    double result = 0.0;
    status = context.calculator.evaluate_elements(program, 0, true, line, error, result);
    if (failed(status)) return status;
  }
  return Status::ok;
}

void require_field(DataPoolCenter& pool, int32_t id) {
  pool.script.extra_field_set.insert(id);
  pool.table().add_column(static_cast<uint32_t>(id));
}

/// Notes the fields that a call reads without naming them.
void require_fields_of(DataPoolCenter& pool, const BaseFunc& function) {
  for (const std::string_view word : function.required_fields()) {
    const auto id = reserved_field_id(word);
    if (!id) continue;
    require_field(pool, *id);
    for (Variable* field : pool.script.reserved_list) {
      if (field->column_id == static_cast<uint32_t>(*id)) {
        field->column_index = pool.table().column_index_of(field->column_id);
      }
    }
  }
}

void note_use(CompileContext& context, const ElementRequest& request, Variable& used,
              bool& whole_series) {
  DataPoolCenter& pool = context.pool;
  if (request.column_id == no_column || used.column_id == request.column_id) {
    used.owner_column_id = no_column;
  } else {
    used.owner_column_id = request.column_id;
    used.owner_column_index = pool.table().column_index_of(request.column_id);
  }
  const BaseFunc* word = find_function(used.text);
  const Traits traits = word != nullptr ? word->traits() : Traits();
  whole_series |= used.whole_series || traits.has(in_full);
  pool.script.looks_ahead |= traits.has(told_ahead);
  pool.script.sets_variables |= traits.has(sets_arguments);
  if (used.function != nullptr) require_fields_of(pool, *used.function);
  const bool reads_field = request.caller_kind != VariableKind::call && used.reserved &&
                           !used.reference && reserved_field_id(used.text).has_value();
  if (reads_field) {
    require_field(pool, static_cast<int32_t>(used.column_id));
    used.column_index = pool.table().column_index_of(used.column_id);
  }
}

}  // namespace

std::string_view adapt_field_word(const DataPoolCenter& pool, std::string_view word) {
  if (word == "OPI") return pool.is_stock_market() ? "AMOUNT" : word;
  if (word != "AVPRICE" && word != "SETTLE") return word;
  const bool trading = pool.in_trading_time();
  const bool long_period = pool.is_long_period();
  if (word == "AVPRICE") {
    return !trading && !pool.is_stock_market() && long_period ? "SETTLE" : word;
  }
  return (trading && long_period) || pool.period.period_class == 1 ? "AVPRICE" : word;
}

Status normalize_expression(CompileContext& context, std::string_view text, bool check,
                            int32_t line, std::string& out, std::string& error) {
  std::string normalized;
  for (const Token& token : tokenize(text)) {
    if (token.text == end_token) continue;
    if (operator_code(token.text)) {
      normalized += token.text;
    } else {
      normalized += normalized_token(context, token.text);
    }
  }
  out += normalized;
  if (!check || text.starts_with('~') || StyleWordSet.contains(text) ||
      to_number(with_minus_signs(text)) || normalized != text) {
    return Status::ok;
  }
  return check_condition(context, normalized, line, error);
}

Status build_elements(CompileContext& context, const ElementRequest& request, bool& whole_series,
                      std::vector<MathElement>& elements, std::string& error) {
  for (const Token& token : tokenize_expression(request.text)) {
    if (const auto code = operator_code(token.text)) {
      elements.push_back({ElementKind::operation, static_cast<double>(*code), nullptr});
      continue;
    }
    if (const auto number = to_number(token.text)) {
      elements.push_back({ElementKind::number, *number, nullptr});
      continue;
    }
    Variable* used = context.script.find_variable(
        token.text, [&](const Variable& variable) { return &variable != request.owner; });
    if (used == nullptr && request.allow_unknown) continue;
    if (used == nullptr) {
      append_error(error, token.text, request.line);
      return Status::undefined_name;
    }
    note_use(context, request, *used, whole_series);
    elements.push_back({ElementKind::reference, 0.0, used});
  }
  elements.push_back({});
  return Status::ok;
}

void spread_whole_series(DataPoolCenter& pool, Variable& variable, VariableKind kind, int depth) {
  if (depth > max_nesting) refuse_nesting();
  if (kind == VariableKind::expression) {
    for (const MathElement& element : variable.elements) {
      if (element.variable != nullptr) {
        spread_whole_series(pool, *element.variable, element.variable->kind, depth + 1);
      }
    }
    return;
  }
  if (kind != VariableKind::field || variable.column_id == no_column) return;
  for (Variable* other : pool.script.variables_of_column(variable.column_id)) {
    // What was an argument may have got a data column since.
    if (other == &variable || other->column_id != variable.column_id) continue;
    if (other->kind == VariableKind::call) {
      for (Variable* argument : other->arguments) {
        if (argument != nullptr)
          spread_whole_series(pool, *argument, VariableKind::field, depth + 1);
      }
    } else {
      other->whole_series = true;
    }
  }
}

}  // namespace quor
