#include "engine/engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/base_func.h"
#include "engine/event_recorder.h"
#include "engine/line_list.h"
#include "engine/record_values.h"
#include "engine/run_calendar.h"
#include "engine/script_texts.h"
#include "engine/undrawn_lines.h"
#include "interface/script_parser.h"

namespace quor::engine {
namespace {

void require(bool sound, const char* text) {
  if (!sound) throw Misuse(text);
}

int32_t always_trading(int64_t /*time*/, const char* /*market*/, const char* /*security*/) {
  return 1;
}

void add_references(std::vector<Reference>& list, Reference::Kind kind,
                    const std::map<int32_t, std::string>& references) {
  for (const auto& [column, key] : references) {
    list.push_back({kind, key.substr(0, key.rfind('|')), static_cast<uint32_t>(column)});
  }
}

/// Whether a call keeps something when all bars are dropped.
bool outlasts_bars(const CompiledScript& script) {
  return std::ranges::any_of(script.variable_list, [](const Variable* variable) {
    return variable->function != nullptr && variable->function->traits().has(hides_state);
  });
}

/// Whether no statement writes into the column of a field.
bool only_reads(const CompiledScript& script, uint32_t id) {
  return id < DataTable::first_auxiliary_id && !script.sets_variables &&
         std::ranges::find(script.statement_list, id, &Variable::column_id) ==
             script.statement_list.end();
}

/// Whether a statement may see the column of the keys. Trade signals do, and notices tell it.
bool reads_keys(const CompiledScript& script) {
  return script.sets_variables || script.extra_field_set.contains(int32_t{time_column_id}) ||
         std::ranges::any_of(script.variable_list, [](const Variable* variable) {
           return variable->function != nullptr &&
                  variable->function->traits().has_any(trades | acts);
         });
}

/// Whether another bar may change what a call gave at bars before.
bool follows_later_bars(const CompiledScript& script) {
  return std::ranges::any_of(script.variable_list, [](const Variable* variable) {
    return variable->function != nullptr &&
           traits_of(*variable).has_any(in_full | reads_forward | follows_rows);
  });
}

Report report_of(const DataPoolCenter& pool, std::string text) {
  Report report;
  report.failure = failure_of_report(text);
  report.text = std::move(text);
  if (report.failure) return report;
  report.look_back = pool.script.max_period_count;
  report.fields.assign(pool.script.extra_field_set.begin(), pool.script.extra_field_set.end());
  std::ranges::sort(report.fields);
  add_references(report.references, Reference::Kind::security, pool.script.cross_security_map);
  add_references(report.references, Reference::Kind::period, pool.script.cross_period_map);
  add_references(report.references, Reference::Kind::quote, pool.script.realtime_map);
  report.needs_market_constants = pool.script.needs_extra_data;
  report.needs_calendar = pool.script.needs_trade_day;
  report.has_notices = pool.script.contains_notice;
  return report;
}

}  // namespace

struct Script::Body {
  Body(std::string text, Settings given)
      : script(std::move(text)),
        settings(std::move(given)),
        parameters(parameters_json(settings.parameters)) {
    for (const auto& [word, id] : settings.fields) parser.create_reserved_field(word, id);
    parser.pool().listener = &recorder;
    compile();
  }

  void compile() {
    set_subject();
    report = report_of(parser.pool(), parser.pre_parse(script, parameters, settings.lines));
    source = script;
    if (report.failure) return;
    if (!settings.condition.empty()) compile_with_condition();
    if (report.failure) return;
    state_outlasts_bars = outlasts_bars(parser.pool().script);
    list_lines();
    if (settings.draws) return;
    leave_lines_undrawn(parser.pool());
    for (Line& line : lines) {
      if (line.look) line.look->marks = -1;
    }
  }

  /// The script alone has compiled, so that a failure now is the condition's.
  void compile_with_condition() {
    source = with_condition(script, settings.condition);
    report = report_of(parser.pool(), parser.pre_parse(source, parameters, settings.lines));
    report.failure.in_condition = static_cast<bool>(report.failure);
  }

