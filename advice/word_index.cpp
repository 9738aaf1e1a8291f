#include "word_index.h"

#include <algorithm>

#include "word_help.h"

namespace quor_advice {
namespace {

/// The anchor of a heading.
std::string anchor_of(std::string_view title) {
  std::string anchor;
  for (const char c : title) {
    if (c == ' ') anchor += '-';
    if (c >= 'A' && c <= 'Z') anchor += static_cast<char>(c - 'A' + 'a');
    if ((c >= 'a' && c <= 'z') || c == '-') anchor += c;
  }
  return anchor;
}

std::string without_markup(std::string_view text) {
  std::string plain;
  for (const char c : text) {
    if (c == '*' || c == '<' || c == '_') plain += '\\';
    plain += c;
  }
  return plain;
}

/// "LOG(X) or LOG(X,B)" is two forms.
std::string linked_forms(const WordHelp& help) {
  constexpr std::string_view separator = " or ";
  const std::string link = "](#" + anchor_of(help.section) + ")";
  std::string linked;
  for (std::string_view rest = help.form; !rest.empty();) {
    const size_t end = std::min(rest.find(separator), rest.size());
    linked += (linked.empty() ? "[`" : " [`") + std::string(rest.substr(0, end)) + "`" + link;
    rest.remove_prefix(std::min(end + separator.size(), rest.size()));
  }
  return linked;
}

}  // namespace

std::string word_index() {
  std::string table = "| Word | |\n|---|---|\n";
  for (const WordHelp& help : word_help()) {
    table += "| " + linked_forms(help) + " | " + without_markup(help.summary) + " |\n";
  }
  return table;
}

}  // namespace quor_advice
