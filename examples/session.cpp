// The session of session.c in C++, with the same printout.
#include <cinttypes>
#include <cmath>
#include <cstdio>

#include "quor_parser.hpp"

namespace {

constexpr auto script =
    "AVG:MA(C,N),COLORRED,LINETHICK2;\n"
    "CROSS(C,AVG),NOTICE('up');\n";
constexpr auto parameters = R"([{"PARAM_NAME":"N","DEFAULT":2}])";

quor::Row bar(uint64_t key, double open, double high, double low, double close, double volume) {
  return {key,
          {{quor::open_column, open},
           {quor::high_column, high},
           {quor::low_column, low},
           {quor::close_column, close},
           {quor::volume_column, volume}}};
}

void show_log_line(const quor::LogLine& line) {
  std::fprintf(stderr, "log %u of instance %" PRIu64 ": %s\n", static_cast<unsigned>(line.level),
               line.tag, std::string(line.text).c_str());
}

void show_notice(const quor::Notice& notice) {
  std::printf("notice of instance %" PRIu64 ", column %" PRIu32 ": %s\n", notice.tag, notice.column,
              std::string(notice.cells).c_str());
}

void show_text(const char* title, const std::string& text) {
  std::printf("%s: %s\n", title, text.c_str());
}

void show_average(const char* title, const quor::Parser& parser) {
  std::printf("%s:\n", title);
  const std::vector<double> keys = parser.values(quor::key_column);
  const std::vector<double> average = parser.values("AVG");
  for (size_t row = 0; row < average.size(); ++row) {
    std::printf(std::isnan(average[row]) ? "  %.0f AVG null\n" : "  %.0f AVG %.2f\n", keys[row],
                average[row]);
  }
}

/// Calculates from a bar on that is new or has changed, with notices.
bool calculate_live(quor::Parser& parser, uint64_t key, const char* title) {
  if (!parser.calculate(parser.row_of(key).value_or(0), true)) return false;
  show_average(title, parser);
  return true;
}

bool run_session(quor::Parser& parser) {
  parser.set_tag(1);
  parser.set_subject(quor::period_day, "600000", "USHA");
  parser.on_notice(show_notice);
  const quor::Report report = parser.compile(script, parameters);
  show_text("report", report.text);

  parser.feed({bar(20240102000000, 12, 12.5, 11.5, 12, 300),
               bar(20240103000000, 12, 12, 9.5, 10, 400), bar(20240104000000, 10, 10, 9, 9, 100)});
  if (!report || !parser.calculate(0)) return false;
  show_average("history", parser);

  // The last bar changes while it forms: as a whole bar, or cell by cell.
  parser.feed({bar(20240104000000, 10, 11.5, 9, 11, 200)});
  if (!calculate_live(parser, 20240104000000, "forming bar, close 11")) return false;
  parser.set_cell(20240104000000, quor::close_column, 13);
  if (!calculate_live(parser, 20240104000000, "forming bar, close 13")) return false;

  parser.feed({bar(20240105000000, 13, 14, 13, 14, 100)});
  if (!calculate_live(parser, 20240105000000, "next bar")) return false;
  show_text("last two values",
            parser.values_json(*parser.column_of("AVG"), parser.row_count() - 1, 2));
  show_text("draw list", parser.shapes_json());
  return true;
}

/// The report names what is wrong and the statement, the first one being 0.
bool show_error() {
  quor::Parser parser;
  const quor::Report report = parser.compile("AVG:MA(C,N);TWICE:AVRAGE(C,N)*2;", parameters);
  show_text("report", report.text);
  return !report;
}

}  // namespace

int main() {
  const quor::Log log(show_log_line);
  quor::Parser parser;
  return run_session(parser) && show_error() ? 0 : 1;
}
