// Status numbers and the one form of an error text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quor {

/// How an evaluation or a step of a compile ended. It is handed up unchanged and reaches the host
/// as ErrCode, so that the numbers are part of the interface.
enum class [[nodiscard]] Status : int32_t{
    ok = 0,
    undefined_argument = 1,
    undefined_name = 2,
    subject_missing = 3,
    operand_missing = 4,
    quote_open = 5,
    parentheses_missing = 6,
    argument_count = 7,
    signal_with_name = 8,
    reference_place = 9,
    reference_without_mark = 10,
    reference_without_code = 11,
    name_is_function = 12,
    name_is_hidden = 13,
    source_unfinished = 14,
    branch_as_argument = 15,
    variable_gone = 2000,
    bare_reference = 2001,
    realtime_field_unknown = 2002,
    sign_out_of_range = 2003,
    name_taken = 2004,
    zig = 2006,
    period_unit_unknown = 2007,
    period_multiple_refused = 2008,
    period_not_longer = 2009,
    field_unknown = 2010,
    short_form_text = 2011,
    bad_constant = 2012,
    bad_colour = 2013,
    second_output = 2014,
    notice_looks_ahead = 2015,
    signal_looks_ahead = 2016,
    exception = 4000,
};

constexpr bool failed(Status status) { return status != Status::ok; }

/// The number that the host reads.
constexpr int32_t error_code(Status status) { return static_cast<int32_t>(status); }

/// For a word whose rule is to go on whatever the status.
constexpr void ignore_status(Status) {}

/// Appends the message, "ErrLine." and the line number to `error`.
void append_error(std::string& error, std::string_view message, int32_t line);

/// An error text taken apart for a report.
struct ErrorParts {
  std::string_view message;
  std::string_view line;
};

/// Cuts the text at "ErrLine.": two pieces are message and line, one piece is the line, three and
/// more leave the whole text as the message.
ErrorParts split_error(std::string_view error);

}  // namespace quor
