// What the user sees.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "engine/engine.h"

namespace quor_host {

/// A line that is shown.
struct ShownLine {
  std::string name;
  uint32_t column = 0;
};

/// The lines that a script draws; all of them if it draws none, or where `all` is asked for.
std::vector<ShownLine> drawn_lines(const quor::engine::Script& script, bool all);

/// A line of a script with its values at the bars that are shown, oldest bar first.
struct ShownValues {
  std::string name;
  std::span<const double> values;
};

/// The bars that are shown.
struct Table {
  std::vector<int64_t> keys;
  std::vector<ShownValues> lines;
};

/// What a run tells beside its lines, in JSON.
struct RunTexts {
  std::string report;
  std::string findings;
  std::vector<std::string> shapes;
  const std::vector<quor::engine::Event>* events = nullptr;  ///< null if none were raised
};

/// The report and what there is to say about the script, as one JSON object.
void print_findings(std::ostream& out, const std::string& report, const std::string& findings);

/// What a script that compiles needs and gives; `is_sound` if there is nothing to say against it.
void print_report(std::ostream& out, const quor::engine::Script& script, bool is_sound);

/// The cells of one column of a table, its title first.
using Cells = std::vector<std::string>;

/// Whether any of the bars is of a time of day, so that all dates are shown with it.
bool have_times(std::span<const int64_t> keys);

/// Enough decimals for the size of the numbers; whole numbers need none.
int decimals_to_show(std::span<const double> values);
std::string number_cell(double value, int decimals);

/// Numbers with as many decimals as their size asks for, and dates.
Cells number_cells(const std::string& name, std::span<const double> values);
Cells key_cells(std::span<const int64_t> keys);

/// Columns of one length beside each other, the first `left_columns` to the left.
void print_cells(std::ostream& out, const std::vector<Cells>& columns, size_t left_columns);
/// Blanks in front of a text, or behind it, up to a width on the screen.
std::string with_width(const std::string& text, size_t width, bool to_the_right);

/// One bar in a row.
void print_table(std::ostream& out, const Table& table);

/// The same as comma-separated values that read back to the same bits; a null is an empty cell.
void print_csv(std::ostream& out, const Table& table);

/// The same with report, findings, drawing records and events, as one JSON object.
void print_json(std::ostream& out, const Table& table, const RunTexts& texts);

/// A notice or signal as a line of text without its end, and as a JSON object.
std::string event_text(const quor::engine::Event& event, bool with_time);
std::string event_json(const quor::engine::Event& event, bool with_time);

}  // namespace quor_host
