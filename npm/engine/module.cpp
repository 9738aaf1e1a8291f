// What the package calls of the module: scripts behind handles, arrays by their addresses, and the
// rest as JSON. A text that a call gives stands at `quor_text` until the next call. No exception
// leaves a call.
#include <simdjson.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "advice/advice.h"
#include "bars/fields.h"
#include "engine/engine.h"
#include "json.h"

namespace quor_npm {
namespace {

using quor::engine::Field;
using quor::engine::Look;
using quor::engine::Misuse;
using quor::engine::Script;
using quor::engine::Settings;
using quor_advice::Finding;

/// How a call ended. Only with `done` the rest of its answer holds.
enum class Outcome : int32_t { done = 0, script_failed = 1, misuse = 2, no_memory = 3 };

/// A script with the bars of one security.
struct Handle {
  explicit Handle(std::string source, Settings given)
      : settings(std::move(given)),
        subject(settings.subject),
        script(std::move(source), settings) {}

  Settings settings;
  quor::engine::Subject subject;
  Script script;
  /// Of the bars taken in last, in their order.
  std::vector<int64_t> keys;
  /// Where these bars stand; empty if they are the rows in their order.
  std::vector<uint32_t> rows;
  /// A bar that comes alone: its key and its values, and behind them what its lines come to.
  std::vector<double> bar;
  std::vector<Field> bar_fields;  ///< views of its values
};

std::string answer;

template <typename Work>
Outcome guarded(const Work& work) noexcept {
  answer.clear();
  try {
    return work();
  } catch (const Misuse& misuse) {
    answer = misuse.what();
    return Outcome::misuse;
  } catch (const std::bad_alloc&) {
    return Outcome::no_memory;
  } catch (const std::exception& fault) {
    answer = fault.what();
    return Outcome::misuse;
  }
}

/// The library takes an end of memory for a failure of the script.
bool is_end_of_memory(const quor::engine::Failure& failure) {
  return failure.text == std::bad_alloc().what();
}

std::string string_of(simdjson::dom::element object, const char* key) {
  const std::string_view text = object[key];
  return std::string(text);
}

double number_of(simdjson::dom::element object, const char* key) {
  const simdjson::dom::element value = object[key];
  return value.is_null() ? std::nan("") : double{value};
}

/// What the package sends has all keys.
Settings settings_of(simdjson::dom::element given) {
  Settings settings;
  settings.subject.period = static_cast<uint32_t>(uint64_t{given["period"]});
  settings.subject.security = string_of(given, "code");
  settings.subject.market = string_of(given, "market");
  settings.subject.time_zone = string_of(given, "timeZone");
  settings.subject.min_price = number_of(given, "minPrice");
  settings.subject.unit = number_of(given, "unit");
  settings.subject.share_count_per_unit = number_of(given, "shareCountPerUnit");
  settings.subject.is_trading = given["isTrading"];
  settings.subject.calendar = string_of(given, "calendar");
  for (const simdjson::dom::array pair : simdjson::dom::array(given["parameters"])) {
    const std::string_view name = pair.at(0);
    settings.parameters.emplace_back(name, pair.at(1));
  }
  return settings;
}

std::vector<Finding> advice_for(const Handle& handle) {
  quor_advice::Input input;
  input.script = handle.script.source();
  input.parameters = handle.script.parameters();
  input.report = handle.script.report().text;
  input.answer = handle.script.answer();
  input.period = static_cast<int32_t>(handle.subject.period);
  input.compile = [&handle](std::string_view script) {
    Settings settings = handle.settings;
    settings.subject = handle.subject;
    return Script(std::string(script), std::move(settings)).report().text;
  };
  return quor_advice::advise(input);
}

/// Puts the errors among the findings into the answer.
void answer_error(const Handle& handle) {
  std::vector<Finding> findings = advice_for(handle);
  std::erase_if(findings, [](const Finding& finding) {
    return finding.severity != quor_advice::Severity::error;
  });
  answer = quor_advice::json_text(findings);
}

void write_look(Json& json, const std::optional<Look>& look) {
  json.key("look");
  if (!look) {
    json.null();
    return;
  }
  json.open('{').key("shape").text(look->shape).key("style").text(look->style);
  json.key("colour").text(look->colour).key("width").number(double{look->width});
  json.key("dash").text(look->dash).close('}');
}

void write_report(Json& json, const Script& script) {
  const auto& report = script.report();
  json.open('{').key("lookBack").integer(report.look_back).key("fields").open('[');
  for (const uint32_t id : report.fields) json.integer(id);
  json.close(']').key("references").open('[');
  for (const auto& reference : report.references) {
    json.open('{').key("source").text(reference.source);
    json.key("column").integer(reference.column).close('}');
  }
  json.close(']').key("needsMarketConstants").boolean(report.needs_market_constants);
  json.key("needsCalendar").boolean(report.needs_calendar);
  json.key("hasNotices").boolean(report.has_notices).key("words").open('[');
  for (const std::string& word : script.words()) json.text(word);
  json.close(']').close('}');
}

/// The arrays that bars have for the fields, by the words and the id under which they may stand.
void write_needs(Json& json, const Script& script) {
  json.open('[');
  for (const uint32_t id : script.report().fields) {
    json.open('{').key("id").integer(id).key("names").open('[');
    for (const auto& [word, field] : quor_bars::field_words()) {
      if (field == id) json.text(word);
    }
    json.text(std::to_string(id)).close(']').close('}');
  }
  json.close(']');
}

std::string description_of(const Script& script) {
  Json json;
  json.open('{').key("report");
  write_report(json, script);
  json.key("needs");
  write_needs(json, script);
  json.key("lines").open('[');
  for (const auto& line : script.lines()) {
    json.open('{').key("name").text(line.name).key("statement").integer(line.statement);
    write_look(json, line.look);
    json.close('}');
  }
  json.close(']').close('}');
  return json.take();
}

std::string records_of(const Script& script) {
  Json json;
  json.open('[');
  for (const auto& record : script.records()) {
    json.open('{');
    for (const auto& [key, text] : record.texts) json.key(key).text(text);
    for (const auto& [key, number] : record.numbers) json.key(key).number(number);
    json.close('}');
  }
  json.close(']');
  return json.take();
}

std::string events_of(const Script& script) {
  Json json;
  json.open('[');
  for (const auto& event : script.events()) {
    json.open('{').key("key").integer(event.key).key("row").integer(event.row);
    json.key("word").text(event.word).key("name").text(event.name).key("quantity");
    event.quantity == -1 ? json.null() : json.integer(event.quantity);
    json.key("statement").integer(event.statement).close('}');
  }
  json.close(']');
  return json.take();
}

void find_rows(Handle& handle) {
  handle.rows.clear();
  const auto& keys = handle.keys;
  const bool in_order = keys.size() == handle.script.row_count() && std::ranges::is_sorted(keys);
  if (in_order) return;
  for (const int64_t key : keys) handle.rows.push_back(handle.script.row_of(key).value_or(0));
}

Outcome calculate(Handle& handle, uint32_t first, bool with_events) {
  const auto failure = handle.script.calculate(first, with_events);
  if (!failure) return Outcome::done;
  if (is_end_of_memory(failure)) return Outcome::no_memory;
  answer_error(handle);
  return Outcome::script_failed;
}

void write_last_values(const Script& script, std::span<double> values) {
  const auto& lines = script.lines();
  for (size_t i = 0; i < lines.size(); ++i) values[i] = script.column(lines[i].column).back();
}

}  // namespace
}  // namespace quor_npm

