// The frame of the drawing words. A word is described by a row: how many arguments it takes, which
// of them are prices, conditions, constants and colours, which style items it reads, and where all
// of it goes. The frame makes the record on the first pass and writes the columns at each bar; a
// class adds code only where its word has a rule of its own.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/base_func.h"
#include "core/call.h"
#include "core/value.h"
#include "drawing/shapes.h"

namespace quor {

/// A short list inside a constant.
template <typename T, size_t capacity>
class ShortList {
 public:
  constexpr ShortList() = default;
  constexpr ShortList(std::initializer_list<T> list) : size_(list.size()) {
    std::copy(list.begin(), list.end(), entries_.begin());
  }
  constexpr const T* begin() const { return entries_.data(); }
  constexpr const T* end() const { return entries_.data() + size_; }
  constexpr size_t size() const { return size_; }
  constexpr bool empty() const { return size_ == 0; }

 private:
  std::array<T, capacity> entries_{};
  size_t size_ = 0;
};

/// A field of a record, reached through the base.
template <typename T>
using FieldOf = T& (*)(BaseShape& record);

template <typename Member>
struct MemberTypes;
template <typename Record, typename T>
struct MemberTypes<T Record::*> {
  using record = Record;
  using type = T;
};

template <auto member>
typename MemberTypes<decltype(member)>::type& field(BaseShape& record) {
  return static_cast<typename MemberTypes<decltype(member)>::record&>(record).*member;
}

/// A record of a class whose `Style` is not the default one.
template <typename Record, auto style>
std::shared_ptr<BaseShape> styled() {
  auto record = std::make_shared<Record>();
  record->Style = style;
  return record;
}

template <typename Record>
std::shared_ptr<BaseShape> plain() {
  return std::make_shared<Record>();
}

/// A record that its call is making.
struct Draft {
  const Call& call;
  std::shared_ptr<BaseShape> record;
  std::string colour_word;  ///< kept by an item until the colours are resolved
  double number = 0;        ///< a constant kept for the next one
};

struct Count {
  size_t least;
  size_t most;
};
constexpr Count at_least(size_t count) { return {count, SIZE_MAX}; }
constexpr Count exactly(size_t count) { return {count, count}; }

enum class Title : uint8_t {
  serial,     ///< the record's name and its number among the records of that name
  automatic,  ///< a name that hosts don't show
  own,        ///< given by the word
};

/// A price: the record's field takes the argument's column, or a new one that is written per bar.
struct Value {
  size_t argument;
  FieldOf<int32_t> field;
  FieldOf<std::string> title = nullptr;  ///< takes the argument as the script wrote it
};

/// What the column of a call gets per bar.
enum class Fill : uint8_t {
  zero_mark,  ///< shown unless the condition is 0.0; a null is not 0.0
  int_mark,   ///< shown unless the condition truncates to 0
  last_row,   ///< shown at the last row only
  number,     ///< the argument as it is, if it has a text
  negated,    ///< the argument with its sign turned
  own,        ///< written by the word
};

struct Column {
  FieldOf<int32_t> field;  ///< null for a column that no field of the record names
  Fill fill;
  size_t argument = 0;
};

/// An argument that is evaluated once, at the first pass.
struct Constant {
  size_t argument;
  void (*store)(Draft& draft, double value);
  bool (*accepts)(double value) = nullptr;  ///< null accepts everything
  std::string_view suffix = {};             ///< of the refusal
};

/// A style item: gives no status for a text that is not its word, else the effect's status.
using Item = std::optional<Status> (*)(Draft& draft, std::string_view text);

enum class ColourFrom : uint8_t {
  argument,          ///< the text at a position
  item_or_argument,  ///< the item if any, else the text at a position
  item_or_auto,      ///< the item if any, else COLORAUTO
  item,              ///< the item if any
  item_not_auto,     ///< the item if any, COLORAUTO counting as none
};

struct Colour {
  FieldOf<std::string> field;
  ColourFrom from;
  size_t argument = 0;
};

/// The order in which a record is made shows in the ids of the columns, in the palette and in which
/// of two faults is reported.
enum class DraftStep : uint8_t { title, own, constants, colours, columns, items, values };
using Order = ShortList<DraftStep, 7>;

inline constexpr Order usual_order = {DraftStep::title,   DraftStep::own,     DraftStep::constants,
                                      DraftStep::colours, DraftStep::columns, DraftStep::items,
                                      DraftStep::values};
/// For words that keep a colour item until all items are read.
inline constexpr Order late_colour_order = {
    DraftStep::title, DraftStep::own,     DraftStep::constants, DraftStep::columns,
    DraftStep::items, DraftStep::colours, DraftStep::values};
/// For lines through bars and figures.
inline constexpr Order items_first_order = {
    DraftStep::title,   DraftStep::items, DraftStep::colours, DraftStep::constants,
    DraftStep::columns, DraftStep::own,   DraftStep::values};

using Items = ShortList<Item, 9>;

struct DrawingRow {
  Count count;
  std::shared_ptr<BaseShape> (*record)();
  Title title = Title::serial;
  int32_t title_visible = 0;
  ShortList<Value, 4> values = {};
  ShortList<Column, 4> columns = {};
  ShortList<Constant, 3> constants = {};
  ShortList<Colour, 2> colours = {};
  size_t items_from = 0;
  Items items = {};
  Order order = usual_order;
  FieldOf<bool> is_drawn = nullptr;  ///< while it is false every mark hides the record
  bool last_row_only = false;        ///< nothing is written at any other row
  bool ignores_status = false;       ///< an argument that fails reads as null
  bool adds_record = true;           ///< before its title is taken; else the word does it
};

class DrawingFunc : public BaseFunc {
 public:
  DrawingFunc(const WordRow& word, const DrawingRow& row);