  void list_lines() {
    lines = lines_of(parser.pool(), parser.drawings());
    const auto condition = std::ranges::find(lines, condition_name, &Line::name);
    condition_column.reset();
    if (condition != lines.end()) {
      condition_column = condition->column;
      lines.erase(condition);
    } else if (!settings.condition.empty()) {
      throw Misuse("the script swallows the condition behind it");
    }
  }

  void set_subject() {
    const Subject& subject = settings.subject;
    DataPoolCenter& pool = parser.pool();
    pool.set_extra_info(static_cast<int32_t>(subject.period), subject.security, subject.market,
                        subject.time_zone);
    pool.min_price = subject.min_price;
    pool.unit = subject.unit;
    pool.share_count_per_unit = subject.share_count_per_unit;
    pool.extra_data_stale = false;
    pool.trade_time_callback = subject.is_trading ? always_trading : nullptr;
  }

  /// Market and period decide which fields and references the script reads.
  bool needs_compile_for(const Subject& subject) const {
    const Subject& now = settings.subject;
    return state_outlasts_bars || subject.period != now.period || subject.market != now.market ||
           subject.time_zone != now.time_zone;
  }

  void forget_run() {
    recorder.clear();
    events.clear();
    events_are_told = true;
    answer.clear();
  }

  void take_in(std::span<const int64_t> keys, std::span<const Field> fields, bool may_be_lent);

  void require_compiled() const {
    require(!report.failure, "the script has an error, so that it can't take or calculate bars");
  }

  const DataTable& table() { return parser.pool().table(); }

