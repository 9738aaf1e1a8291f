#include "csv.h"

#include <csv.h>

#include <algorithm>
#include <utility>

#include "errors.h"

namespace quor_host {
namespace {

struct Reader {
  size_t line = 1;
  size_t lines_in_cells = 0;  ///< line ends inside quotes of the row under way
  CsvRow row;
  std::vector<CsvRow> rows;
};

void take_cell(void* cell, size_t length, void* data) {
  auto& reader = *static_cast<Reader*>(data);
  const std::string_view text(static_cast<const char*>(cell), length);
  reader.lines_in_cells += static_cast<size_t>(std::ranges::count(text, '\n'));
  reader.row.cells.emplace_back(text);
}

/// Called for every line end, and with -1 at the end of a text that has none there.
void take_line_end(int byte, void* data) {
  auto& reader = *static_cast<Reader*>(data);
  if (!reader.row.cells.empty()) {
    reader.row.line = reader.line;
    reader.rows.push_back(std::move(reader.row));
    reader.row = {};
  }
  reader.line += reader.lines_in_cells + (byte == '\n' ? 1 : 0);
  reader.lines_in_cells = 0;
}

}  // namespace

std::vector<CsvRow> read_csv(std::string_view text, const std::string& name) {
  csv_parser parser;
  if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) {
    throw HostError(name + ": no memory to read it");
  }
  Reader reader;
  const bool sound = csv_parse(&parser, text.data(), text.size(), take_cell, take_line_end,
                               &reader) == text.size() &&
                     csv_fini(&parser, take_cell, take_line_end, &reader) == 0;
  csv_free(&parser);
  if (!sound) {
    throw HostError(name + ":" + std::to_string(reader.line) + ": a quote is out of place");
  }
  return std::move(reader.rows);
}

}  // namespace quor_host
