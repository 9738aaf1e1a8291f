#include "core/row_intake.h"

#include <simdjson.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <string>
#include <vector>

#include "platform/processor.h"
#include "tables/field_table.h"

namespace quor {
namespace {

namespace dom = simdjson::dom;

constexpr size_t no_place = static_cast<size_t>(-1);
/// The row key is the first of the places, required or not.
constexpr size_t row_key_place = 0;

/// Keys are a few digits: a loop is quicker than a call.
constexpr bool same_text(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

/// The host marks a missing value by one of two numbers.
constexpr double without_marks(double value) {
  if (value < 2147483648.0) return value;
  return value == 4294967295.0 || value == 2147483648.0 ? null_value : value;
}

double number_of(dom::element value) {
  double number = null_value;
  return value.get(number) == simdjson::SUCCESS ? without_marks(number) : null_value;
}

/// The ids of the columns that the script reads.
std::set<int32_t> required_ids(const DataPoolCenter& pool) {
  std::set<int32_t> ids = pool.script.extra_field_set;
  for (const auto* references : {&pool.script.cross_security_map, &pool.script.cross_period_map,
                                 &pool.script.realtime_map}) {
    for (const auto& [id, key] : *references) ids.insert(id);
  }
  return ids;
}

/// The keys of rows' objects and where their values go in a row of the batch. It serves text after
/// text, as long as the script and the columns stay the same.
class RowShape {
 public:
  /// Works out anew what the script requires, if that may have changed.
  void fit(const DataPoolCenter& pool, std::vector<int32_t>& column_indexes) {
    // Each compile makes columns, and each field that is declared later is another id.
    const size_t ids = pool.script.extra_field_set.size();
    if (pool.table().layout() == layout_ && ids == field_ids_) return;
    layout_ = no_layout;
    require(pool, column_indexes);
    field_ids_ = ids;
    layout_ = pool.table().layout();
  }

  /// The place of a field among the required ones; `no_place` for any other and for a key that the
  /// object has had. Objects of one text mostly have their keys in one order, so the answer of the
  /// object before is tried first.
  size_t place_of(size_t field, std::string_view key) {
    if (field == known_ || !same_text(key, fields_[field].key)) learn(field, key);
    return fields_[field].place;
  }

 private:
  static constexpr uint64_t no_layout = UINT64_MAX;

  struct Field {
    std::string key;
    size_t place;
  };

  void require(const DataPoolCenter& pool, std::vector<int32_t>& column_indexes) {
    std::set<int32_t> ids = required_ids(pool);
    const auto index_of = [&pool](int32_t id) {
      return pool.table().column_index_of(static_cast<uint32_t>(id));
    };
    const bool key_required = ids.erase(time_column_id) > 0;
    required_.assign(1, std::to_string(time_column_id));
    column_indexes.assign(1, key_required ? index_of(time_column_id) : -1);
    for (const int32_t id : ids) {
      required_.push_back(std::to_string(id));
      column_indexes.push_back(index_of(id));
    }
    first_field_.assign(required_.size(), 0);
    fields_.clear();
    known_ = 0;
    // Up to eight values of a row then lie in one cache line.
    column_indexes.resize(std::bit_ceil(column_indexes.size()), -1);
  }

  /// What the objects before had from this field on is of no use.
  void learn(size_t field, std::string_view key) {
    fields_.resize(field);
    const size_t place = find(key);
    const bool repeated = place != no_place && first_field_[place] < field &&
                          fields_[first_field_[place]].place == place;
    if (place != no_place && !repeated) first_field_[place] = field;
    fields_.push_back({std::string(key), repeated ? no_place : place});
    known_ = fields_.size();
  }

  size_t find(std::string_view key) const {
    const auto found = std::ranges::find(required_, key);
    return found == required_.end() ? no_place : static_cast<size_t>(found - required_.begin());
  }

  std::vector<std::string> required_;
  std::vector<size_t> first_field_;  ///< of a place; means something if that field has the place
  std::vector<Field> fields_;
  size_t known_ = 0;  ///< the size of `fields_`, asked for at every field
  uint64_t layout_ = no_layout;
  size_t field_ids_ = 0;
};

/// Reads objects into a batch, one row each.
class BatchReader {
 public:
  BatchReader(RowShape& shape, RowBatch& batch)
      : shape_(shape), width_(batch.column_indexes.size()), batch_(batch) {
    batch_.rows.clear();
  }

  void make_room(size_t rows) {
    batch_.rows.reserve(rows);
    if (batch_.values.size() < rows * width_) batch_.values.resize(rows * width_);
  }

  /// False for an element that ends the intake.
  bool read(dom::element element) {
    dom::object object;
    if (element.get(object) != simdjson::SUCCESS) return false;
    const size_t row = batch_.rows.size();
    if ((row + 1) * width_ > batch_.values.size()) make_room(2 * row + 1);
    double* values = batch_.values.data() + row * width_;
    std::fill_n(values, width_, null_value);
    std::optional<dom::element> row_key;
    size_t field = 0;
    for (const dom::key_value_pair entry : object) {
      const size_t place = shape_.place_of(field++, entry.key);
      if (place == no_place) continue;
      if (place == row_key_place) row_key = entry.value;
      values[place] = number_of(entry.value);
    }
    int64_t key = 0;
    if (!row_key || row_key->get(key) != simdjson::SUCCESS) return false;
    batch_.rows.push_back({key, static_cast<uint32_t>(row), 0});
    return true;
  }

 private:
  RowShape& shape_;
  size_t width_;
  RowBatch& batch_;
};

bool is_special(double value) { return !(value < 2147483648.0); }

bool is_plain(std::span<const double> cells) {
  // Looking at all of them is quicker than a search.
  int64_t specials = 0;
  wherever_wide([cells, &specials] {
    int64_t found = 0;
    for (const double cell : cells) found |= static_cast<int64_t>(is_special(cell));
    specials = found;
  });
  return specials == 0;
}

/// One form for all nulls. Most columns hold none and are only looked at.
void make_plain(std::span<double> cells) {
  if (is_plain(cells)) return;
  for (auto cell = cells.begin();; ++cell) {
    cell = std::find_if(cell, cells.end(), is_special);
    if (cell == cells.end()) return;
    const double value = without_marks(*cell);
    *cell = is_null(value) ? null_value : value;
  }
}

/// Keys as most hosts have them.
bool ascend(std::span<const int64_t> keys) {
  return !keys.empty() && keys.front() > 0 &&
         std::ranges::adjacent_find(keys, std::ranges::greater_equal()) == keys.end();
}

/// Where the values of arrays go in a row of the batch.
class ColumnShape {
 public:
  ColumnShape(const DataPoolCenter& pool, std::span<const FieldColumn> fields) {
    for (const int32_t id : required_ids(pool)) {
      const auto found = std::ranges::find(fields, static_cast<uint32_t>(id), &FieldColumn::id);
      sources_.push_back(found == fields.end() ? nullptr : found->values);
      may_be_lent_.push_back(found != fields.end() && found->may_be_lent);
      if (id == time_column_id) key_place_ = column_indexes_.size();
      column_indexes_.push_back(pool.table().column_index_of(static_cast<uint32_t>(id)));
    }
    column_indexes_.resize(std::bit_ceil(column_indexes_.size()), -1);
  }

  /// Into a table without rows, from keys that are positive and ascend.
  void fill(DataTable& table, std::span<const int64_t> keys, bool reads_keys) const {
    std::vector<ColumnValues> columns;
    for (size_t place = 0; place < sources_.size(); ++place) {
      if (sources_[place] == nullptr || place == key_place_ || column_indexes_[place] == -1)
        continue;
      const bool are_lent = may_be_lent_[place] && is_plain({sources_[place], keys.size()});
      columns.push_back({column_indexes_[place], sources_[place], are_lent});
    }
    table.fill(keys, columns, reads_keys);
    for (const ColumnValues& column : columns) {
      if (!column.are_lent) make_plain(table.writable_cells(column.column_index, 0));
    }
  }

  bool is_oversized(const RowBatch& batch, size_t rows) const {
    constexpr size_t always_kept = 1 << 17;
    return batch.values.size() > always_kept &&
           rows * column_indexes_.size() < batch.values.size() / 16;
  }

  void fill(RowBatch& batch, std::span<const int64_t> keys) const {
    const size_t width = column_indexes_.size();
    batch.column_indexes = column_indexes_;
    batch.rows.resize(keys.size());
    if (batch.values.size() < keys.size() * width) batch.values.resize(keys.size() * width);
    for (size_t row = 0; row < keys.size(); ++row) {
      batch.rows[row] = {keys[row], static_cast<uint32_t>(row), 0};
    }
    for (size_t place = 0; place < sources_.size(); ++place) {
      double* values = batch.values.data() + place;
      for (size_t row = 0; row < keys.size(); ++row, values += width) {
        *values = value_at(place, row, keys[row]);
      }
    }
  }

 private:
  /// The row key is its own column, whatever an array says.
  double value_at(size_t place, size_t row, int64_t key) const {
    if (place == key_place_) return without_marks(static_cast<double>(key));
    const double* source = sources_[place];
    const double value = source == nullptr ? null_value : without_marks(source[row]);
    return is_null(value) ? null_value : value;
  }

  std::vector<int32_t> column_indexes_;
  std::vector<const double*> sources_;  ///< null for a field that isn't there
  std::vector<bool> may_be_lent_;
  size_t key_place_ = no_place;
};

}  // namespace

/// Keeps its memory for the next text, which mostly is as long as the last one.
struct RowIntake::Parser {
  dom::parser json;
  std::vector<char> padded;
  RowBatch batch;
  RowShape shape;

