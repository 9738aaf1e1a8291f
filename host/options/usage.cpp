#include "usage.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "../nearest.h"

namespace quor_host {
namespace {

/// What to write for an option whose value is missing or wrong.
struct OptionExample {
  std::string_view option;
  std::string_view example;
};

constexpr OptionExample option_examples[] = {
    {"--bars", "--bars FILE.csv, or --bars - for bars from a pipe"},
    {"--out", "--out FILE.svg or --out FILE.png"},
    {"--last", "--last 20"},
    {"--from", "--from 0"},
    {"--set", "--set N=5"},
    {"--params", "--params FILE.json"},
    {"--lines", "--lines FILE.json"},
    {"--period",
     "--period 5min, 15s, 2hour, day, week, month, quarter, year or a code such as 0x3005"},
    {"--code", "--code 600000"},
    {"--market", "--market USHA"},
    {"--timezone", "--timezone UTC+08:00"},
    {"--extra", "--extra MINPRICE=0.01"},
    {"--calendar", "--calendar FILE.json"},
    {"--reference", "--reference 600000=FILE.csv"},
    {"--column", "--column close='Adj Close'"},
    {"--columns", "--columns A,B"},
    {"--delimiter", "--delimiter tab"},
    {"--where", "--where 'BUY=1'"},
    {"--sort", "--sort NAME"},
    {"--jobs", "--jobs 2"},
    {"-e", "-e 'A:MA(C,5);'"},
};

std::string_view example_of(std::string_view option) {
  const auto* const row = std::ranges::find(option_examples, option, &OptionExample::option);
  return row == std::end(option_examples) ? std::string_view() : row->example;
}

std::string quoted(const std::string& text) { return "'" + text + "'"; }

std::vector<std::string> command_names(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

std::vector<std::string> option_names(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

/// The command that the arguments name; null if they name none.
const CLI::App* command_of(const CLI::App& app, const std::vector<std::string>& arguments) {
  for (const CLI::App* command : app.get_subcommands({})) {
    if (!arguments.empty() && arguments.front() == command->get_name()) return command;
  }
  return nullptr;
}

std::string list(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

bool is_script_path(std::string_view text) { return text.find('.') != std::string_view::npos; }

std::string explain_command(const CLI::App& app, const std::vector<std::string>& arguments) {
  const std::vector<std::string> names = command_names(app);
  const auto word = std::ranges::find_if(
      arguments, [](const std::string& text) { return !text.starts_with('-'); });
  if (word == arguments.end()) {
    return "no command: write one of " + list(names) + ", as in quor check SCRIPT.quor";
  }
  if (is_script_path(*word)) {
    return quoted(*word) + " is no command; to check a script write quor check " + *word;
  }
  const std::string meant = nearest(*word, names);
  return quoted(*word) + " is no command; " +
         (meant.empty() ? "write one of " + list(names) : "did you mean " + meant + "?");
}

/// The first option that the command doesn't know, without its value; empty if it knows all.
std::string unknown_option(const CLI::App& command, const std::vector<std::string>& arguments) {
  const std::vector<std::string> names = option_names(command);
  for (const std::string& argument : arguments) {
    std::string name = argument.substr(0, argument.find('='));
    if (name.starts_with("--") && std::ranges::find(names, name) == names.end()) return name;
  }
  return {};
}

/// The text for an argument that nothing takes.
std::string explain_extra(const CLI::App& command, const std::vector<std::string>& arguments) {
  const std::string option = unknown_option(command, arguments);
  if (option.empty()) {
    return "one argument too many; a text with blanks or signs such as ; and ( stands in quotes";
  }
  const std::string meant = nearest(option, option_names(command));
  return command.get_name() + " has no option " + option +
         (meant.empty() ? "" : "; did you mean " + meant + "?");
}

/// The option that the error's text names.
std::string option_in(const CLI::App& command, const std::string& text) {
  for (const std::string& name : option_names(command)) {
    const size_t at = text.find(name);
    if (at == std::string::npos || (at > 0 && text[at - 1] != ' ')) continue;
    const size_t behind = at + name.size();
    if (behind == text.size() || text[behind] == ' ' || text[behind] == ':') return name;
  }
  return {};
}

std::string_view fault_of(const CLI::ParseError& error) {
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) return " is missing";
  if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) return ": that is no number";
  return ": its value is missing";
}

std::string explain_option(const CLI::App& command, const CLI::ParseError& error) {
  std::string text = error.what();
  const std::string option = option_in(command, text);
  const std::string_view example = example_of(option);
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    constexpr std::string_view excludes = " excludes ";
    const size_t at = text.find(excludes);
    return text.substr(0, at) + " and " + text.substr(at + excludes.size()) +
           " don't go together: give one of them";
  }
  if (text.find(": At Most 1 ") != std::string::npos) return option + " is given twice";
  const bool tells_itself = dynamic_cast<const CLI::ValidationError*>(&error) != nullptr;
  if (tells_itself || example.empty()) return text;
  return option + std::string(fault_of(error)) + "; write " + std::string(example);
}

}  // namespace

std::string explain(const CLI::App& app, const CLI::ParseError& error,
                    const std::vector<std::string>& arguments) {
  const CLI::App* const command = command_of(app, arguments);
  if (command == nullptr) {
    const std::string meant = nearest(unknown_option(app, arguments), option_names(app));
    return meant.empty() ? explain_command(app, arguments) : explain_extra(app, arguments);
  }
  // A mistyped option may be the one that is missing.
  const bool is_extra = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr ||
                        !unknown_option(*command, arguments).empty();
  const std::string text =
      is_extra ? explain_extra(*command, arguments) : explain_option(*command, error);
  return text + "\nquor " + command->get_name() + " --help tells more";
}

}  // namespace quor_host
