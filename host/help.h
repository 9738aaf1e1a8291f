// `quor help`: the words of the language and the commands of the program.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace quor_host {

/// What `quor help` is asked for; without anything it lists all words.
struct HelpOptions {
  std::vector<std::string> topics;  ///< words of the language, commands
  bool lists_words = false;         ///< one in a line
  bool prints_index = false;        ///< for the language reference
  bool prints_grammar = false;      ///< the grammar for editors
};

/// Prints it. False if a topic is neither a word nor a command, which is said.
bool print_help(const CLI::App& app, const HelpOptions& options);

}  // namespace quor_host