  /// A history comes once, and then bars follow one by one: they don't need its memory.
  bool is_oversized_for(std::string_view text) const {
    constexpr size_t always_kept = 1 << 20;
    return padded.size() > always_kept && text.size() < padded.size() / 16;
  }

  /// The library reads beyond the end of a text, so it gets a copy with room there.
  simdjson::simdjson_result<dom::element> parse(std::string_view text) {
    const size_t size = text.size() + simdjson::SIMDJSON_PADDING;
    if (padded.size() < size) padded.resize(size);
    text.copy(padded.data(), text.size());
    return json.parse(padded.data(), text.size(), false);
  }
};

RowIntake::RowIntake() : parser_(std::make_unique<Parser>()) {}
RowIntake::~RowIntake() = default;

void RowIntake::add_row(DataPoolCenter& pool, std::string_view json) {
  const uint64_t uuid = pool.uuid;
  try {
    if (parser_->is_oversized_for(json)) parser_ = std::make_unique<Parser>();
    dom::array rows;
    const simdjson::error_code fault = parser_->parse(json).get(rows);
    // A parser that found no memory takes its missing buffers for real ones the next time.
    if (fault == simdjson::MEMALLOC) parser_->json = dom::parser();
    if (fault != simdjson::SUCCESS) {
      const bool text = simdjson::validate_utf8(json.data(), json.size());
      log(log_error,
          text ? "[ScriptParser::add_row] data_arr json parse error."
               : "[ScriptParser::add_row] data_arr is not utf-8 string.",
          uuid);
      return;
    }
    parser_->shape.fit(pool, parser_->batch.column_indexes);
    BatchReader reader(parser_->shape, parser_->batch);
    reader.make_room(rows.size());
    for (const dom::element row : rows) {
      if (!reader.read(row)) break;
    }
    pool.table().merge_rows(parser_->batch);
  } catch (const std::exception& fault) {
    log(log_error, std::string("[ScriptParser::add_row] exception occurs") + fault.what(), uuid);
  } catch (...) {
    log(log_unknown, "[ScriptParser::add_row] Unhandled error occurs.", uuid);
  }
}

void RowIntake::add_columns(DataPoolCenter& pool, std::span<const int64_t> keys,
                            std::span<const FieldColumn> fields, bool reads_keys) {
  RowBatch& batch = parser_->batch;
  const ColumnShape shape(pool, fields);
  if (pool.table().row_count() == 0 && ascend(keys)) {
    shape.fill(pool.table(), keys, reads_keys);
    return;
  }
  if (shape.is_oversized(batch, keys.size())) batch = RowBatch();
  shape.fill(batch, keys);
  pool.table().merge_rows(batch);
}

}  // namespace quor
