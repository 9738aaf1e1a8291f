#include "bars.h"

#include <utility>

#include "../errors.h"
#include "../text.h"
#include "bars/fields.h"
#include "input.h"

namespace quor_host {

namespace {

/// "close=Adj Close".
void add_column(quor_bars::Naming& naming, const std::string& column) {
  const size_t mark = column.find('=');
  const std::string field = column.substr(0, mark);
  const auto id = quor_bars::field_id(field);
  if (mark == std::string::npos || mark == 0 || mark + 1 == column.size()) {
    throw UsageError("--column " + column + ": write FIELD=COLUMN, such as close=\"Adj Close\"");
  }
  if (!id) {
    throw UsageError("--column " + column + ": no field is called " + field +
                     "; fields are date, open, high, low, close, volume, amount");
  }
  if (*id == quor_bars::field_time) {
    naming.time = column.substr(mark + 1);
  } else {
    naming.fields[*id] = column.substr(mark + 1);
  }
}

char separator_named(const std::string& text) {
  constexpr std::pair<std::string_view, char> names[] = {{"comma", ','}, {"semicolon", ';'},
                                                         {"tab", '\t'},  {"\\t", '\t'},
                                                         {"pipe", '|'},  {"space", ' '}};
  for (const auto& [name, character] : names) {
    if (text == name) return character;
  }
  constexpr std::string_view impossible = "\"\r\n";
  if (text.size() == 1 && impossible.find(text[0]) == std::string_view::npos) return text[0];
  throw UsageError("--delimiter " + text +
                   ": write one character, or comma, semicolon, tab or pipe");
}

}  // namespace

quor_bars::Naming naming_of(const BarForm& form) {
  quor_bars::Naming naming;
  for (const std::string& column : form.columns) add_column(naming, column);
  if (!form.delimiter.empty()) naming.separator = separator_named(form.delimiter);
  return naming;
}

Bars read_bars(const std::string& path, const quor_bars::Naming& naming) {
  return quor_bars::parse_bars(*open_input(path), input_name(path), naming);
}

}  // namespace quor_host
