// A script read as its author means it: statements with their names, expressions, style items and
// calls, and what the names stand for.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "script.h"
#include "tokens.h"

namespace quor_advice {

/// Tokens of a statement from `begin` to in front of `end`.
struct Range {
  size_t begin = 0;
  size_t end = 0;

  bool empty() const { return begin == end; }
  size_t size() const { return end - begin; }
};

/// A word with a parenthesis behind it.
struct Call {
  size_t word = 0;  ///< index of its token
  size_t open = 0;
  size_t close = 0;              ///< `absent` if the parenthesis stays open
  std::vector<Range> arguments;  ///< empty ones too; none for "()"
};

enum class Form {
  empty,
  constant,    ///< CONST NAME:number
  assignment,  ///< NAME:=expression
  line,        ///< NAME:expression,items
  expression,  ///< expression,items
};

struct Statement {
  size_t number = 0;
  Form form = Form::empty;
  std::vector<Token> tokens;
  std::vector<size_t> partners;  ///< of each parenthesis the other one, else `absent`
  std::string name;              ///< in capitals and without blanks, empty if it declares nothing
  Range name_range;
  size_t colon = 0;  ///< index of the ":" or ":=" behind the name
  Range expression;
  std::vector<Range> items;  ///< what stands behind its commas outside parentheses
  std::vector<Call> calls;   ///< in the order of their words

  bool is_named() const { return form == Form::assignment || form == Form::line; }
  const Token* token(size_t index) const {
    return index < tokens.size() ? &tokens[index] : nullptr;
  }
};

/// Where in the script something stands.
struct Place {
  size_t begin = 0;
  size_t end = 0;
};

Place place_of(const Token& token);
Place place_of(const Statement& statement, Range range);

struct Reading {
  std::string_view script;
  ScannedScript scan;
  std::vector<Statement> statements;                     ///< by their number
  std::map<std::string, double, std::less<>> constants;  ///< parameters and CONST
  std::map<std::string, size_t, std::less<>> lines;      ///< name to the statement that declares it
  std::map<std::string, double, std::less<>> constant_lines;  ///< lines of one value
  std::set<size_t> stand_ins;  ///< statements written for faulty ones: their values tell nothing
  bool has_seconds = false;    ///< bars come by the second, so that TIME is HHMMSS

  std::vector<size_t> line_starts;  ///< offsets

  /// Line of an offset, from 1.
  size_t line_of(size_t offset) const;

  /// The text between the places, on one line.
  std::string text(Place place) const;
  std::string text(const Statement& statement, Range range) const;

  /// The value of an expression of numbers, constants and lines that are constant.
  std::optional<double> constant_value(const Statement& statement, Range range) const;

  /// The names of lines and constants.
  std::vector<std::string> names() const;
};

/// Parameters are a JSON text as the library takes it.
Reading read_script(std::string_view script, std::string_view parameters);

/// The same for a script that differs from the one before in the text at a place alone, which is as
/// long as it was.
Reading read_again(Reading before, std::string_view script, std::string_view parameters,
                   Place changed);

}  // namespace quor_advice
