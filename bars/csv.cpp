#include "csv.h"

#include <csv.h>

#include <algorithm>
#include <exception>

#include "errors.h"

namespace quor_bars {
namespace {

/// Hands on row by row, in cells that keep their memory from row to row. An exception waits until
/// the C library has returned.
class Reader {
 public:
  explicit Reader(const std::function<void(const CsvRow&)>& take) : take_(take) {}

  void add_cell(std::string_view text) {
    lines_in_cells_ += static_cast<size_t>(std::ranges::count(text, '\n'));
    if (cells_ == row_.cells.size()) {
      row_.cells.emplace_back(text);
    } else {
      row_.cells[cells_].assign(text);
    }
    ++cells_;
  }

  /// Called for every line end, and with -1 at the end of a text that has none there.
  void end_line(int byte) {
    if (cells_ > 0) {
      row_.cells.resize(cells_);
      row_.line = line_;
      take_(row_);
      cells_ = 0;
    }
    line_ += lines_in_cells_ + (byte == '\n' ? 1 : 0);
    lines_in_cells_ = 0;
  }

  template <typename Step>
  void guard(const Step& step) noexcept {
    if (fault_) return;
    try {
      step();
    } catch (...) {
      fault_ = std::current_exception();
    }
  }

  void raise_fault() const {
    if (fault_) std::rethrow_exception(fault_);
  }
  size_t line() const { return line_; }

 private:
  const std::function<void(const CsvRow&)>& take_;
  size_t line_ = 1;
  size_t lines_in_cells_ = 0;  ///< line ends inside quotes of the row under way
  size_t cells_ = 0;           ///< of the row under way
  CsvRow row_;
  std::exception_ptr fault_;
};

void take_cell(void* cell, size_t length, void* data) {
  auto& reader = *static_cast<Reader*>(data);
  reader.guard([&] { reader.add_cell({static_cast<const char*>(cell), length}); });
}

void take_line_end(int byte, void* data) {
  auto& reader = *static_cast<Reader*>(data);
  reader.guard([&] { reader.end_line(byte); });
}

/// Piece by piece, so that a bad row ends the reading soon.
bool parse(csv_parser& parser, std::string_view text, Reader& reader) {
  constexpr size_t piece = 1 << 16;
  for (size_t at = 0; at < text.size(); at += piece) {
    const std::string_view part = text.substr(at, piece);
    const size_t parsed =
        csv_parse(&parser, part.data(), part.size(), take_cell, take_line_end, &reader);
    reader.raise_fault();
    if (parsed != part.size()) return false;
  }
  const bool sound = csv_fini(&parser, take_cell, take_line_end, &reader) == 0;
  reader.raise_fault();
  return sound;
}

/// The library's state, freed whatever happens.
struct Parser {
  Parser(const std::string& name, char separator) {
    if (csv_init(&state, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL) != 0) {
      throw ReadError(name + ": no memory to read it");
    }
    csv_set_delim(&state, static_cast<unsigned char>(separator));
    if (separator == '\t')
      csv_set_space_func(&state, [](unsigned char c) { return c == ' ' ? 1 : 0; });
  }
  ~Parser() { csv_free(&state); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  csv_parser state;
};

}  // namespace

char separator_of(std::string_view text) {
  size_t semicolons = 0;
  size_t tabs = 0;
  bool is_quoted = false;
  const size_t begin = std::min(text.find_first_not_of(" \r\n"), text.size());
  for (const char c : text.substr(begin)) {
    if (c == '"') is_quoted = !is_quoted;
    if (is_quoted) continue;
    if (c == ',') return c;
    if (c == '\n' || c == '\r') break;
    if (c == ';') ++semicolons;
    if (c == '\t') ++tabs;
  }
  if (semicolons + tabs == 0) return ',';
  return semicolons >= tabs ? ';' : '\t';
}

void read_csv(std::string_view text, const std::string& name,
              const std::function<void(const CsvRow&)>& take) {
  constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
  if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
  Parser parser(name, separator_of(text));
  Reader reader(take);
  if (!parse(parser.state, text, reader)) {
    throw ReadError(name + ":" + std::to_string(reader.line()) + ": a quote is out of place");
  }
}

}  // namespace quor_bars
