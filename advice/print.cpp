// Findings as text: as compilers print them, and as JSON.
#include <array>
#include <charconv>
#include <utility>

#include "advice.h"
#include "letters.h"

namespace quor_advice {
namespace {

std::string_view severity_word(Severity severity) {
  return severity == Severity::error ? "error" : "warning";
}

/// The lines of a script, each without its end.
std::vector<std::string_view> lines_of(std::string_view script) {
  std::vector<std::string_view> lines;
  while (true) {
    const size_t end = script.find_first_of("\r\n");
    lines.push_back(script.substr(0, end));
    if (end == absent) return lines;
    script.remove_prefix(script.substr(end).starts_with("\r\n") ? end + 2 : end + 1);
  }
}

/// The first characters of a text.
std::string_view front(std::string_view text, size_t characters) {
  size_t size = 0;
  for (; characters > 0 && size < text.size(); --characters) {
    size += front_character(text.substr(size));
  }
  return text.substr(0, size);
}

std::string caret_line(std::string_view line, const Finding& finding) {
  const std::string_view before = front(line, finding.column - 1);
  std::string carets;
  // Tabs stay tabs, so that the caret stands right whatever their width.
  for (size_t i = 0; i < before.size(); i += front_character(before.substr(i))) {
    const std::string_view character = before.substr(i, front_character(before.substr(i)));
    carets += character == "\t" ? "\t" : std::string(width_of(character), ' ');
  }
  const size_t width = width_of(front(line.substr(before.size()), finding.length));
  return carets + '^' + std::string(width > 1 ? width - 1 : 0, '~');
}

std::string heading(const Finding& finding, std::string_view file) {
  std::string text(file);
  if (finding.line > 0)
    text += ':' + std::to_string(finding.line) + ':' + std::to_string(finding.column);
  text += ": " + std::string(severity_word(finding.severity)) + ": " + finding.sentence;
  if (finding.code != 0) text += " (code " + std::to_string(finding.code) + ')';
  if (!finding.suggestion.empty()) text += "; " + finding.suggestion;
  return text + '\n';
}

std::string json_string(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') json += '\\';
    if (static_cast<unsigned char>(c) >= 0x20) {
      json += c;
    } else {
      json += "\\u00";
      json += digits[static_cast<unsigned char>(c) >> 4U];
      json += digits[static_cast<unsigned char>(c) & 0xFU];
    }
  }
  return json + '"';
}

std::string json_object(const Finding& finding) {
  const std::array<std::pair<std::string_view, std::string>, 7> members = {{
      {"severity", json_string(severity_word(finding.severity))},
      {"line", std::to_string(finding.line)},
      {"column", std::to_string(finding.column)},
      {"length", std::to_string(finding.length)},
      {"code", std::to_string(finding.code)},
      {"sentence", json_string(finding.sentence)},
      {"suggestion", json_string(finding.suggestion)},
  }};
  std::string json;
  for (const auto& [key, value] : members) {
    json += (json.empty() ? "{" : ",") + json_string(key) + ':' + value;
  }
  return json + '}';
}

}  // namespace

std::string compiler_text(const std::vector<Finding>& findings, std::string_view script,
                          std::string_view file) {
  const auto lines = lines_of(script);
  std::string text;
  for (const Finding& finding : findings) {
    text += heading(finding, file);
    if (finding.line == 0 || finding.line > lines.size()) continue;
    const std::string_view line = lines[finding.line - 1];
    text += std::string(line) + '\n' + caret_line(line, finding) + '\n';
  }
  return text;
}

std::string json_text(const std::vector<Finding>& findings) {
  std::string json;
  for (const Finding& finding : findings)
    json += (json.empty() ? "[" : ",\n ") + json_object(finding);
  return json.empty() ? "[]" : json + ']';
}

}  // namespace quor_advice
