// Test vectors: scripts with bars and expected values, as text that needs no C++.
//
//   case a name, unique in its file
//   script A:MA(C,3);              once per source line
//   params N=5 M=1.5               parameter defaults
//   info 0x4000 600000 USHA        period code, security, market ("-" for an empty one)
//   keys 20240102000000 ...        row keys, one per bar; by default consecutive ones
//   rows C 1 2 null 4              one field's values, oldest first
//   expect A null null 2 3         a line's values to the last bit; a quotient may stand for a
//   number near A 0.333333333333          within 1e-9 of the value, relative to values above 1
//   lookback 3                     MaxPeriodCount of the report
//   fields 8 9 11                  ExtraKLineFieldList, ascending
//   fails 7 0 MA                   code, line and message of a compile that fails
//   stops 2012 0 TEXT              the same for a run that fails
//   whole REASON                   the rules except this script from the incremental checks
//
// Text behind "#" at the start of a line tells how the numbers were derived. Each case also runs in
// chunks of 1, 2, 3 and 7 bars and with its last bar calculated twice, and must give the same.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {

struct Vector {
  std::string file;
  std::string name;
  std::string script;
  std::string parameters;                                ///< as JSON
  std::vector<std::pair<std::string, double>> defaults;  ///< the same as numbers
  uint32_t period = 0x4000;
  std::string security;
  std::string market;
  std::vector<int64_t> keys;
  Bars bars;
  std::vector<std::pair<std::string, Series>> expected;
  std::vector<std::pair<std::string, Series>> near;
  int64_t look_back = -1;
  std::vector<int64_t> fields;
  bool fails = false;
  bool stops = false;
  int64_t code = 0;
  int64_t line = 0;
  std::string message;
  bool whole_run_only = false;
};

/// Names the case in a failure.
void PrintTo(const Vector& vector, std::ostream* out);

/// The vectors of one file.
std::vector<Vector> vectors_of(const std::string& path);

/// All vectors of all files, in order of their names.
std::vector<Vector> load_vectors();

}  // namespace quor_test
