#include "help.h"

#include <algorithm>
#include <map>
#include <ostream>

#include "advice/word_help.h"

namespace quor_host {
namespace {

constexpr size_t line_width = 92;

/// Words of a text, wrapped, with a margin in front of every line.
void print_wrapped(std::ostream& out, std::string_view text, size_t margin) {
  size_t used = margin;
  out << std::string(margin, ' ');
  while (!text.empty()) {
    const size_t blank = std::min(text.find(' '), text.size());
    if (used > margin && used + blank + 1 > line_width) {
      out << '\n' << std::string(margin, ' ');
      used = margin;
    } else if (used > margin) {
      out << ' ';
      ++used;
    }
    out << text.substr(0, blank);
    used += blank;
    text.remove_prefix(std::min(blank + 1, text.size()));
  }
  out << '\n';
}

}  // namespace

void print_words(std::ostream& out) {
  std::map<std::string_view, std::string> words;
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) {
    std::string& list = words[help.section];
    list += (list.empty() ? "" : " ") + std::string(help.word);
  }
  for (const auto& [section, list] : words) {
    out << section << '\n';
    print_wrapped(out, list, 2);
  }
}

bool print_word(std::ostream& out, std::string_view word) {
  const quor_advice::WordHelp* const help = quor_advice::find_word_help(word);
  if (help == nullptr) return false;
  out << help->form << '\n';
  print_wrapped(out, help->summary, 2);
  const auto print_item = [&out](std::string_view title, std::string_view text) {
    if (text.empty()) return;
    out << '\n' << title << '\n';
    print_wrapped(out, text, 2);
  };
  print_item("Arguments", help->arguments);
  print_item("First value and null", help->nulls);
  print_item("Example", help->example);
  return true;
}

std::vector<std::string> built_in_words() {
  std::vector<std::string> words;
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) words.emplace_back(help.word);
  return words;
}

}  // namespace quor_host
