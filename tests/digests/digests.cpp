// Prints what scripts give, down to the last bit, as one line per script: a digest of the report,
// the answer and the drawing records, and one of all cells. NaN is one value, whatever its bits.
// Scripts that draw random numbers or ask the clock are left out.
//   digests SAMPLES FILE...    vectors (.txt), scripts over the bars of the samples (.quor),
//                              each word over bars of several sizes, and each item of style
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "engine/engine.h"
#include "support/engine_vectors.h"
#include "support/files.h"
#include "support/word_calls.h"

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

/// Bars that go up and down by whole steps, so that many are alike, with nulls among them. Steps
/// may be far smaller or greater than a price's.
Arrays bars_in_steps_of(double step, double start) {
  constexpr int64_t first_day = 20240101000000;
  Arrays bars;
  uint32_t seed = 20240101;
  const auto draw = [&seed](uint32_t end) {
    seed = seed * 1664525U + 1013904223U;
    return static_cast<double>((seed >> 16U) % end);
  };
  double price = start;
  for (int64_t row = 0; row < 160; ++row) {
    bars.keys.push_back(first_day + (row / 28) * 100'000'000 + (row % 28) * 1'000'000);
    const double open = price;
    price += (draw(9) - 4.0) * step;
    const double close = draw(11) == 0.0 ? std::nan("") : price;
    const double high = std::max(open, price) + draw(3) * step;
    const double low = std::min(open, price) - draw(3) * step;
    const double volume = (draw(400) - 20.0) * step * 50.0;
    const std::pair<const char*, double> values[] = {
        {"OPEN", open}, {"HIGH", high}, {"LOW", low}, {"CLOSE", close}, {"VOL", volume}};
    for (const auto& [field, value] : values) bars.fields[column_of(field)].push_back(value);
  }
  return bars;
}

/// The text with an expression in the place of each C that stands alone.
std::string with_expressions(std::string_view arguments) {
  std::string text;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const auto is_letter = [&](size_t at) {
      return at < arguments.size() && arguments[at] >= 'A' && arguments[at] <= 'Z';
    };
    const bool is_alone = arguments[i] == 'C' && !is_letter(i + 1) && (i == 0 || !is_letter(i - 1));
    text += is_alone ? "(C-O)" : std::string(1, arguments[i]);
  }
  return text;
}

/// Arguments as they stand between commas; parentheses keep theirs.
std::vector<std::string> parted(std::string_view arguments) {
  std::vector<std::string> parts(1);
  int depth = 0;
  for (const char c : arguments) {
    depth += c == '(' ? 1 : c == ')' ? -1 : 0;
    if (c == ',' && depth == 0) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

/// A call for each argument, with one in its place that can't be evaluated.
std::vector<std::string> failing_calls(const std::string& word, std::string_view arguments) {
  std::vector<std::string> calls;
  const std::vector<std::string> parts = parted(arguments);
  for (size_t failing = 0; failing < parts.size(); ++failing) {
    std::string call = word;
    for (size_t i = 0; i < parts.size(); ++i) {
      call += (i == 0 ? '(' : ',') + (i == failing ? std::string("COLORRED") : parts[i]);
    }
    calls.push_back(call + ')');
  }
  return calls;
}

void print_words() {
  const std::pair<const char*, Arrays> kinds[] = {{"prices", bars_in_steps_of(0.25, 20.0)},
                                                  {"small", bars_in_steps_of(0.015625, 0.0)},
                                                  {"large", bars_in_steps_of(1024.0, -4096.0)}};
  Settings settings;
  settings.subject.period = 0x3005;
  settings.subject.security = "600000";
  settings.subject.market = "USHA";
  for (const auto& [words, arguments] : word_groups) {
    std::istringstream each{std::string(words)};
    for (std::string word; each >> word;) {
      const std::string call = word + '(' + std::string(arguments) + ");";
      const std::string other = word + '(' + with_expressions(arguments) + ");";
      const std::string named = "A:" + call + "B:" + other;
      const bool has_values = !Script(named, settings).report().failure;
      const std::string script = has_values ? named : call + other;
      for (const auto& [kind, bars] : kinds) print(call + ' ' + kind, script, settings, bars);
      for (const std::string& failing : failing_calls(word, arguments)) {
        print(failing, (has_values ? "A:C;B:" : "") + failing + ';', settings, kinds[0].second);
      }
    }
  }
}

/// Items of style, among them such as a digit more or less makes none of.
constexpr std::string_view style_items =
    "SOLIDLINE DASHLINE DASH DOTLINE DOT DASHDOT POINTDOT DASHDOTDOT CIRCLEDOT CROSSDOT STICK "
    "VOLSTICK COLORSTICK VOLUMESTICK NOTEXT SOLID HOLLOW NODRAW COLORAUTO COLORRED COLORLIGREY "
    "COLOR COLOR00FF7F COLOR00FF7 COLOR00FF7F0 COLOR80FF7F00 LINETHICK LINETHICK0 LINETHICK1 "
    "LINETHICK2 LINETHICK9 LINETHICK10 LINETHICK1.5 PRECIS PRECIS0 PRECIS1 PRECIS6 PRECIS7 ALIGN0 "
    "ALIGN2 ALIGN3 VALIGN0 VALIGN2 VALIGN3 FONTSIZE8 FONTSIZE7 FONTSIZE72 FONTSIZE73";

/// A line, and calls that draw lines, sticks, texts and signs, with each of them.
void print_styles() {
  const std::string_view forms[] = {"A:C,#;B:C-O,#,COLORBLUE;",  "POLYLINE(C>O,C,COLORRED,#);",
                                    "STICKLINE(C>O,H,L,2,0),#;", "DRAWLINE(C>O,H,C<O,L,1,#);",
                                    "DRAWTEXT(C>O,H,'x',#);",    "DRAWICON(C>O,L,'1',#);",
                                    "DRAWNUMBER(C>O,H,C,#);"};
  const Arrays bars = bars_in_steps_of(0.25, 20.0);
  for (const std::string_view form : forms) {
    std::istringstream each{std::string(style_items)};
    for (std::string item; each >> item;) {
      std::string script(form);
      for (size_t at; (at = script.find('#')) != std::string::npos;) script.replace(at, 1, item);
      print(script, script, {}, bars);
    }
  }
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
    quor_test::print_words();
    quor_test::print_styles();
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "digests: %s\n", fault.what());
    return 1;
  }
  return 0;
}
