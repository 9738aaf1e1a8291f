// The live client of live.c in C++17, with the same printout.
//   tail -f bars.csv | live_cpp
#include <cmath>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

#include "quor_parser.hpp"

namespace {

/// "20240108093500,10,10.4,9.8,10.2,1200"; false for a line of another form.
bool read_row(const std::string& line, quor::Row& row) {
  constexpr uint32_t columns[] = {quor::open_column, quor::high_column, quor::low_column,
                                  quor::close_column, quor::volume_column};
  std::istringstream stream(line);
  row = {};
  stream >> row.key;
  for (const uint32_t column : columns) {
    char comma = '\0';
    double value = 0;
    if (!(stream >> comma >> value) || comma != ',') return false;
    row.cells.push_back({column, value});
  }
  return true;
}

void show_row(const quor::Parser& parser, const quor::Report& report, uint64_t key, uint32_t row) {
  std::printf("%llu", static_cast<unsigned long long>(key));
  for (const quor::Line& line : report.lines()) {
    const double value = parser.value(row, line.column);
    if (std::isnan(value)) {
      std::printf(" %s null", line.name.c_str());
    } else {
      std::printf(" %s %.2f", line.name.c_str(), value);
    }
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace

int main() {
  quor::Parser parser;
  parser.on_notice([](const quor::Notice&) { std::puts("up"); });
  parser.set_subject(quor::period_minutes + 5, "600000", "USHA");
  const quor::Report report =
      parser.compile("FAST:MA(C,2);SLOW:MA(C,3);CROSS(FAST,SLOW),NOTICE('up');");
  if (!report) return 1;
  quor::Row row;
  for (std::string line; std::getline(std::cin, line);) {
    if (!read_row(line, row)) {
      std::cerr << "no bar: " << line << '\n';
      continue;
    }
    parser.feed({row});
    const auto index = parser.row_of(row.key);
    if (!index || !parser.calculate(*index, true)) return 1;
    show_row(parser, report, row.key, *index);
  }
}
