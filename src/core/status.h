// Status numbers and the one form of an error text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quor {

/// 0 is success. A status is handed up unchanged and reaches the host as ErrCode.
enum Status : int32_t {
  status_ok = 0,
  status_undefined_argument = 1,
  status_undefined_name = 2,
  status_subject_missing = 3,
  status_operand_missing = 4,
  status_quote_open = 5,
  status_parentheses_missing = 6,
  status_argument_count = 7,
  status_signal_with_name = 8,
  status_reference_place = 9,
  status_reference_without_mark = 10,
  status_reference_without_code = 11,
  status_name_is_function = 12,
  status_name_is_hidden = 13,
  status_source_unfinished = 14,
  status_branch_as_argument = 15,
  status_variable_gone = 2000,
  status_bare_reference = 2001,
  status_realtime_field_unknown = 2002,
  status_sign_out_of_range = 2003,
  status_name_taken = 2004,
  status_zig = 2006,
  status_period_unit_unknown = 2007,
  status_period_multiple_refused = 2008,
  status_period_not_longer = 2009,
  status_field_unknown = 2010,
  status_short_form_text = 2011,
  status_bad_constant = 2012,
  status_bad_colour = 2013,
  status_second_output = 2014,
  status_notice_looks_ahead = 2015,
  status_signal_looks_ahead = 2016,
  status_exception = 4000,
};

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