  std::string script;
  std::string source;  ///< the script with the condition
  Settings settings;
  std::string parameters;
  ScriptParser parser;
  EventRecorder recorder;
  Report report;
  bool state_outlasts_bars = false;  ///< so that other bars need a compile anew
  std::vector<Line> lines;
  std::optional<uint32_t> condition_column;
  std::string answer;
  std::vector<Event> events;
  bool events_are_told = true;       ///< so that `events` are those of the last calculation
  std::vector<FieldColumn> columns;  ///< of the intake under way
};

Script::Script(std::string source, Settings settings)
    : body_(std::make_unique<Body>(std::move(source), std::move(settings))) {}
Script::~Script() = default;
Script::Script(Script&&) noexcept = default;
Script& Script::operator=(Script&&) noexcept = default;

const Report& Script::report() const { return body_->report; }
const std::string& Script::source() const { return body_->source; }
const std::string& Script::parameters() const { return body_->parameters; }
const std::string& Script::answer() const { return body_->answer; }

void Script::set_rows(std::span<const int64_t> keys, std::span<const Field> fields) {
  body_->take_in(keys, fields, false);
}

void Script::lend_rows(std::span<const int64_t> keys, std::span<const Field> fields) {
  body_->take_in(keys, fields, true);
}

void Script::Body::take_in(std::span<const int64_t> keys, std::span<const Field> fields,
                           bool may_be_lent) {
  require_compiled();
  require(keys.size() <= std::numeric_limits<int32_t>::max(), "more rows than a table holds");
  const CompiledScript& compiled = parser.pool().script;
  columns.clear();
  for (const Field& field : fields) {
    require(field.values.size() == keys.size(), "a field needs one value for each row key");
    require(std::ranges::find(columns, field.column, &FieldColumn::id) == columns.end(),
            "a field is given twice");
    columns.push_back(
        {field.column, field.values.data(), may_be_lent && only_reads(compiled, field.column)});
  }
  parser.add_columns(keys, columns, !may_be_lent || reads_keys(compiled));
}

void Script::clear_rows() { body_->parser.pool().table().clear_rows(); }

void Script::restart(const Subject& subject) {
  Body& body = *body_;
  const bool compile_anew = body.needs_compile_for(subject);
  body.settings.subject = subject;
  body.forget_run();
  if (compile_anew) {
    body.compile();
  } else {
    body.set_subject();
    clear_rows();
  }
}

void Script::restart_with(std::vector<std::pair<std::string, double>> parameters) {
  Body& body = *body_;
  body.parameters = parameters_json(parameters);
  body.settings.parameters = std::move(parameters);
  body.forget_run();
  body.compile();
}

Failure Script::calculate(uint32_t first_row, bool with_events) {
  Body& body = *body_;
  body.require_compiled();
  require(first_row <= std::numeric_limits<int32_t>::max(), "no such row");
  body.recorder.clear();
  std::optional<CalendarOfThisThread> calendar;
  if (body.report.needs_calendar) {
    const Subject& subject = body.settings.subject;
    calendar.emplace(subject.security, subject.market, subject.calendar);
  }
  body.events_are_told = false;
  body.answer = body.parser.exec(static_cast<int32_t>(first_row), with_events);
  return failure_of_answer(body.answer);
}

bool Script::follows_later_bars() const {
  return engine::follows_later_bars(body_->parser.pool().script);
}

uint32_t Script::row_count() const { return static_cast<uint32_t>(body_->table().row_count()); }

int64_t Script::key_of(uint32_t row) const {
  require(row < row_count(), "no such row");
  return body_->table().key(static_cast<int32_t>(row));
}

std::optional<uint32_t> Script::row_of(int64_t key) const {
  const uint32_t row = body_->table().row_index_of(key);
  if (row >= row_count()) return std::nullopt;
  return row;
}

std::span<const double> Script::column(uint32_t id) const {
  body_->parser.pool().table().write_blanks();
  const int32_t index = body_->table().column_index_of(id);
  require(index != -1, "no such column");
  return body_->table().cells(index);
}

void FreeColumn::operator()(double* cells) const { FreeLines()(cells); }

std::vector<TakenColumn> Script::take_columns(std::span<const uint32_t> ids) {
  DataTable& table = body_->parser.pool().table();
  std::vector<TakenColumn> columns;
  std::vector<int32_t> taken;
  std::vector<size_t> places;
  for (const uint32_t id : ids) {
    const auto cells = column(id);
    const int32_t index = table.column_index_of(id);
    auto& copy = columns.emplace_back();
    if (id >= DataTable::first_auxiliary_id && std::ranges::find(taken, index) == taken.end()) {
      places.push_back(columns.size() - 1);
      taken.push_back(index);
    } else {
      copy.reset(line_aligned_numbers(cells.size()).release());
      std::ranges::copy(cells, copy.get());
    }
  }
  auto given = table.take_columns(taken);
  for (size_t i = 0; i < given.size(); ++i) columns[places[i]].reset(given[i].release());
  return columns;
}

const std::vector<Line>& Script::lines() const { return body_->lines; }

bool Script::has_condition() const { return body_->condition_column.has_value(); }

uint32_t Script::condition_column() const {
  require(body_->condition_column.has_value(), "the script has no condition");
  return *body_->condition_column;
}

std::vector<std::string> Script::shapes() const {
  std::vector<std::string> texts;
  for (const auto& record : body_->parser.drawings().records()) {
    texts.push_back(record->ToJsonText());
  }
  return texts;
}

std::vector<Record> Script::records() const {
  std::vector<Record> records;
  for (const auto& record : body_->parser.drawings().records()) {
    records.push_back(values_of(*record));
  }
  return records;
}

const std::vector<Event>& Script::events() const {
  Body& body = *body_;
  if (!body.events_are_told) {
    body.events = body.recorder.events(body.table(), body.parser.drawings());
    body.events_are_told = true;
  }
  return body.events;
}

std::vector<std::string> Script::words() const {
  const auto& words = body_->parser.pool().script.invoked_functions;
  return {words.begin(), words.end()};
}

}  // namespace quor::engine
