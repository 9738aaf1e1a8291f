// Prints what scripts give, down to the last bit, as one line per script: a digest of the report,
// the answer and the drawing records, and one of all cells. NaN is one value, whatever its bits.
// Scripts that draw random numbers or ask the clock are left out.
//   digests SAMPLES FILE...    vectors (.txt) and scripts over the bars of the samples (.quor)
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

#include "engine/engine.h"
#include "support/engine_vectors.h"
#include "support/files.h"

namespace quor_test {
namespace {

using quor::engine::Script;
using quor::engine::Settings;

/// FNV-1a.
class Digest {
 public:
  void take(uint64_t word) {
    for (int i = 0; i < 8; ++i) take_byte(static_cast<uint8_t>(word >> (8 * i)));
  }
  void take(std::string text) {
    for (size_t at = 0; (at = text.find("-nan", at)) != std::string::npos;) text.erase(at, 1);
    for (const char c : text) take_byte(static_cast<uint8_t>(c));
    take(text.size());
  }
  void take_cell(double value) {
    take(value != value ? ~uint64_t{0} : std::bit_cast<uint64_t>(value));
  }
  unsigned long long value() const { return value_; }

 private:
  void take_byte(uint8_t byte) { value_ = (value_ ^ byte) * 0x100000001B3; }

  uint64_t value_ = 0xCBF29CE484222325;
};

bool depends_on_the_moment(const Script& script) {
  static const std::set<std::string_view> words{"RAND", "CURRENTDATE", "CURRENTTIME"};
  for (const std::string& word : script.words()) {
    if (words.contains(word)) return true;
  }
  return false;
}

Digest cells_of(const Script& script) {
  Digest cells;
  constexpr uint32_t first_of_script = 20000;
  try {
    for (uint32_t id = first_of_script;; ++id) {
      for (const double value : script.column(id)) cells.take_cell(value);
      cells.take(id);
    }
  } catch (const quor::engine::Misuse&) {
    return cells;
  }
}

void print(const std::string& name, const std::string& source, const Settings& settings,
           const Arrays& bars) {
  Script script(source, settings);
  if (depends_on_the_moment(script)) return;
  Digest texts;
  Digest cells;
  texts.take(script.report().text);
  if (!script.report().failure) {
    script.set_rows(bars.keys, bars.spans());
    script.calculate();
    texts.take(script.answer());
    for (const std::string& record : script.shapes()) texts.take(record);
    cells = cells_of(script);
  }
  std::printf("%016llx %016llx %s\n", texts.value(), cells.value(), name.c_str());
}

/// Bars of a file with a line of names: the date, the time of day or not, and prices.
Arrays bars_of(const std::string& path) {
  std::istringstream lines(text_of(path));
  std::string line;
  std::getline(lines, line);
  std::vector<uint32_t> columns;
  bool has_time = false;
  std::istringstream names(line);
  for (std::string name; std::getline(names, name, ',');) {
    if (name == "time") has_time = true;
    if (name == "date" || name == "time") continue;
    const bool is_known = name != "adjclose";
    for (char& c : name) c = static_cast<char>(c - 'a' + 'A');
    columns.push_back(is_known ? column_of(name == "VOLUME" ? "VOL" : name) : 0);
  }
  Arrays bars;
  while (std::getline(lines, line)) {
    std::istringstream cells(line);
    std::string key;
    std::string cell;
    std::getline(cells, key, ',');
    cell = "0000";
    if (has_time) std::getline(cells, cell, ',');
    key += cell + "00";
    std::erase_if(key, [](char c) { return c < '0' || c > '9'; });
    bars.keys.push_back(std::stoll(key));
    for (const uint32_t column : columns) {
      std::getline(cells, cell, ',');
      if (column != 0) bars.fields[column].push_back(std::strtod(cell.c_str(), nullptr));
    }
  }
  return bars;
}

void print_sample(const std::string& samples, const std::string& path) {
  static const Arrays daily = bars_of(samples + "/index-daily.csv");
  const std::string source = text_of(path);
  const std::string name = path.starts_with(samples) ? path.substr(samples.size() + 1)
                                                     : path.substr(path.find_last_of('/') + 1);
  Settings settings;
  if (name != "night.quor" && name != "cookbook/session_average.quor") {
    print(name, source, settings, daily);
    return;
  }
  constexpr uint32_t five_minutes = 0x3005;
  settings.subject.period = five_minutes;
  settings.subject.security = "TEST";
  settings.subject.market = "NIGHT";
  settings.subject.calendar = text_of(samples + "/night-calendar.json");
  print(name, source, settings, bars_of(samples + "/night.csv"));
}

void print_vectors(const std::string& path) {
  for (const Vector& vector : vectors_of(path)) {
    print(vector.file + ": " + vector.name, vector.script, settings_of(vector), arrays_of(vector));
  }
}

}  // namespace
}  // namespace quor_test

int main(int count, char** arguments) {
  if (count < 3) {
    std::fputs("digests SAMPLES FILE...\n", stderr);
    return 2;
  }
  try {
    for (int i = 2; i < count; ++i) {
      const std::string path = arguments[i];
      if (path.ends_with(".quor")) {
        quor_test::print_sample(arguments[1], path);
      } else {
        quor_test::print_vectors(path);
      }
    }
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "digests: %s\n", fault.what());
    return 1;
  }
  return 0;
}
