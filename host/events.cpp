#include "events.h"

#include <simdjson.h>

#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <string_view>

#include "bars.h"
#include "quor_parser.h"

namespace quor_host {
namespace {

/// The handlers belong to the process, and so does what they need.
struct Printer {
  std::ostream* out = nullptr;
  std::map<uint32_t, std::string> notice_names;  ///< by the column that records the notice
};

Printer& printer() {
  static Printer current;
  return current;
}

/// Names of the notices; none if a title makes the records invalid as JSON.
std::map<uint32_t, std::string> names_of(const std::string& shapes) {
  std::map<uint32_t, std::string> names;
  simdjson::dom::parser parser;
  simdjson::dom::array records;
  if (parser.parse(shapes).get(records) != simdjson::SUCCESS) return names;
  for (const simdjson::dom::element record : records) {
    std::string_view name;
    int64_t column = 0;
    if (record["NoticeMessage"].get(name) != simdjson::SUCCESS) continue;
    if (record["Field1Id"].get(column) != simdjson::SUCCESS) continue;
    names[static_cast<uint32_t>(column)] = name;
  }
  return names;
}

/// The row key that a notice carries among its cells.
int64_t key_of_notice(const char* cells) {
  simdjson::dom::parser parser;
  double key = 0;
  const std::string text(cells);
  if (parser.parse(text)["1"].get(key) != simdjson::SUCCESS) return 0;
  return static_cast<int64_t>(key);
}

void show_notice(int64_t /*time*/, uint32_t column_id, uint64_t /*uuid*/, const char* text) {
  const auto name = printer().notice_names.find(column_id);
  *printer().out << "notice  " << key_text(key_of_notice(text), true) << "  "
                 << (name == printer().notice_names.end() ? "column " + std::to_string(column_id)
                                                          : name->second)
                 << "  " << text << '\n';
}

void show_signal(int64_t /*time*/, int64_t bar, uint32_t row, uint64_t /*uuid*/,
                 uint32_t /*column_id*/, uint32_t action, int64_t quantity) {
  constexpr std::array<std::string_view, 7> words = {"BK",  "BP",  "SK",      "SP",
                                                     "BPK", "SPK", "CLOSEOUT"};
  *printer().out << "signal  " << key_text(bar, true) << "  row " << row << "  "
                 << (action < words.size() ? words[action] : "?");
  if (quantity >= 0) *printer().out << ' ' << quantity;
  *printer().out << '\n';
}

}  // namespace

void print_events(std::ostream& out, const std::string& shapes) {
  printer() = {&out, names_of(shapes)};
  set_parser_notice_callback_handler(show_notice);
  set_trade_callback(show_signal);
}

}  // namespace quor_host
