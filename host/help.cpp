#include "help.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <iostream>
#include <map>
#include <string_view>

#include "advice/code_help.h"
#include "advice/grammar.h"
#include "advice/topic_help.h"
#include "advice/word_help.h"
#include "advice/word_index.h"
#include "nearest.h"
#include "output/console.h"

namespace quor_host {
namespace {

/// Lines are as wide as the terminal, and no wider than is good to read.
size_t line_width() {
  constexpr size_t widest = 92;
  constexpr size_t narrowest = 30;
  return std::clamp(terminal_width().value_or(widest), narrowest, widest);
}

/// Words of a text, wrapped, with a margin in front of every line.
void print_wrapped(std::ostream& out, std::string_view text, size_t margin) {
  const size_t width = line_width();
  size_t used = margin;
  out << std::string(margin, ' ');
  while (!text.empty()) {
    const size_t blank = std::min(text.find(' '), text.size());
    if (used > margin && used + blank + 1 > width) {
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

/// All built-in words, section by section.
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

/// Form, arguments, null rule and example of a word; false if there is no such word.
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

/// Meaning and cure of an error's code; false if there is no such code.
bool print_code(std::ostream& out, const std::string& topic) {
  int64_t code = 0;
  const char* const end = topic.data() + topic.size();
  const auto [stop, error] = std::from_chars(topic.data(), end, code);
  const quor_advice::CodeHelp* const help = quor_advice::find_code_help(code);
  if (error != std::errc() || stop != end || help == nullptr) return false;
  out << "Code " << help->code << ": " << help->meaning << "\n\nWhat to do\n";
  print_wrapped(out, help->cure, 2);
  return true;
}

/// A topic such as fields; false if there is no such topic.
bool print_language_topic(std::ostream& out, std::string_view name) {
  const quor_advice::TopicHelp* const help = quor_advice::find_topic_help(name);
  if (help == nullptr) return false;
  print_wrapped(out, help->summary, 0);
  for (const quor_advice::TopicLine& line : help->lines) {
    out << '\n';
    print_wrapped(out, line.term, 2);
    print_wrapped(out, line.meaning, 6);
  }
  return true;
}

/// All codes with their meanings.
bool print_codes(std::ostream& out, std::string_view name) {
  if (name != "errors" && name != "codes" && name != "error") return false;
  for (const quor_advice::CodeHelp& help : quor_advice::code_help()) {
    print_wrapped(out, std::to_string(help.code) + ": " + std::string(help.meaning), 2);
  }
  return true;
}

/// Words by their meaning, and what a word of elsewhere is here; false if nothing is about it.
bool print_search(std::ostream& out, const std::string& text) {
  const std::string advice = quor_advice::word_from_elsewhere(text);
  if (!advice.empty()) print_wrapped(out, text + " is no word of the language; " + advice, 0);
  const auto words = quor_advice::words_about(text);
  if (words.empty()) return !advice.empty();
  out << (advice.empty() ? "" : "\n") << "Words about " << text << "\n";
  for (const std::string_view word : words) {
    const std::string_view summary = quor_advice::find_word_help(word)->summary;
    print_wrapped(out, std::string(word) + ": " + std::string(summary), 2);
  }
  return true;
}

std::vector<std::string> built_in_words() {
  std::vector<std::string> words;
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) words.emplace_back(help.word);
  return words;
}

/// False for what is neither a command nor a word nor a code; the text then says so.
bool print_topic(const CLI::App& app, const std::string& topic) {
  std::vector<std::string> known = built_in_words();
  for (const CLI::App* command : app.get_subcommands({})) {
    if (topic == command->get_name()) {
      std::cout << command->help(app.get_name());
      return true;
    }
    known.push_back(command->get_name());
  }
  if (print_word(std::cout, topic) || print_code(std::cout, topic)) return true;
  if (print_language_topic(std::cout, topic) || print_codes(std::cout, topic)) return true;
  for (const quor_advice::TopicHelp& help : quor_advice::topic_help())
    known.emplace_back(help.name);
  const std::string meant = nearest(topic, known);
  const bool is_misspelt = !meant.empty() && quor_advice::words_about(topic).empty() &&
                           quor_advice::word_from_elsewhere(topic).empty();
  if (!is_misspelt && print_search(std::cout, topic)) return true;
  std::cerr << "quor: '" << topic << "' is neither a function word nor a command; "
            << (meant.empty() ? "quor help lists them" : "did you mean " + meant + "?") << '\n';
  return false;
}

void print_overview(const CLI::App& app) {
  // `help` of a parsed program is that of its command.
  std::cout << app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal)
            << "\nWords of the language\n\n";
  print_words(std::cout);
  std::string topics;
  for (const quor_advice::TopicHelp& help : quor_advice::topic_help()) {
    topics += std::string(help.name) + ", ";
  }
  std::cout << "\nTopics\n\n";
  print_wrapped(std::cout, topics + "errors", 2);
}

}  // namespace

bool print_help(const CLI::App& app, const HelpOptions& options) {
  if (options.lists_words) {
    for (const std::string& word : built_in_words()) std::cout << word << '\n';
  } else if (options.prints_index) {
    std::cout << quor_advice::word_index();
  } else if (options.prints_grammar) {
    std::cout << quor_advice::textmate_grammar();
  } else if (options.topics.empty()) {
    print_overview(app);
  }
  // A topic of two words needs no quotes.
  std::string joined;
  for (const std::string& topic : options.topics) joined += (joined.empty() ? "" : " ") + topic;
  if (options.topics.size() > 1 && print_language_topic(std::cout, joined)) return true;
  bool all_known = true;
  for (const std::string& topic : options.topics) {
    if (&topic != &options.topics.front()) std::cout << '\n';
    all_known = print_topic(app, topic) && all_known;
  }
  return all_known;
}

}  // namespace quor_host
