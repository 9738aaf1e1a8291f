// Numbers that only the market knows, as the user gives them for a script.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "advice/advice.h"

namespace quor_host {

/// By their keys, in capitals: MINPRICE, UNIT, SHARECOUNTPERUNIT.
using MarketConstants = std::map<std::string, double>;

/// Those given as "KEY=NUMBER". Throws HostError for any other text or key.
MarketConstants market_constants(const std::vector<std::string>& texts);

/// One text for each that the script doesn't read.
std::vector<std::string> idle_constants(const std::vector<std::string>& texts,
                                        const quor_advice::ScriptNames& names);

}  // namespace quor_host
