#include "drawing/drawing_frame.h"

#include <functional>

#include "core/call.h"
#include "core/columns.h"
#include "core/column_owners.h"
#include "drawing/colour_text.h"
#include "text/numbers.h"

namespace quor {
namespace {

double zero_mark(double condition) { return mark_of(condition != 0.0); }
double int_mark(double condition) { return mark_of(to_int(condition) != 0); }

}  // namespace

DrawingFunc::DrawingFunc(const WordRow& word, const DrawingRow& row) : BaseFunc(word), row_(row) {
  // Numbers first, then marks.
  for (const bool numbers : {true, false}) {
    for (size_t i = 0; i < row.columns.size(); ++i) {
      const Fill fill = row.columns.begin()[i].fill;
      const bool is_number = fill == Fill::number || fill == Fill::negated;
      if (fill != Fill::own && is_number == numbers) filled_columns_.push_back(i);
    }
  }
}

Status DrawingFunc::execute(const Call& call) const {
  if (call.scan) {
    const Status status = call.check_count(row_.count.least, row_.count.most);
    if (failed(status)) return status;
  }
  if (call.variable.shape == nullptr) {
    Making making{.call = call, .record = row_.record(), .colour_word = {}};
    if (row_.adds_record) call.script().shapes.add(making.record);
    const Status status = make_record(making);
    if (failed(status)) return status;
    call.variable.shape = std::move(making.record);
  }
  return call.scan ? Status::ok : write_bar(call, *call.variable.shape);
}

Status DrawingFunc::own_rules(Making&) const { return Status::ok; }

Status DrawingFunc::make_record(Making& making) const {
  making.record->TitleVisible = row_.title_visible;
  for (const MakingStep step : row_.order) {
    const Status status = make_step(step, making);
    if (failed(status)) return status;
  }
  return Status::ok;
}

Status DrawingFunc::make_step(MakingStep step, Making& making) const {
  switch (step) {
    case MakingStep::title:
      set_title(making, row_.title);
      return Status::ok;
    case MakingStep::own:
      return own_rules(making);
    case MakingStep::constants:
      return read_constants(making);
    case MakingStep::colours:
      return resolve_colours(making);
    case MakingStep::columns:
      return make_columns(making);
    case MakingStep::items:
      return read_items(making, row_.items, row_.items_from);
    case MakingStep::values:
      return bind_values(making);
  }
  return Status::ok;
}

Status DrawingFunc::read_constants(Making& making) const {
  for (const Constant& constant : row_.constants) {
    double value;
    const Status status = evaluate(making.call, constant.argument, value);
    if (failed(status)) return status;
    if (constant.accepts != nullptr && !constant.accepts(value)) {
      return making.call.fail(Status::bad_constant, constant.suffix);
    }
    constant.store(making, value);
  }
  return Status::ok;
}

Status DrawingFunc::resolve_colours(Making& making) const {
  for (const Colour& colour : row_.colours) {
    std::string_view word = making.colour_word;
    const bool no_item = word.empty();
    if (colour.from == ColourFrom::argument ||
        (colour.from == ColourFrom::item_or_argument && no_item)) {
      word = making.call.argument(colour.argument).text;
    } else if (no_item) {
      if (colour.from != ColourFrom::item_or_auto) continue;
      word = "COLORAUTO";
    } else if (colour.from == ColourFrom::item_not_auto && word == "COLORAUTO") {
      continue;
    }
    const Status status = read_colour(making, word, colour.field(*making.record));
    if (failed(status)) return status;
  }
  return Status::ok;
}

Status DrawingFunc::make_columns(Making& making) const {
  if (row_.columns.empty()) return Status::ok;
  Variable& call = making.call.variable;
  reserve_columns(call, row_.columns.size());
  size_t position = 0;
  for (const Column& column : row_.columns) {
    const uint32_t id = call.aux_column_ids[position++];
    if (column.field != nullptr) column.field(*making.record) = static_cast<int32_t>(id);
  }
  return Status::ok;
}

Status DrawingFunc::bind_values(Making& making) const {
  for (const Value& value : row_.values) {
    Variable& argument = making.call.argument(value.argument);
    if (value.title != nullptr) value.title(*making.record) = argument.source_text;
    bind_value_field(argument, value.field(*making.record));
  }
  return Status::ok;
}

// Runs at every bar, so all of its steps are one piece of code.
[[gnu::flatten]] Status DrawingFunc::write_bar(const Call& call, BaseShape& record) const {
  if (row_.last_row_only && !is_last_row(call)) return Status::ok;
  const Status status = store_values(call);
  return failed(status) ? status : write_columns(call, record);
}

Status DrawingFunc::store_values(const Call& call) const {
  for (const Value& bound : row_.values) {
    const Variable& argument = call.argument(bound.argument);
    if (argument.aux_column_indexes.empty()) continue;
    double value;
    const Status status = evaluate(call, bound.argument, value);
    if (failed(status)) return status;
    call.table().set_cell(call.row, argument.aux_column_indexes[0], value);
  }
  return Status::ok;
}

Status DrawingFunc::write_columns(const Call& call, BaseShape& record) const {
  for (const size_t position : filled_columns_) {
    const Status status = write_column(call, record, position);
    if (failed(status)) return status;
  }
  return Status::ok;
}

Status DrawingFunc::write_column(const Call& call, BaseShape& record, size_t position) const {
  const Column& column = row_.columns.begin()[position];
  if (column.fill == Fill::last_row) {
    set_call_column(call, position, mark_of(is_last_row(call)));
    return Status::ok;
  }
  if (column.fill != Fill::negated && call.argument(column.argument).text.empty())
    return Status::ok;
  double value;
  const Status status = evaluate(call, column.argument, value);
  if (failed(status)) return status;
  if (column.fill == Fill::negated) {
    value = -value;
  } else if (column.fill != Fill::number) {
    const double mark = column.fill == Fill::zero_mark ? zero_mark(value) : int_mark(value);
    value = is_drawn(record) ? mark : hidden_mark;
  }
  set_call_column(call, position, value);
  return Status::ok;
}

ColumnTraits DrawingFunc::column_traits() const {
  return {.by_columns = has_usual_bars() && !row_.last_row_only,
          .series = SeriesPlace::column_of_argument,
          .series_count = SIZE_MAX};
}

bool DrawingFunc::reads_argument(size_t position) const {
  const auto is_it = [position](const auto& entry) { return entry.argument == position; };
  return std::ranges::any_of(row_.values, is_it) ||
         std::ranges::any_of(row_.columns, [&](const Column& column) {
           return column.fill != Fill::last_row && column.fill != Fill::own && is_it(column);
         });
}

const double* DrawingFunc::column(const ColumnCall& call) const {
  if (call.variable.shape == nullptr) return nullptr;
  for (const Value& bound : row_.values) {
    const Variable* argument = call.argument(bound.argument);
    if (argument == nullptr) return nullptr;
    if (argument->aux_column_indexes.empty()) continue;
    const double* values = call.values(bound.argument);
    if (values == nullptr) return nullptr;
    std::copy_n(values, call.size(), call.overwrite(argument->aux_column_indexes[0]));
  }
  const bool written = std::ranges::all_of(
      filled_columns_, [&](size_t position) { return write_column(call, position); });
  return written ? call.everywhere(call.start) : nullptr;
}

bool DrawingFunc::write_column(const ColumnCall& call, size_t position) const {
  const Column& column = row_.columns.begin()[position];
  const Variable* argument = call.argument(column.argument);
  if (column.fill == Fill::last_row || argument == nullptr) return false;
  if (column.fill != Fill::negated && argument->text.empty()) return true;
  const double* values = call.values(column.argument);
  const auto& own = call.variable.aux_column_indexes;
  if (values == nullptr || position >= own.size()) return false;
  double* cells = call.overwrite(own[position]);
  const size_t size = call.size();
  if (column.fill == Fill::number) {
    std::copy_n(values, size, cells);
  } else if (column.fill == Fill::negated) {
    std::transform(values, values + size, cells, std::negate());
  } else if (!is_drawn(*call.variable.shape)) {
    std::fill_n(cells, size, hidden_mark);
  } else if (column.fill == Fill::zero_mark) {
    std::transform(values, values + size, cells, zero_mark);
  } else {
    std::transform(values, values + size, cells, int_mark);
  }
  return true;
}

void set_title(Making& making, Title title) {
  if (title == Title::serial) {
    making.record->Field1Text = making.call.script().shapes.title_of(*making.record);
  } else if (title == Title::automatic) {
    making.record->Field1Text = making.call.script().auto_line_name();
  }
}

Status read_items(Making& making, const Items& items, size_t from) {
  for (size_t i = from; i < making.call.argument_count(); ++i) {
    const std::string_view text = making.call.argument(i).text;
    for (const Item item : items) {
      const std::optional<Status> status = item(making, text);
      if (!status) continue;
      if (failed(*status)) return *status;
      break;
    }
  }
  return Status::ok;
}

void bind_value_field(Variable& argument, int32_t& field) {
  if (argument.text.empty()) return;
  // A negative id is that of an argument, not of a column.
  if (static_cast<int32_t>(argument.column_id) < 0) {
    reserve_columns(argument, 1);
    field = static_cast<int32_t>(argument.aux_column_ids[0]);
  } else {
    field = static_cast<int32_t>(argument.column_id);
  }
}

void reserve_visibility_column(Making& making) {
  Variable& call = making.call.variable;
  reserve_columns(call, 1);
  making.record->Field1VisibleId = static_cast<int32_t>(call.aux_column_ids[0]);
}

Status read_colour(Making& making, std::string_view word, std::string& text) {
  return colour_text(making.call.pool, word, making.call.error, text);
}

int32_t standard_integer(std::string_view text) {
  const size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) return 0;
  text.remove_prefix(start);
  return leading_integer(text.substr(0, text.find_first_of("xX")));
}