using quor_npm::answer;
using quor_npm::guarded;
using quor_npm::Handle;
using quor_npm::Outcome;

#define QUOR_CALL(name) extern "C" __attribute__((export_name(#name)))

QUOR_CALL(quor_text) const char* quor_text() { return answer.data(); }
QUOR_CALL(quor_text_length) size_t quor_text_length() { return answer.size(); }

/// Compiles by settings in JSON. Puts the handle, or 0, to `result`; an error of the script is the
/// answer.
QUOR_CALL(quor_compile)
Outcome quor_compile(const char* settings, size_t length, Handle** result) {
  *result = nullptr;
  return guarded([&] {
    simdjson::dom::parser parser;
    const simdjson::dom::element given = parser.parse(settings, length);
    auto handle = std::make_unique<Handle>(quor_npm::string_of(given, "source"),
                                           quor_npm::settings_of(given));
    if (quor_npm::is_end_of_memory(handle->script.report().failure)) return Outcome::no_memory;
    if (handle->script.report().failure) {
      quor_npm::answer_error(*handle);
      return Outcome::script_failed;
    }
    answer = quor_npm::description_of(handle->script);
    *result = handle.release();
    return Outcome::done;
  });
}

QUOR_CALL(quor_free) void quor_free(Handle* handle) { delete handle; }

