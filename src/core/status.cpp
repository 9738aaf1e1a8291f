#include "core/status.h"

#include "text/numbers.h"
#include "text/strings.h"

namespace quor {
namespace {
constexpr std::string_view line_mark = "ErrLine.";
}

void append_error(std::string& error, std::string_view message, int32_t line) {
  error.append(message);
  error.append(line_mark);
  append_integer(error, line);
}

ErrorParts split_error(std::string_view error) {
  const auto pieces = split(error, line_mark);
  if (pieces.size() == 1) return {{}, pieces[0]};
  if (pieces.size() == 2) return {pieces[0], pieces[1]};
  return {error, {}};
}

}  // namespace quor