namespace {

std::string_view behind(std::string_view word, std::string_view prefix) {
  return word.substr(std::min(prefix.size(), word.size()));
}

int32_t bounded_integer(std::string_view text, int32_t least, int32_t most) {
  if (text.empty()) return -1;
  const int32_t number = standard_integer(text);
  return number < least || number > most ? -1 : number;
}

int32_t digits_of(std::string_view word) { return bounded_integer(behind(word, "PRECIS"), 0, 6); }

int32_t font_size_of(std::string_view word) {
  return bounded_integer(behind(word, "FONTSIZE"), 8, 72);
}

/// The one digit behind the prefix, 0 to 2; else status 2012. A sign that is no digit throws.
Status align_of(const Call& call, std::string_view word, std::string_view prefix, int32_t& align) {
  const std::string_view sign = behind(word, prefix);
  if (sign.size() == 1) {
    const int32_t number = parse_integer(sign);
    if (number <= 2) {
      align = number;
      return Status::ok;
    }
  }
  append_error(call.error, "get_num_val." + std::string(prefix), call.variable.line);
  return Status::bad_constant;
}

}  // namespace

float line_width_of(std::string_view word) {
  const auto width = static_cast<float>(leading_number_after_blanks(behind(word, "LINETHICK")));
  return width >= 1.0F && width <= 9.0F ? width : 1.0F;
}

