#include "core/call.h"

#include "text/numbers.h"

namespace quor {

std::string Call::argument_text(size_t position) const {
  const std::string& text = argument(position).text;
  if (text.starts_with('\''))
    return text.size() < 2 ? std::string() : text.substr(1, text.size() - 2);
  if (text == "CIRCLEDOT") return "\u25CF";
  if (text == "POINTDOT") return "\u00B7";
  if (text == "CROSSDOT") return "O";
  double value = null_value;
  ignore_status(evaluate(position, value));
  return fixed_text(value);
}

Status Call::fail(Status status, std::string_view suffix) const {
  append_error(error, variable.function_word + std::string(suffix), variable.line);
  return status;
}

Status Call::wrong_count() const { return fail(Status::argument_count); }

Status Call::check_count(size_t least, size_t most) const {
  return argument_count() >= least && argument_count() <= most ? Status::ok : wrong_count();
}

}  // namespace quor
