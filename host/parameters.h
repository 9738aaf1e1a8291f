// The numbers that the user sets for a script.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "advice/advice.h"

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

/// What keeps a number from having an effect that is set under a name, in capitals: "the script
/// doesn't read N"; empty if nothing does.
std::string idle_reason(const std::string& name, const quor_advice::ScriptNames& names);

/// The same for settings, one text for each that has no effect.
std::vector<std::string> idle_settings(const std::vector<std::string>& settings,
                                       const quor_advice::ScriptNames& names);

}  // namespace quor_host