std::optional<Status> no_text(Making& making, std::string_view text) {
  if (text != "NOTEXT") return std::nullopt;
  making.record->TitleVisible = 0;
  return Status::ok;
}

std::optional<Status> title_visible(Making& making, std::string_view text) {
  if (text != "TITLEVISIBLE") return std::nullopt;
  making.record->TitleVisible = 1;
  return Status::ok;
}

std::optional<Status> precis(Making& making, std::string_view text) {
  if (!text.starts_with("PRECIS")) return std::nullopt;
  making.record->Digit = digits_of(text);
  return Status::ok;
}

std::optional<Status> kept_colour(Making& making, std::string_view text) {
  if (!text.starts_with("COLOR")) return std::nullopt;
  making.colour_word = text;
  return Status::ok;
}

std::optional<Status> align(Making& making, std::string_view text) {
  if (!text.starts_with("ALIGN")) return std::nullopt;
  return align_of(making.call, text, "ALIGN", field<&TextShape::HorizontalAlign>(*making.record));
}

std::optional<Status> valign(Making& making, std::string_view text) {
  if (!text.starts_with("VALIGN")) return std::nullopt;
  return align_of(making.call, text, "VALIGN", field<&TextShape::VerticalAlign>(*making.record));
}

std::optional<Status> font_size(Making& making, std::string_view text) {
  if (!text.starts_with("FONTSIZE")) return std::nullopt;
  field<&TextShape::FontSize>(*making.record) = font_size_of(text);
  return Status::ok;
}

}  // namespace quor
