#include "drawing/drawing_frame.h"

#include <cmath>
#include <functional>

#include "core/call.h"
#include "core/column_owners.h"
#include "core/columns.h"
#include "drawing/colour_text.h"
#include "platform/processor.h"
#include "text/numbers.h"

namespace quor {
namespace {

double zero_mark(double condition) { return mark_of(condition != 0.0); }
/// What has no whole part at all, a null or too large a number, doesn't truncate to 0 either.
double int_mark(double condition) { return mark_of(!(std::fabs(condition) < 1.0)); }

const double* mark_of_last_row(const ColumnCall& call) {
  double* const marks = call.scratch();
  std::fill_n(marks, call.size(), mark_of(false));
  if (call.rows.end == call.table().row_count()) marks[call.size() - 1] = mark_of(true);
  return marks;
}

template <double mark(double condition)>
const double* marks_of(const ColumnCall& call, const double* conditions) {
  double* const marks = call.scratch();
  wherever_wide([=, size = call.size()] {
    QUOR_ROWS_APART
    for (size_t i = 0; i < size; ++i) marks[i] = mark(conditions[i]);
  });
  return marks;
}

const double* negated(const ColumnCall& call, const double* values) {
  double* const opposites = call.scratch();
  std::transform(values, values + call.size(), opposites, std::negate());
  return opposites;
}

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
    Draft draft{.call = call, .record = row_.record(), .colour_word = {}};
    if (row_.adds_record) call.script().shapes.add(draft.record);
    const Status status = make_record(draft);
    if (failed(status)) return status;
    call.variable.shape = std::move(draft.record);
  }
  return call.scan ? Status::ok : write_bar(call, *call.variable.shape);
}

Status DrawingFunc::own_rules(Draft&) const { return Status::ok; }

Status DrawingFunc::make_record(Draft& draft) const {
  draft.record->TitleVisible = row_.title_visible;
  for (const DraftStep step : row_.order) {
    const Status status = make_step(step, draft);
    if (failed(status)) return status;
  }
  return Status::ok;
}

Status DrawingFunc::make_step(DraftStep step, Draft& draft) const {
  switch (step) {
    case DraftStep::title:
      set_title(draft, row_.title);
      return Status::ok;
    case DraftStep::own:
      return own_rules(draft);
    case DraftStep::constants:
      return read_constants(draft);
    case DraftStep::colours:
      return resolve_colours(draft);
    case DraftStep::columns:
      return make_columns(draft);
    case DraftStep::items:
      return read_items(draft, row_.items, row_.items_from);
    case DraftStep::values:
      return bind_values(draft);
  }
  return Status::ok;
}

Status DrawingFunc::read_constants(Draft& draft) const {
  for (const Constant& constant : row_.constants) {
    double value;
    const Status status = evaluate(draft.call, constant.argument, value);
    if (failed(status)) return status;
    if (constant.accepts != nullptr && !constant.accepts(value)) {
      return draft.call.fail(Status::bad_constant, constant.suffix);
    }
    constant.store(draft, value);
  }
  return Status::ok;
}

Status DrawingFunc::resolve_colours(Draft& draft) const {
  for (const Colour& colour : row_.colours) {
    std::string_view word = draft.colour_word;
    const bool no_item = word.empty();
    if (colour.from == ColourFrom::argument ||
        (colour.from == ColourFrom::item_or_argument && no_item)) {
      word = draft.call.argument(colour.argument).text;
    } else if (no_item) {
      if (colour.from != ColourFrom::item_or_auto) continue;
      word = "COLORAUTO";
    } else if (colour.from == ColourFrom::item_not_auto && word == "COLORAUTO") {
      continue;
    }
    const Status status = read_colour(draft, word, colour.field(*draft.record));
    if (failed(status)) return status;
  }
  return Status::ok;
}

Status DrawingFunc::make_columns(Draft& draft) const {
  if (row_.columns.empty()) return Status::ok;
  Variable& call = draft.call.variable;
  reserve_columns(call, row_.columns.size());
  size_t position = 0;
  for (const Column& column : row_.columns) {
    const uint32_t id = call.aux_column_ids[position++];
    if (column.field != nullptr) column.field(*draft.record) = static_cast<int32_t>(id);
  }
  return Status::ok;
}

