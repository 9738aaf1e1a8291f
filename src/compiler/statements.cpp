#include "compiler/statements.h"

#include <algorithm>
#include <string>
#include <vector>

#include "compiler/call_hoisting.h"
#include "compiler/expressions.h"
#include "compiler/statement_text.h"
#include "compiler/tokenizer.h"
#include "core/lowering.h"
#include "core/status.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "vocabulary/registry.h"

namespace quor {
namespace {

/// A statement taken apart behind the hoisting of its calls.
struct Parts {
  bool declares = false;
  std::string name;  ///< what it declares
  std::string expression;
  std::string style;                    ///< of an output line; empty for everything else
  std::vector<std::string_view> items;  ///< of a lone call; views of the text taken apart
};

Parts take_apart(std::string_view work) {
  Parts parts;
  const Declaration declaration = split_declaration(work);
  if (!declaration.declares()) {
    const auto pieces = split(work, "@");
    parts.expression = pieces.size() < 2 ? work : pieces[0];
    if (pieces.size() >= 2) parts.items.assign(pieces.begin() + 1, pieces.end());
    return parts;
  }
  parts.declares = true;
  parts.name = declaration.name;
  const size_t mark = declaration.rest.find('@');
  parts.expression = declaration.rest.substr(0, mark);
  if (declaration.sign == ":=") return parts;
  const bool styled = mark != std::string_view::npos && mark + 1 < declaration.rest.size();
  parts.style = styled ? declaration.rest.substr(mark + 1) : "COLORAUTO";
  return parts;
}

/// Whether a text is of the form of hidden names, such as "~17".
bool is_hidden_name(std::string_view text) {
  return text.size() > 1 && text[0] == '~' &&
         text.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

/// The variable that a hidden name names by its index; null for any other text.
Variable* variable_of_hidden_name(const DataPoolCenter& pool, std::string_view text) {
  if (!is_hidden_name(text)) return nullptr;
  text.remove_prefix(1);
  const auto index = static_cast<size_t>(leading_integer(text));
  const size_t reserved = pool.script.reserved_list.size();
  if (index < reserved) return pool.script.reserved_list[index];
  return index < pool.script.hidden_name_count() ? pool.script.variable_list[index - reserved]
                                                 : nullptr;
}

/// Style items behind a lone call become further arguments of it.
void append_items(DataPoolCenter& pool, const Parts& parts, int32_t line) {
  Variable* call = variable_of_hidden_name(pool, parts.expression);
  if (call == nullptr || call->reserved) return;
  for (const std::string_view item : parts.items) {
    Variable& argument = pool.make_variable();
    argument.kind = VariableKind::expression;
    argument.text = item;
    argument.line = line;
    call->arguments.push_back(&argument);
  }
}

struct DrawingForm {
  std::string_view style;
  std::string_view front;  ///< of the drawing statement, up to the line's name
  std::string_view back;
  bool ends_in_name = false;
};

constexpr DrawingForm drawing_forms[] = {
    {"COLORSTICK", "STICKLINE1(1@", "@0@1@2)@TITLEVISIBLE@ISCOLORSTICK"},
    {"CIRCLEDOT", "DRAWTEXT(1@", "@CIRCLEDOT)@PARAM_", true},
    {"CROSSDOT", "DRAWTEXT(1@", "@CROSSDOT)@PARAM_", true},
    {"VOLSTICK", "STICKLINE1(C>O||(C=O&&C>REF(C@1))@", "@0@-1@1)@TITLEVISIBLE@ISVOLSTICK"},
    {"VOLUMESTICK", "STICKLINE1(C>O||(C=O&&C>REF(C@1))@", "@0@-1@1)@TITLEVISIBLE@ISVOLSTICK"},
};
constexpr DrawingForm polyline_form = {"", "POLYLINE(1@",
                                       "@COLORAUTO)@TITLEVISIBLE@PARTLINESUFFIX"};

/// The statement that draws a line; the first style item chooses its form.
std::string drawing_statement(const std::string& name, std::string_view style) {
  const auto items = split(style, "@");
  const auto* form = items.empty()
                         ? std::end(drawing_forms)
                         : std::ranges::find(drawing_forms, items[0], &DrawingForm::style);
  if (form == std::end(drawing_forms)) form = &polyline_form;
  std::string statement(form->front);
  statement += name;
  statement += form->back;
  if (form->ends_in_name) statement += name;
  for (const std::string_view item : items) {
    statement += '@';
    statement += item;
  }
  return statement;
}

class StatementCompiler {
 public:
  StatementCompiler(CompileContext& context, int32_t line, std::string& error)
      : context_(context), pool_(context.pool), line_(line), error_(error) {}

  Status run(std::string_view slot) {
    if (slot.empty()) return Status::ok;
    Variable& statement = pool_.make_variable();
    statement.line = line_;
    std::string work(slot);
    int output_count = 0;
    Status status = hoist_calls(context_, work, line_, no_column, error_, output_count);
    if (failed(status)) return status;

    const Parts parts = take_apart(work);
    append_items(pool_, parts, line_);
    // A statement that uses its own name can't be tried before the name exists.
    const bool check = work == slot && !uses_word(parts.expression, parts.name);
    status = normalize_expression(context_, parts.expression, check, line_, statement.text, error_);
    if (!failed(status) && parts.declares) status = declare(statement, parts.name);
    if (failed(status)) return status;
    pool_.script.list(statement);
    pool_.script.statement_list.push_back(&statement);
    if (!parts.style.empty()) {
      status = StatementCompiler(context_, line_, error_)
                   .run(drawing_statement(parts.name, parts.style));
      if (failed(status)) return status;
    }
    return statement.kind == VariableKind::undeclared ? finish(statement) : Status::ok;
  }

 private:
  static bool uses_word(std::string_view expression, std::string_view word) {
    const auto tokens = tokenize(expression);
    return !word.empty() && std::ranges::find(tokens, word, &Token::text) != tokens.end();
  }

  Status fail(Status status, std::string_view message) {
    append_error(error_, message, line_);
    return status;
  }

  Status declare(Variable& statement, const std::string& name) {
    if (find_function(name) != nullptr) return fail(Status::name_is_function, name);
    if (contains(name, "~")) return fail(Status::name_is_hidden, name);
    statement.column_id = column_of_text(statement);
    if (statement.column_id == no_column) {
      statement.column_id = pool_.table().take_auxiliary_id();
      pool_.table().add_column(statement.column_id);
    }
    statement.column_index = pool_.table().column_index_of(statement.column_id);

    Variable& named = pool_.make_variable();
    named.kind = VariableKind::field;
    named.name = pool_.script.next_hidden_name();
    named.text = name;
    named.line = line_;
    named.column_id = statement.column_id;
    named.column_index = statement.column_index;
    pool_.script.list(named);
    const bool added = context_.declared_names.try_emplace(name, named.column_id).second;
    return added ? Status::ok : fail(Status::name_taken, name);
  }

  /// A statement that only names something shares its column. A plain number makes the statement a
  /// constant.
  uint32_t column_of_text(Variable& statement) {
    if (is_hidden_name(statement.text)) {
      const Variable* named =
          pool_.script.find_variable(statement.text, [&statement](const Variable& variable) {
            return variable.name == statement.text && variable.column_id != no_column;
          });
      return named != nullptr ? named->column_id : no_column;
    }
    if (const auto number = to_number(statement.text)) {
      statement.kind = VariableKind::number;
      statement.value = *number;
    }
    return no_column;
  }

  Status finish(Variable& statement) {
    std::vector<MathElement> elements;
    bool whole_series = false;
    const Status status = build_elements(
        context_,
        {statement.text, VariableKind::undeclared, line_, statement.column_id, &statement},
        whole_series, elements, error_);
    if (failed(status)) return status;
    if (whole_series) {
      statement.whole_series = true;
      const CompiledScript& script = pool_.script;
      const auto& variables = statement.column_id == no_column
                                  ? script.variable_list
                                  : script.variables_of_column(statement.column_id);
      const auto first = std::ranges::find(variables, statement.column_id, &Variable::column_id);
      if (first != variables.end()) (*first)->whole_series = true;
    }
    set_elements(statement, std::move(elements));
    statement.kind = VariableKind::expression;
    return Status::ok;
  }

  CompileContext& context_;
  DataPoolCenter& pool_;
  int32_t line_;
  std::string& error_;
};

}  // namespace

Status compile_statement(CompileContext& context, std::string_view slot, int32_t line,
                         std::string& error) {
  return StatementCompiler(context, line, error).run(slot);
}

}  // namespace quor
