#include "market_constants.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>

#include "../errors.h"
#include "../text.h"

namespace quor_host {
namespace {

std::string key_of(const std::string& text) { return to_upper(text.substr(0, text.find('='))); }

}  // namespace

MarketConstants market_constants(const std::vector<std::string>& texts) {
  constexpr std::string_view keys[] = {"MINPRICE", "UNIT", "SHARECOUNTPERUNIT"};
  MarketConstants constants;
  for (const std::string& text : texts) {
    const size_t mark = text.find('=');
    const auto value = mark == std::string::npos ? std::nullopt : to_number(text.substr(mark + 1));
    if (!value || std::isnan(*value) || std::ranges::find(keys, key_of(text)) == std::end(keys)) {
      throw UsageError("--extra " + text +
                       ": write MINPRICE=NUMBER, UNIT=NUMBER or SHARECOUNTPERUNIT=NUMBER");
    }
    if (!constants.emplace(key_of(text), *value).second) {
      throw UsageError("--extra " + text + ": " + key_of(text) + " is given twice");
    }
  }
  return constants;
}

std::vector<std::string> idle_constants(const std::vector<std::string>& texts,
                                        const quor_advice::ScriptNames& names) {
  std::vector<std::string> idle;
  for (const std::string& text : texts) {
    if (std::ranges::find(names.words, key_of(text)) != names.words.end()) continue;
    idle.push_back("--extra " + text + ": the script doesn't read " + key_of(text));
  }
  return idle;
}

}  // namespace quor_host
