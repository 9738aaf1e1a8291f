#include "core/row_intake.h"

#include <simdjson.h>

#include <optional>
#include <string>
#include <vector>

namespace quor {
namespace {

namespace dom = simdjson::dom;

constexpr size_t no_place = static_cast<size_t>(-1);

/// The ids that the script requires, and where the values of a row go.
class RequiredFields {
 public:
  RequiredFields(DataPoolCenter& pool) {
    std::set<int32_t> ids = pool.extra_field_set;
    for (const auto* references :
         {&pool.cross_security_map, &pool.cross_period_map, &pool.realtime_map}) {
      for (const auto& [id, key] : *references) ids.insert(id);
    }
    for (const int32_t id : ids) {
      keys_.push_back(std::to_string(id));
      column_indexes_.push_back(pool.table().column_index_of(static_cast<uint32_t>(id)));
    }
  }

  const std::vector<int32_t>& column_indexes() const { return column_indexes_; }

  /// The place of a key among the required ones. Rows of one text mostly have their keys in one
  /// order, so the answer of the row before is tried first.
  size_t place_of(std::string_view key, size_t position) {
    if (position < guesses_.size()) {
      const Guess& guess = guesses_[position];
      if (guess.key == key) return guess.place;
    } else {
      guesses_.resize(position + 1);
    }
    guesses_[position] = {std::string(key), find(key)};
    return guesses_[position].place;
  }

 private:
  struct Guess {
    std::string key;
    size_t place = no_place;
  };

  size_t find(std::string_view key) const {
    for (size_t place = 0; place < keys_.size(); ++place) {
      if (keys_[place] == key) return place;
    }
    return no_place;
  }

  std::vector<std::string> keys_;
  std::vector<int32_t> column_indexes_;
  std::vector<Guess> guesses_;
};

/// The host marks a missing value by one of two numbers.
double without_marks(double value) {
  return value == 4294967295.0 || value == 2147483648.0 ? null_value : value;
}

double number_of(dom::element value) {
  switch (value.type()) {
    case dom::element_type::DOUBLE:
      return without_marks(double(value));
    case dom::element_type::INT64:
      return without_marks(static_cast<double>(int64_t(value)));
    case dom::element_type::UINT64:
      return without_marks(static_cast<double>(uint64_t(value)));
    default:
      return null_value;
  }
}

/// Reads objects into a batch, one row each.
class BatchReader {
 public:
  explicit BatchReader(DataPoolCenter& pool) : required_(pool) {
    batch_.column_indexes = required_.column_indexes();
    row_.resize(batch_.column_indexes.size());
    seen_.resize(row_.size());
  }

  const RowBatch& batch() const { return batch_; }
  void reserve(size_t rows) {
    batch_.keys.reserve(rows);
    batch_.values.reserve(rows * row_.size());
  }

  /// False for an element that ends the intake.
  bool read(dom::element element) {
    dom::object object;
    if (element.get(object) != simdjson::SUCCESS) return false;
    std::fill(row_.begin(), row_.end(), null_value);
    std::fill(seen_.begin(), seen_.end(), char{0});
    std::optional<dom::element> row_key;
    size_t position = 0;
    for (const dom::key_value_pair field : object) {
      if (field.key == "1" && !row_key) row_key = field.value;
      const size_t place = required_.place_of(field.key, position++);
      if (place == no_place || seen_[place] != 0) continue;
      seen_[place] = 1;
      row_[place] = number_of(field.value);
    }
    int64_t key = 0;
    if (!row_key || row_key->get(key) != simdjson::SUCCESS) return false;
    batch_.keys.push_back(key);
    batch_.values.insert(batch_.values.end(), row_.begin(), row_.end());
    return true;
  }

 private:
  RequiredFields required_;
  RowBatch batch_;
  std::vector<double> row_;
  std::vector<char> seen_;
};

}  // namespace

struct RowIntake::Parser {
  dom::parser json;
};

RowIntake::RowIntake() : parser_(std::make_unique<Parser>()) {}
RowIntake::~RowIntake() = default;

void RowIntake::add_row(DataPoolCenter& pool, std::string_view json) {
  const uint64_t uuid = pool.uuid;
  if (!simdjson::validate_utf8(json.data(), json.size())) {
    log(log_error, "[ScriptParser::add_row] data_arr is not utf-8 string.", uuid);
    return;
  }
  try {
    dom::array rows;
    const simdjson::error_code fault = parser_->json.parse(json.data(), json.size()).get(rows);
    // A parser that found no memory takes its missing buffers for real ones the next time.
    if (fault == simdjson::MEMALLOC) parser_->json = dom::parser();
    if (fault != simdjson::SUCCESS) {
      log(log_error, "[ScriptParser::add_row] data_arr json parse error.", uuid);
      return;
    }
    BatchReader reader(pool);
    reader.reserve(rows.size());
    for (const dom::element row : rows) {
      if (!reader.read(row)) break;
    }
    pool.table().merge_rows(reader.batch());
  } catch (const std::exception& fault) {
    log(log_error, std::string("[ScriptParser::add_row] exception occurs") + fault.what(), uuid);
  } catch (...) {
    log(log_unknown, "[ScriptParser::add_row] Unhandled error occurs.", uuid);
  }
}

}  // namespace quor
