#include "messages.h"

#include <iostream>

#include "console.h"

namespace quor_host {
namespace {

bool quiet = false;
bool hides_warnings = false;

constexpr std::string_view red = "\033[1;31m";
constexpr std::string_view magenta = "\033[1;35m";
constexpr std::string_view green = "\033[1;32m";
constexpr std::string_view bold = "\033[1m";
constexpr std::string_view plain = "\033[0m";

std::string in_colour(std::string_view text, std::string_view colour) {
  static const bool is_coloured = takes_colours();
  if (!is_coloured) return std::string(text);
  return std::string(colour).append(text).append(plain);
}

/// The text of one finding, "place: error: sentence", a line of the script, and marks below it.
std::string coloured(std::string_view text, quor_advice::Severity severity) {
  const bool is_error = severity == quor_advice::Severity::error;
  const std::string_view word = is_error ? ": error: " : ": warning: ";
  const size_t first_end = text.find('\n');
  const std::string_view first = text.substr(0, first_end);
  const size_t at = first.find(word);
  if (at == std::string_view::npos) return std::string(text);
  std::string shown = in_colour(first.substr(0, at + 1), bold) + ' ' +
                      in_colour(word.substr(2, word.size() - 3), is_error ? red : magenta) + ' ' +
                      std::string(first.substr(at + word.size()));
  std::string_view rest = text.substr(std::min(first_end, text.size()));
  const size_t marks = rest.find_last_of('^');
  const size_t marks_line = marks == std::string_view::npos ? marks : rest.rfind('\n', marks);
  if (marks_line == std::string_view::npos) return shown.append(rest);
  shown.append(rest.substr(0, marks_line + 1));
  rest.remove_prefix(marks_line + 1);
  const size_t end = rest.find_last_not_of('\n') + 1;
  return shown + in_colour(rest.substr(0, end), green) + std::string(rest.substr(end));
}

}  // namespace

void be_quiet(bool warnings_fail) {
  quiet = true;
  hides_warnings = !warnings_fail;
}
bool is_quiet() { return quiet; }

void note(const std::string& text) {
  if (!quiet) std::cerr << in_colour("quor:", bold) << ' ' << text << '\n';
}

void warn(const std::string& text) {
  if (hides_warnings) return;
  std::cerr << in_colour("quor:", bold) << ' ' << in_colour("warning:", magenta) << ' ' << text
            << '\n';
}

void tell_error(const std::string& text) {
  std::cerr << in_colour("quor:", red) << ' ' << text << '\n';
}

void show_findings(const std::vector<quor_advice::Finding>& findings, std::string_view script,
                   std::string_view name) {
  for (const quor_advice::Finding& finding : findings) {
    if (hides_warnings && finding.severity != quor_advice::Severity::error) continue;
    std::cerr << coloured(quor_advice::compiler_text({finding}, script, name), finding.severity);
  }
}

}  // namespace quor_host
