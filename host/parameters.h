// The numbers that the user sets for a script.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quor_host {

struct Setting {
  std::string name;  ///< in capitals, as scripts are read
  double value = 0.0;
};

/// The number set as "NAME=NUMBER". Throws HostError for any other text.
Setting parse_setting(const std::string& text);

/// The same of several, in their order. Throws for a name that is set twice, too.
std::vector<Setting> parse_settings(const std::vector<std::string>& texts);

/// The JSON array of parameters that the library takes: the file's text, if there is one, and
/// behind it the numbers set as "NAME=NUMBER", so that these win. Throws HostError for a file that
/// holds no such array and for a number that can't be read.
std::string parameters_json(const std::string& path, const std::vector<std::string>& settings);

/// What keeps settings from having an effect, or hides a word of the language, one text for each:
/// "--set N=2: the script doesn't read N".
std::vector<std::string> faults_of_settings(const std::vector<std::string>& settings,
                                            std::string_view script);

}  // namespace quor_host