  Status execute(const Call& call) const override;
  const double* column(const ColumnCall& call) const override;
  bool by_columns() const override;
  ColumnTraits column_traits() const override;
  /// Whether a bar evaluates the argument: the others are constants, colours and style items.
  bool reads_argument(size_t position) const override;

 protected:
  /// The step `own` of the order.
  virtual Status own_rules(Draft& draft) const;
  virtual Status write_bar(const Call& call, BaseShape& record) const;
  /// Whether `write_bar` is that of the frame.
  virtual bool has_usual_bars() const { return true; }
  /// A word whose forms differ in more than a row makes its record itself.
  virtual Status make_record(Draft& draft) const;

  Status evaluate(const Call& call, size_t position, double& value) const {
    value = null_value;
    const Status status = call.evaluate(position, value);
    if (!failed(status) || !row_.ignores_status) return status;
    value = null_value;
    return Status::ok;
  }
  Status store_values(const Call& call) const;
  Status write_columns(const Call& call, BaseShape& record) const;

  Status bind_values(Draft& draft) const;

 private:
  Status make_step(DraftStep step, Draft& draft) const;
  Status read_constants(Draft& draft) const;
  Status resolve_colours(Draft& draft) const;
  Status make_columns(Draft& draft) const;
  Status write_column(const Call& call, BaseShape& record, size_t position) const;
  bool write_column(const ColumnCall& call, size_t position) const;
  double fill_of(BaseShape& record, Fill fill, double value) const;
  const double* fill_of(const ColumnCall& call, Fill fill, const double* values) const;
  bool is_drawn(BaseShape& record) const {
    return row_.is_drawn == nullptr || row_.is_drawn(record);
  }

  const DrawingRow& row_;
  std::vector<size_t> filled_columns_;  ///< positions in the order in which a bar fills them
};

/// The base of the class of a word: a row given once and for all.
template <const DrawingRow& row>
class DrawingWord : public DrawingFunc {
 public:
  explicit DrawingWord(const WordRow& word) : DrawingFunc(word, row) {}
};

// Operations of the frame that words with rules of their own use too.

void set_title(Draft& draft, Title title);
/// Reads the arguments from a position on as style items; what no item takes is passed over.
Status read_items(Draft& draft, const Items& items, size_t from);
/// A field that is still -1 takes the argument's column: its own one, or a new one that
/// `store_value` fills. An argument without a text leaves it.
void bind_value_field(Variable& argument, int32_t& field);
/// Reserves the call's only column and gives its id to the record.
void reserve_visibility_column(Draft& draft);
/// Colour text of a word, as `colour_text` gives it.
Status read_colour(Draft& draft, std::string_view word, std::string& text);
inline double mark_of(bool shown) { return shown ? shown_mark : hidden_mark; }
inline bool is_last_row(const Call& call) { return call.row == call.table().row_count() - 1; }
/// Writes the call's own column at a position; one that is gone takes nothing.
inline void set_call_column(const Call& call, size_t position, double value) {
  const auto& columns = call.variable.aux_column_indexes;
  if (position < columns.size()) call.table().set_cell(call.row, columns[position], value);
}
/// The integer at the start of a decimal text, blanks in front passed over; 0 if there is none.
int32_t standard_integer(std::string_view text);

// Style items and the numbers in their words.

/// The number behind LINETHICK, from 1 to 9; else 1.
float line_width_of(std::string_view word);

std::optional<Status> no_text(Draft& draft, std::string_view text);
std::optional<Status> title_visible(Draft& draft, std::string_view text);
std::optional<Status> precis(Draft& draft, std::string_view text);
/// Keeps the last colour word for the step of the colours.
std::optional<Status> kept_colour(Draft& draft, std::string_view text);

// Items of a TextShape.
std::optional<Status> align(Draft& draft, std::string_view text);
std::optional<Status> valign(Draft& draft, std::string_view text);
std::optional<Status> font_size(Draft& draft, std::string_view text);

/// A colour word that counts at once.
template <auto member>
std::optional<Status> colour_item(Draft& draft, std::string_view text) {
  if (!text.starts_with("COLOR")) return std::nullopt;
  return read_colour(draft, text, field<member>(*draft.record));
}

template <auto member>
std::optional<Status> line_thick(Draft& draft, std::string_view text) {
  if (!text.starts_with("LINETHICK")) return std::nullopt;
  field<member>(*draft.record) = line_width_of(text);
  return Status::ok;
}

template <auto member>
std::optional<Status> dash(Draft& draft, std::string_view text) {
  const auto style = dash_style(text);
  if (!style) return std::nullopt;
  field<member>(*draft.record) = *style;
  return Status::ok;
}

template <auto member>
std::optional<Status> no_draw(Draft& draft, std::string_view text) {
  if (text != "NODRAW") return std::nullopt;
  field<member>(*draft.record) = false;
  return Status::ok;
}

// What a constant does with its number, and what it refuses.

template <auto member>
void as_int(Draft& draft, double value) {
  field<member>(*draft.record) = to_int(value);
}

template <auto member>
void as_number(Draft& draft, double value) {
  field<member>(*draft.record) = value;
}

template <auto member>
void as_flag(Draft& draft, double value) {
  field<member>(*draft.record) = value != 0.0 ? 1 : 0;
}

inline bool not_null(double value) { return !is_null(value); }

}  // namespace quor
