// Bars from comma-separated text.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quor_bars {

struct Bars {
  std::vector<int64_t> keys;  ///< row keys, YYYYMMDDhhmmss, in the order of the file
  std::map<uint32_t, std::vector<double>> columns;  ///< values by field id, NaN for an empty cell
  /// What no market can have quoted, by kind the first one with its line: "a.csv:5: the high 10 is
  /// below the low 11". The values are there as they stand in the file.
  std::vector<std::string> doubts;
};

/// How a file differs from the usual.
struct Naming {
  std::optional<std::string> time;  ///< the column of the dates
  /// Columns by field id, for fields that have no usual word or stand under another; a field
  /// without a column is one that the file doesn't have.
  std::map<uint32_t, std::optional<std::string>> fields;
  bool dates_repeat = false;      ///< bars of one date are all read
  std::optional<char> separator;  ///< of its cells; else the first line tells it
};

/// One bar of a text.
struct BarRow {
  size_t line = 0;
  int64_t key = 0;
  std::span<const double> values;  ///< of the reader's fields, in their order
};

/// Reads a text that comes piece by piece, cut anywhere, and hands on each bar once its line is
/// complete; keys as they come. What `take` throws ends the reading.
class BarReader {
 public:
  BarReader(std::string name, Naming naming, std::function<void(const BarRow&)> take);
  ~BarReader();
  BarReader(const BarReader&) = delete;
  BarReader& operator=(const BarReader&) = delete;

  /// Both throw ReadError that names the line if anything in the text is wrong.
  void feed(std::string_view bytes);
  /// The text is at its end. Throws for one without a line that names the columns, too.
  void finish();

  /// The field ids of the columns, known from the first line on.
  std::span<const uint32_t> fields() const;

 private:
  struct Body;
  std::unique_ptr<Body> body_;
};

/// The first line names the columns; columns of no known name are passed over. `name` is what the
/// text is called in messages. Throws ReadError that names the line if anything in the text is
/// wrong.
Bars parse_bars(std::string_view text, const std::string& name, const Naming& naming = {});
/// The same of a stream, of which only a piece is in memory at a time.
Bars parse_bars(std::istream& stream, const std::string& name, const Naming& naming = {});

/// What no market can have quoted in a bar, as a text for each pair of fields, the first time that
/// it is asked about the pair.
class Doubts {
 public:
  /// The order of the values that bars have.
  Doubts(std::string name, std::span<const uint32_t> fields);
  std::vector<std::string> of(const BarRow& row);

 private:
  struct Pair {
    size_t above;
    size_t below;
    std::string_view names[2];
  };
  std::string name_;
  std::vector<Pair> pairs_;
};

}  // namespace quor_bars
