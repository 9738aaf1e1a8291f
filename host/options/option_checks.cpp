#include "option_checks.h"

#include <algorithm>
#include <charconv>

#include "period.h"

namespace quor_host {

CLI::Validator whole_number(uint64_t least, uint64_t most) {
  const auto check = [least, most](std::string& text) -> std::string {
    const std::string given = text;
    uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && stop == end && number >= least && number <= most) {
      text = std::to_string(number);
      return {};
    }
    return "'" + given + "' is no whole number from " + std::to_string(least) +
           (most == UINT64_MAX ? " up" : " to " + std::to_string(most));
  };
  return {check, ""};
}

CLI::Validator some_text(const std::string& what) {
  const auto check = [what](const std::string& text) -> std::string {
    const bool is_blank = text.find_first_not_of(" \t\r\n") == std::string::npos;
    return is_blank ? "an empty text is no " + what : "";
  };
  return {check, ""};
}

CLI::Validator period() {
  const auto check = [](const std::string& text) -> std::string {
    if (parse_period(text)) return {};
    return "'" + text +
           "' is no period; write 5min, 15s, 2hour, day, week, month, quarter, year or a code such "
           "as 0x3005";
  };
  return {check, ""};
}

}  // namespace quor_host
