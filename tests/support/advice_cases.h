// Scripts with what there is to say about them, as text that needs no C++.
//
//   == typing errors               a group; blocks below it are parted by blank lines, settings
//                                  right below its name hold for all of them
//   @params N=5 M=-1               parameter defaults of a block
//   @period 0x4000                 its period code; five minutes by default
//   @run 20                        runs it over that many bars, one a day, with prices only
//   @hours 20                      the same with one bar an hour
//   @supply calendar UNIT          what the host has when the script asks, or nothing
//   A:EMMA(C,12);                  the script; \t, \r, \n and \\ are a tab, line ends, a backslash
//   > 1:3-6 error 2: nothing defines EMMA; did you mean EMA?
//
// A finding is its line, first and last column, severity, the library's code for an error, sentence
// and suggestion; "-" stands for no place.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "advice/advice.h"

namespace quor_test {

struct AdviceCase {
  std::string group;
  std::string parameters;  ///< JSON
  uint32_t period = 0x3005;
  size_t bars = 0;  ///< 0: the script isn't run
  bool is_hourly = false;
  std::optional<quor_advice::Supply> supply;
  std::string script;
  std::vector<std::string> findings;
};

void PrintTo(const AdviceCase& advice_case, std::ostream* out);

std::vector<AdviceCase> load_advice_cases(const std::string& path);

class TestHost;

/// The library's report as it is.
std::string report_of(const TestHost& host, std::string_view script, std::string_view parameters);

/// Compiles, runs if the case says so, and asks for advice. What that compiles besides is counted.
std::vector<quor_advice::Finding> findings_of(const AdviceCase& advice_case,
                                              size_t* compiled_bytes = nullptr);

/// A finding as it stands in the files, without the "> " in front.
std::string text_of(const quor_advice::Finding& finding);

/// All findings of a script that is only compiled, one a line.
std::string findings_text(std::string_view script, std::string_view parameters = "");

}  // namespace quor_test
