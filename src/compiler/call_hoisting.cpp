#include "compiler/call_hoisting.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "compiler/expressions.h"
#include "compiler/statement_text.h"
#include "compiler/tokenizer.h"
#include "core/lowering.h"
#include "core/status.h"
#include "drawing/colour_text.h"
#include "tables/style_table.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "vocabulary/function_sets.h"
#include "vocabulary/registry.h"

namespace quor {
namespace {

bool is_capital(char c) { return c >= 'A' && c <= 'Z'; }

/// The name that the statement declares is no call, even if it is a function word, and is refused
/// later.
std::string_view declared_name(std::string_view text) {
  const Declaration declaration = split_declaration(text);
  return declaration.declares() ? declaration.name : std::string_view();
}

bool names_reserved_field(const DataPoolCenter& pool, const BaseFunc& function) {
  return !function.traits().has(hides_field) &&
         pool.script.find_reserved(function.name()) != nullptr;
}

/// Where parentheses close, found without walking the text anew for every word.
class Parentheses {
 public:
  explicit Parentheses(std::string_view text) : depth_before_(text.size() + 1) {
    int depth = 0;
    for (size_t at = 0; at < text.size(); ++at) {
      depth_before_[at] = depth;
      if (text[at] == '(') ++depth;
      if (text[at] == ')') closings_[--depth].push_back(at);
    }
    depth_before_[text.size()] = depth;
  }

  /// The ")" that brings a count that starts with 0 at `from` back from 1 to 0.
  std::optional<size_t> closing_behind(size_t from) const {
    const auto level = closings_.find(depth_before_[from]);
    if (level == closings_.end()) return std::nullopt;
    const auto closing = std::ranges::lower_bound(level->second, from);
    if (closing == level->second.end()) return std::nullopt;
    return *closing;
  }

 private:
  std::vector<int> depth_before_;                          ///< by position
  std::unordered_map<int, std::vector<size_t>> closings_;  ///< by the depth behind them, ascending
};

/// Where a call of `word` starts: its first occurrence at or behind `from` that isn't the tail of a
/// longer word. A bare word is found wherever it stands.
size_t find_call_start(std::string_view text, std::string_view word, size_t from) {
  size_t found = text.find(word, from);
  if (BareFunctionSet().contains(word)) return found;
  while (found != std::string_view::npos && found > 1 && is_capital(text[found - 1])) {
    found = text.find(word, found + 1);
  }
  return found;
}

/// The same as `Parentheses` has, for a text that is asked for few places.
std::optional<size_t> closing_behind(std::string_view text, size_t from) {
  int depth = 0;
  for (size_t at = from; at < text.size(); ++at) {
    if (text[at] == '(') ++depth;
    if (text[at] == ')' && --depth == 0) return at;
  }
  return std::nullopt;
}

/// The extent of a call, as `find_call` tells it, by a function that tells where the parentheses
/// behind a place close.
template <typename Closing>
bool locate_call(std::string_view text, std::string_view word, size_t from, const Closing& closes,
                 size_t& start, size_t& end) {
  const size_t found = find_call_start(text, word, from);
  if (found == std::string_view::npos) return false;
  const bool is_bare = BareFunctionSet().contains(word);
  const auto closing = is_bare ? std::optional(found + word.size()) : closes(found);
  if (!closing) return false;
  start = found;
  end = *closing;
  return true;
}

/// A text whose calls give way to names one after the other. What lies in front of a call stays as
/// it is when the call goes, so that the next search for a word need not start from the front.
class ShrinkingText {
 public:
  explicit ShrinkingText(std::string& text) : text_(text), colons_(std::ranges::count(text, ':')) {}

  /// The first call of the word, or the first behind the name that the text declares where both
  /// hold the word: a name doesn't capture a call.
  bool find(std::string_view word, size_t& start, size_t& end) {
    size_t& from = first_places_.try_emplace(std::string(word)).first->second;
    if (!find_call(text_, word, from, start, end)) return false;
    from = start;
    const size_t name_end = end_of_name_with(word);
    return name_end == 0 || find_call(text_, word, name_end, start, end);
  }

  std::string_view between(size_t start, size_t end) const {
    return std::string_view(text_).substr(start, end - start);
  }

  void replace(size_t start, size_t end, std::string_view name) {
    colons_ -= std::ranges::count(between(start, end), ':');
    text_.replace(start, end - start, name);
    for (auto& [word, place] : first_places_) place = std::min(place, start);
  }

 private:
  /// 0 if the text has no name that holds the word, or the word nowhere behind it.
  size_t end_of_name_with(std::string_view word) const {
    if (colons_ == 0) return 0;
    const size_t colon = text_.find(':');
    if (colon != 0 && !contains(between(0, colon), word)) return 0;
    const auto pieces = split(text_, ":");
    if (pieces.size() != 2 || !contains(pieces[0], word) || !contains(pieces[1], word)) return 0;
    return static_cast<size_t>(pieces[1].data() - text_.data());
  }

