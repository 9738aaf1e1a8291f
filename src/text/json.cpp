#include "text/json.h"

#include "text/numbers.h"

namespace quor {
namespace {

void append_key(std::string& out, std::string_view key) {
  out += '"';
  out += key;
  out += "\":";
}

}  // namespace

void append_json_integer(std::string& out, std::string_view key, int64_t value, bool more) {
  append_key(out, key);
  append_integer(out, value);
  if (more) out += ',';
}

void append_json_text(std::string& out, std::string_view key, std::string_view value, bool more) {
  append_key(out, key);
  out += '"';
  out += value;
  out += '"';
  if (more) out += ',';
}

void append_json_float(std::string& out, std::string_view key, double value, bool more) {
  append_key(out, key);
  append_fixed(out, value);
  if (more) out += ',';
}

}  // namespace quor
