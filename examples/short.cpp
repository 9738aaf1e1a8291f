// A whole session in 25 lines: compile, history, read, a new bar, what to draw.
#include <iostream>

#include "quor_parser.hpp"

int main() {
  quor::Parser parser;
  parser.on_notice([](const quor::Notice& notice) { std::cout << "up: " << notice.cells << '\n'; });
  parser.set_subject(quor::period_day, "600000", "USHA");
  const quor::Report report = parser.compile("AVG:MA(C,2); CROSS(C,AVG),NOTICE('up');");
  if (!report) {
    std::cerr << report.message << " in statement " << report.statement << '\n';
    return 1;
  }
  parser.feed({{20240102000000, {{quor::close_column, 12.0}}},
               {20240103000000, {{quor::close_column, 10.0}}}});
  if (!parser.calculate(0)) return 1;
  std::cout << "average: " << parser.values("AVG").back() << '\n';

  parser.feed({{20240104000000, {{quor::close_column, 13.0}}}});
  if (!parser.calculate(2, true)) return 1;
  std::cout << "average: " << parser.values("AVG").back() << '\n';
  for (const quor::Line& line : report.lines())
    std::cout << "draw " << line.name << " in " << line.colour << '\n';
}