Status DrawingFunc::bind_values(Draft& draft) const {
  for (const Value& value : row_.values) {
    Variable& argument = draft.call.argument(value.argument);
    if (value.title != nullptr) value.title(*draft.record) = argument.source_text;
    bind_value_field(argument, value.field(*draft.record));
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
  set_call_column(call, position, fill_of(record, column.fill, value));
  return Status::ok;
}

bool DrawingFunc::by_columns() const { return has_usual_bars() && !row_.last_row_only; }

ColumnTraits DrawingFunc::column_traits() const {
  return {.passes_over = !by_columns(),
          .revisits = !by_columns(),
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
    call.write(argument->aux_column_indexes[0], values);
  }
  const bool written = std::ranges::all_of(
      filled_columns_, [&](size_t position) { return write_column(call, position); });
  return written ? call.everywhere(call.start) : nullptr;
}

/// What belongs in the cell of a column that an argument fills.
double DrawingFunc::fill_of(BaseShape& record, Fill fill, double value) const {
  if (fill == Fill::number) return value;
  if (fill == Fill::negated) return -value;
  if (!is_drawn(record)) return hidden_mark;
  return fill == Fill::zero_mark ? zero_mark(value) : int_mark(value);
}

const double* DrawingFunc::fill_of(const ColumnCall& call, Fill fill, const double* values) const {
  if (fill == Fill::number) return values;
  if (fill == Fill::negated) return negated(call, values);
  if (!is_drawn(*call.variable.shape)) return call.everywhere(hidden_mark);
  return fill == Fill::zero_mark ? marks_of<zero_mark>(call, values)
                                 : marks_of<int_mark>(call, values);
}

bool DrawingFunc::write_column(const ColumnCall& call, size_t position) const {
  const Column& column = row_.columns.begin()[position];
  const auto& own = call.variable.aux_column_indexes;
  if (column.fill == Fill::last_row) {
    if (position < own.size()) call.write(own[position], mark_of_last_row(call));
    return position < own.size();
  }
  const Variable* argument = call.argument(column.argument);
  if (argument == nullptr) return false;
  if (column.fill != Fill::negated && argument->text.empty()) return true;
  const double* values = call.values(column.argument);
  if (values == nullptr || position >= own.size()) return false;
  if (const std::optional<double> number = call.number(column.argument)) {
    call.write(own[position], fill_of(*call.variable.shape, column.fill, *number));
  } else {
    call.write(own[position], fill_of(call, column.fill, values));
  }
  return true;
}

void set_title(Draft& draft, Title title) {
  if (title == Title::serial) {
    draft.record->Field1Text = draft.call.script().shapes.title_of(*draft.record);
  } else if (title == Title::automatic) {
    draft.record->Field1Text = draft.call.script().auto_line_name();
  }
}

Status read_items(Draft& draft, const Items& items, size_t from) {
  for (size_t i = from; i < draft.call.argument_count(); ++i) {
    const std::string_view text = draft.call.argument(i).text;
    for (const Item item : items) {
      const std::optional<Status> status = item(draft, text);
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

void reserve_visibility_column(Draft& draft) {
  Variable& call = draft.call.variable;
  reserve_columns(call, 1);
  draft.record->Field1VisibleId = static_cast<int32_t>(call.aux_column_ids[0]);
}

Status read_colour(Draft& draft, std::string_view word, std::string& text) {
  return colour_text(draft.call.pool, word, draft.call.error, text);
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

std::optional<Status> no_text(Draft& draft, std::string_view text) {
  if (text != "NOTEXT") return std::nullopt;
  draft.record->TitleVisible = 0;
  return Status::ok;
}

std::optional<Status> title_visible(Draft& draft, std::string_view text) {
  if (text != "TITLEVISIBLE") return std::nullopt;
  draft.record->TitleVisible = 1;
  return Status::ok;
}

std::optional<Status> precis(Draft& draft, std::string_view text) {
  if (!text.starts_with("PRECIS")) return std::nullopt;
  draft.record->Digit = digits_of(text);
  return Status::ok;
}

std::optional<Status> kept_colour(Draft& draft, std::string_view text) {
  if (!text.starts_with("COLOR")) return std::nullopt;
  draft.colour_word = text;
  return Status::ok;
}

std::optional<Status> align(Draft& draft, std::string_view text) {
  if (!text.starts_with("ALIGN")) return std::nullopt;
  return align_of(draft.call, text, "ALIGN", field<&TextShape::HorizontalAlign>(*draft.record));
}

std::optional<Status> valign(Draft& draft, std::string_view text) {
  if (!text.starts_with("VALIGN")) return std::nullopt;
  return align_of(draft.call, text, "VALIGN", field<&TextShape::VerticalAlign>(*draft.record));
}

std::optional<Status> font_size(Draft& draft, std::string_view text) {
  if (!text.starts_with("FONTSIZE")) return std::nullopt;
  field<&TextShape::FontSize>(*draft.record) = font_size_of(text);
  return Status::ok;
}

}  // namespace quor
