// What the user may say to several commands.
#pragma once

#include <string>
#include <vector>

#include "../input/bars.h"

namespace CLI {
class App;
}

namespace quor_host {

/// Of a script and of what it is about.
struct ScriptOptions {
  std::string path;  ///< "-" for the standard input
  std::string text;  ///< stands instead of the file
  std::string parameters_path;
  std::vector<std::string> settings;  ///< "NAME=NUMBER"
  std::string lines_path;
  std::string period;  ///< by name or as a code; empty if the bars tell it
  std::string security;
  std::string market;
  std::string time_zone = "UTC+08:00";
  std::vector<std::string> market_constants;  ///< "KEY=NUMBER"
  std::string calendar_path;
  bool is_trading = false;
  bool is_strict = false;  ///< warnings fail
  bool is_quiet = false;

  /// What messages call the script.
  std::string name() const { return path.empty() ? "-e" : path; }
};

/// Of bars and of what a script reads beside them.
struct BarOptions {
  std::string path;  ///< "-" for the standard input
  BarForm form;
  std::vector<std::string> references;  ///< "SOURCE|FIELD=FILE.csv"
  bool takes_forming = false;           ///< of longer periods the bar under way
};

/// Which lines of a script are shown.
struct LineOptions {
  std::vector<std::string> columns;  ///< by name; empty for those that are drawn
  bool all = false;
};

/// Options that change what a script is, in every command that compiles one.
void add_setting_options(CLI::App& command, ScriptOptions& options);
/// The script, as the first argument or as a text, of a command that takes one.
void add_script_options(CLI::App& command, ScriptOptions& options);
void add_script_text(CLI::App& command, ScriptOptions& options);
/// The code of the security, for commands about one.
void add_security_option(CLI::App& command, ScriptOptions& options);
/// The file of bars, and what every command that calculates takes of them.
void add_bar_path(CLI::App& command, BarOptions& options);
void add_bar_options(CLI::App& command, ScriptOptions& script, BarOptions& options);
void add_line_options(CLI::App& command, LineOptions& options);

}  // namespace quor_host
