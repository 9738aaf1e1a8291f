// Files that the library takes as JSON. Of most faults in them it says nothing.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quor_host {

/// The text of a file with an array. Throws HostError for any other, which names the form.
std::string read_array(const std::string& path, std::string_view form);

/// Whether the text can stand inside another JSON text.
bool is_json(const std::string& text);

/// The names in settings of lines, an array as `read_array` gives it.
std::vector<std::string> names_of_settings(const std::string& json);

/// Names, in capitals, and numbers of an array of parameters as `read_array` gives it; elements
/// that lack one of the two are passed over, and of a name that comes twice the last counts.
std::vector<std::pair<std::string, double>> parameters_in(const std::string& json);

/// The text of a file with a trading calendar. Throws HostError for one that the library won't
/// take.
std::string read_calendar(const std::string& path);

}  // namespace quor_host
