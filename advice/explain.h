// From a failure of the library to the place and the mistake in the script.
#pragma once

#include <optional>

#include "failure.h"
#include "reading.h"
#include "syntax.h"

namespace quor_advice {

/// What an explanation starts from.
struct Case {
  const Reading& reading;
  const Failure& failure;
  const Statement* statement;  ///< null if the library names none

  std::string text(const Token& token) const { return reading.text(place_of(token)); }
};

/// The mistake behind the failure; always a place and a sentence.
Problem explain(const Reading& reading, const Failure& failure);

// Parts of it; each gives nothing where it knows no better than the code's own words.
std::optional<Problem> explain_word(const Case& failed);           ///< 1, 2
std::optional<Problem> explain_open_quote(const Case& failed);     ///< 5
std::optional<Problem> explain_unfinished(const Case& failed);     ///< 14
std::optional<Problem> explain_reference(const Case& failed);      ///< 9 to 11, 2007 to 2010
std::optional<Problem> explain_parentheses(const Case& failed);    ///< 6
std::optional<Problem> explain_count(const Case& failed);          ///< 7
std::optional<Problem> explain_name(const Case& failed);           ///< 12, 13, 2004
std::optional<Problem> explain_named_signal(const Case& failed);   ///< 8
std::optional<Problem> explain_branch(const Case& failed);         ///< 15
std::optional<Problem> explain_short_form(const Case& failed);     ///< 3, 2011, 2012
std::optional<Problem> explain_constant(const Case& failed);       ///< 2002, 2003, 2006, 2013
std::optional<Problem> explain_second_output(const Case& failed);  ///< 2014
std::optional<Problem> explain_look_ahead(const Case& failed);     ///< 2015, 2016
std::optional<Problem> explain_exception(const Case& failed);      ///< 4000

/// A sign of another script in the statement, such as a full-width comma, outside quotes.
std::optional<Problem> find_foreign_sign(const Reading& reading, const Statement& statement);

/// Tokens that make up the words of a message of the library.
std::optional<Range> find_tokens(const Reading& reading, const Statement& statement,
                                 std::string_view message);

/// The first token of this text; null if there is none.
const Token* find_word(const Statement& statement, std::string_view word);

/// Advice to declare the name of a condition first, and to use it in front of the comma.
std::string in_two_statements(const Reading& reading, const Statement& statement);

/// Arguments of calls that will stop a calculation: negative periods, bounds of the parabolic
/// words.
std::optional<Problem> find_fatal_argument(const Reading& reading, const Statement& statement);

/// The first problem of form in the script, where the library names no statement.
std::optional<Problem> find_odd_form(const Reading& reading);

/// A text where the call wants a number, which reads as 0 there.
std::optional<Problem> find_misplaced_text(const Statement& statement, const Call& call);

}  // namespace quor_advice