/// Takes bars in place of those before and calculates. Keys are whole numbers; `values` has an
/// array of each column.
QUOR_CALL(quor_run)
Outcome quor_run(Handle* handle, size_t count, const double* keys, size_t columns,
                 const uint32_t* ids, const double* const* values, bool with_events) {
  return guarded([&] {
    handle->keys.assign(keys, keys + count);
    std::vector<quor_npm::Field> fields;
    for (size_t i = 0; i < columns; ++i) fields.push_back({ids[i], {values[i], count}});
    handle->script.restart(handle->subject);
    handle->script.set_rows(handle->keys, fields);
    quor_npm::find_rows(*handle);
    return quor_npm::calculate(*handle, 0, with_events);
  });
}

/// Makes a place for bars that come alone, with these columns, and puts its address to `result`: of
/// the key, the values of the columns and, after `quor_update`, each line's value at the last bar.
QUOR_CALL(quor_make_place)
Outcome quor_make_place(Handle* handle, size_t columns, const uint32_t* ids, double** result) {
  return guarded([&] {
    handle->bar.assign(1 + columns + handle->script.lines().size(), 0.0);
    handle->bar_fields.clear();
    for (size_t i = 0; i < columns; ++i) {
      handle->bar_fields.push_back({ids[i], {&handle->bar[1 + i], 1}});
    }
    *result = handle->bar.data();
    return Outcome::done;
  });
}

/// Takes the bar in the place that was made, beside those before, and calculates from it on.
QUOR_CALL(quor_update) Outcome quor_update(Handle* handle) {
  return guarded([&] {
    const auto key = static_cast<int64_t>(handle->bar[0]);
    handle->script.set_rows({&key, 1}, handle->bar_fields);
    const uint32_t row = handle->script.row_of(key).value_or(0);
    const Outcome outcome = quor_npm::calculate(*handle, row, true);
    if (outcome == Outcome::done) {
      const size_t values = 1 + handle->bar_fields.size();
      quor_npm::write_last_values(handle->script, std::span(handle->bar).subspan(values));
    }
    return outcome;
  });
}

QUOR_CALL(quor_row_count) uint32_t quor_row_count(const Handle* handle) {
  return handle->script.row_count();
}

/// The rows of the bars taken in last, or null if they are all rows in their order.
QUOR_CALL(quor_rows) const uint32_t* quor_rows(const Handle* handle) {
  return handle->rows.empty() ? nullptr : handle->rows.data();
}

/// The cells of a line, one for each row.
QUOR_CALL(quor_line) const double* quor_line(const Handle* handle, size_t line) {
  const auto& lines = handle->script.lines();
  return handle->script.column(lines[line].column).data();
}

QUOR_CALL(quor_key) double quor_key(const Handle* handle, uint32_t row) {
  return static_cast<double>(handle->script.key_of(row));
}

QUOR_CALL(quor_shapes) Outcome quor_shapes(const Handle* handle) {
  return guarded([&] {
    answer = quor_npm::records_of(handle->script);
    return Outcome::done;
  });
}

QUOR_CALL(quor_events) Outcome quor_events(const Handle* handle) {
  return guarded([&] {
    answer = quor_npm::events_of(handle->script);
    return Outcome::done;
  });
}

QUOR_CALL(quor_findings) Outcome quor_findings(const Handle* handle) {
  return guarded([&] {
    answer = quor_advice::json_text(quor_npm::advice_for(*handle));
    return Outcome::done;
  });
}