  std::string& text_;
  ptrdiff_t colons_;
  std::map<std::string, size_t> first_places_;  ///< no call of the word starts in front of it
};

/// How deep calls nest in the text; parentheses of other sorts don't count.
int call_nesting(std::string_view text) {
  std::vector<int> open;
  int depth = 0;
  int greatest = 0;
  bool behind_word = false;
  for (const Token& token : tokenize(text)) {
    if (token.text == "(") {
      open.push_back(behind_word ? 1 : 0);
      depth += open.back();
      greatest = std::max(greatest, depth);
    } else if (token.text == ")" && !open.empty()) {
      depth -= open.back();
      open.pop_back();
    }
    const auto pieces = split_in_order(token.text, piece_separators);
    behind_word = !pieces.empty() && find_function(pieces.back()) != nullptr;
  }
  return greatest;
}

/// Hoists the calls of one text; arguments are texts of their own, one level deeper.
class Hoisting {
 public:
  Hoisting(CompileContext& context, int32_t line, std::string& error, int& output_count)
      : context_(context), line_(line), error_(error), output_count_(output_count) {}

  Status run(std::string& text, uint32_t parent_column_id) {
    // Each level reads its text anew, so a nesting beyond the limit is better refused at once.
    const bool too_deep =
        depth_ == 0 ? call_nesting(text) >= max_call_nesting : depth_ >= max_call_nesting;
    if (too_deep) refuse_nesting();
    std::vector<const BaseFunc*> calls;
    const Status status = collect(text, calls);
    if (failed(status)) return status;
    for (const BaseFunc* function : calls) {
      if (function->traits().has(draws)) ++output_count_;
    }
    if (output_count_ >= 2) return fail(Status::second_output, text);
    ShrinkingText rest(text);
    for (const BaseFunc* function : calls) {
      const Status call_status = hoist(rest, *function, parent_column_id);
      if (failed(call_status)) return call_status;
    }
    return Status::ok;
  }

 private:
  Status fail(Status status, std::string_view message) {
    append_error(error_, message, line_);
    return status;
  }

  /// The calls at the top level of the text, in order.
  Status collect(const std::string& text, std::vector<const BaseFunc*>& calls) {
    const std::string_view name = depth_ == 0 ? declared_name(text) : std::string_view();
    const Parentheses parentheses(text);
    size_t greatest_end = 0;
    for (const Token& token : tokenize(text)) {
      if (token.text == end_token) break;
      for (const std::string_view piece : split_in_order(token.text, piece_separators)) {
        if (!name.empty() && piece.data() == text.data() && piece == name) continue;
        const BaseFunc* function = find_function(piece);
        if (function == nullptr || names_reserved_field(context_.pool, *function)) continue;
        size_t start = 0;
        size_t end = 0;
        const auto closes = [&](size_t from) { return parentheses.closing_behind(from); };
        if (!locate_call(text, piece, token.position, closes, start, end)) {
          return fail(Status::parentheses_missing, piece);
        }
        if (end <= greatest_end) continue;
        greatest_end = end;
        calls.push_back(function);
      }
    }
    return Status::ok;
  }

  Status hoist(ShrinkingText& text, const BaseFunc& function, uint32_t parent_column_id) {
    const bool parentheses = !function.traits().has(bare);
    const std::string pattern = std::string(function.name()) + (parentheses ? "(" : "");
    size_t start = 0;
    size_t end = 0;
    if (!text.find(pattern, start, end)) return Status::ok;
    Variable& call = make_call(function);
    Status status = build_own_elements(call, parent_column_id);
    if (failed(status)) return status;
    if (parentheses) {
      const size_t first = start + pattern.size();
      status = compile_arguments(call, std::string(text.between(first, end)));
      if (failed(status)) return status;
      ++end;
    }
    text.replace(start, end, call.name);
    return Status::ok;
  }

  Variable& make_call(const BaseFunc& function) {
    DataPoolCenter& pool = context_.pool;
    Variable& call = pool.make_variable();
    call.kind = VariableKind::call;
    call.text = call.source_text = call.function_word = function.name();
    call.function_id = function.id();
    call.function = &function;
    call.line = line_;
    call.name = pool.script.next_hidden_name();
    if (function.traits().has(has_result_column)) {
      call.column_id = pool.table().take_auxiliary_id();
      call.column_index = pool.table().add_column(call.column_id);
    }
    pool.script.list(call);
    return call;
  }

