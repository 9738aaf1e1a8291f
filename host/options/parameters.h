// The numbers that the user sets for a script.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quor_host {

struct Setting {
  std::string name;  ///< in capitals, as scripts are read
  double value = 0.0;
};

/// The number set as "NAME=NUMBER". Throws UsageError for any other text.
Setting parse_setting(const std::string& text);

/// The same of several, in their order. Throws for a name that is set twice, too.
std::vector<Setting> parse_settings(const std::vector<std::string>& texts);

/// The numbers of a file [{"PARAM_NAME":"N","DEFAULT":5}, ...], if there is one, and behind them
/// those set as "NAME=NUMBER", so that these win. Throws HostError for a file that holds no such
/// array and UsageError for a number that can't be read.
std::vector<std::pair<std::string, double>> parameters_of(const std::string& path,
                                                          const std::vector<std::string>& settings);

/// What keeps settings from having an effect, or hides a word of the language, one text for each:
/// "--set N=2: the script doesn't read N".
std::vector<std::string> faults_of_settings(const std::vector<std::string>& settings,
                                            std::string_view script);

}  // namespace quor_host