  /// The word itself as an expression: what it looks up decides the flags and fields of the call.
  Status build_own_elements(Variable& call, uint32_t parent_column_id) {
    std::vector<MathElement> elements;
    bool whole_series = false;
    const Status status =
        build_elements(context_, {call.text, VariableKind::call, line_, parent_column_id},
                       whole_series, elements, error_);
    if (failed(status)) return status;
    set_elements(call, std::move(elements));
    call.whole_series = whole_series;
    return Status::ok;
  }

  Status compile_arguments(Variable& call, std::string text) {
    ++depth_;
    const Status status = run(text, call.column_id);
    --depth_;
    if (failed(status)) return status;
    const auto pieces = split(text, "@");
    call.arguments.resize(pieces.size(), nullptr);
    for (size_t i = 0; i < pieces.size(); ++i) {
      const Status argument_status = compile_argument(call, i, pieces[i]);
      if (failed(argument_status)) return argument_status;
    }
    return Status::ok;
  }

  Status compile_argument(Variable& call, size_t position, std::string_view piece) {
    std::string text;
    Status status = normalize_expression(context_, piece, false, line_, text, error_);
    if (failed(status)) return status;
    Variable* shared = find_shared(piece, text);
    if (shared != nullptr) shared->source_text = piece;
    Variable& argument = shared != nullptr ? *shared : make_argument(text);
    call.arguments[position] = &argument;

    std::vector<MathElement> elements;
    bool whole_series = false;
    status = build_elements(context_, {text, argument.kind, line_, call.column_id}, whole_series,
                            elements, error_);
    if (failed(status)) return status;
    // A plain word or a quoted text finds itself; it has no expression.
    const bool itself = elements.size() == 2 && elements[0].variable == &argument;
    set_elements(argument, itself ? std::vector<MathElement>() : std::move(elements));
    argument.whole_series = whole_series;
    if (whole_series) {
      call.whole_series = true;
      spread_whole_series(context_.pool, argument, argument.kind);
    }
    if (is_style_argument(text)) return Status::ok;
    double value = null_value;
    return context_.calculator.evaluate(argument, 0, true, error_, value);
  }

  /// The field, the name or the earlier argument that an argument is, by its text as written and as
  /// an expression has it; null if it is a variable of its own.
  Variable* find_shared(std::string_view piece, std::string_view text) const {
    const CompiledScript& script = context_.script;
    Variable* found = script.find_with_column(piece);
    if (found == nullptr || (found->reserved && found->name == text)) return found;
    // A constant of the name goes before it, and period and market may change a field word.
    if (!found->reserved) return script.constants.contains(piece) ? nullptr : found;
    return script.find_variable(text, [text](const Variable& field) {
      return field.reserved && field.name == text && field.column_id != no_column;
    });
  }

  Variable& make_argument(const std::string& text) {
    DataPoolCenter& pool = context_.pool;
    Variable& argument = pool.make_variable();
    argument.line = line_;
    argument.text = text;
    argument.name = pool.script.next_hidden_name();
    const auto number = to_number(text);
    argument.kind = number ? VariableKind::number : VariableKind::expression;
    argument.value = number.value_or(0.0);
    pool.script.list(argument);
    if (number) return argument;
    const auto [entry, added] = context_.script.argument_variables.try_emplace(text, &argument);
    argument.column_id =
        added ? ~static_cast<uint32_t>(pool.script.hidden_name_count()) : entry->second->column_id;
    pool.script.note_column(argument);
    return argument;
  }

  CompileContext& context_;
  int32_t line_;
  std::string& error_;
  int& output_count_;
  int depth_ = 0;
};

}  // namespace

bool find_call(std::string_view text, std::string_view word, size_t from, size_t& start,
               size_t& end) {
  const auto closes = [text](size_t place) { return closing_behind(text, place); };
  return locate_call(text, word, from, closes, start, end);
}

Status hoist_calls(CompileContext& context, std::string& text, int32_t line,
                   uint32_t parent_column_id, std::string& error, int& output_count) {
  return Hoisting(context, line, error, output_count).run(text, parent_column_id);
}

bool is_style_argument(std::string_view text) {
  if (dash_style(text) || StyleWordSet.contains(text)) return true;
  if (text.starts_with("COLOR") && fixed_colour_text(text)) return true;
  const auto behind = [text](std::string_view word) {
    return text.substr(text.find(word) + word.size());
  };
  if (contains(text, "LINETHICK")) {
    const std::string_view rest = behind("LINETHICK");
    const double thick = leading_number(rest);
    if (rest == "0" || (thick != 0.0 && thick >= 0.0 && thick <= 9.0)) return true;
  }
  if (!contains(text, "PRECIS")) return false;
  const int32_t digits = leading_integer(behind("PRECIS"));
  return digits >= 0 && digits <= 6;
}

}  // namespace quor
