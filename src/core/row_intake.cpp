#include "core/row_intake.h"

#include <simdjson.h>

#include <optional>
#include <string>
#include <vector>

namespace quor {
namespace {

namespace dom = simdjson::dom;

constexpr size_t no_place = static_cast<size_t>(-1);

/// A short key with its length as a number, for quick comparisons; 0 for a key that is empty or too
/// long.
constexpr uint64_t packed(std::string_view key) {
  if (key.size() >= sizeof(uint64_t)) return 0;
  uint64_t number = key.size();
  for (const char c : key) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

constexpr uint64_t time_key = packed("1");

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
  size_t place_of(std::string_view key, uint64_t packed_key, size_t position) {
    if (position >= guesses_.size()) guesses_.resize(position + 1);
    Guess& guess = guesses_[position];
    if (packed_key == 0) return find(key);
    if (guess.packed_key != packed_key) guess = {packed_key, find(key)};
    return guess.place;
  }

 private:
  struct Guess {
    uint64_t packed_key = 0;
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
  BatchReader(DataPoolCenter& pool, RowBatch& batch) : required_(pool), batch_(batch) {
    batch_.column_indexes = required_.column_indexes();
    batch_.keys.clear();
    batch_.values.clear();
    seen_.resize(batch_.column_indexes.size());
  }

  void reserve(size_t rows) {
    batch_.keys.reserve(rows);
    batch_.values.reserve(rows * seen_.size());
  }

  /// False for an element that ends the intake.
  bool read(dom::element element) {
    dom::object object;
    if (element.get(object) != simdjson::SUCCESS) return false;
    const size_t width = seen_.size();
    const size_t start = batch_.values.size();
    batch_.values.resize(start + width, null_value);
    std::fill(seen_.begin(), seen_.end(), char{0});
    std::optional<dom::element> row_key;
    size_t position = 0;
    for (const dom::key_value_pair field : object) {
      const uint64_t packed_key = packed(field.key);
      if (packed_key == time_key && !row_key) row_key = field.value;
      const size_t place = required_.place_of(field.key, packed_key, position++);
      if (place == no_place || seen_[place] != 0) continue;
      seen_[place] = 1;
      batch_.values[start + place] = number_of(field.value);
    }
    int64_t key = 0;
    if (!row_key || row_key->get(key) != simdjson::SUCCESS) {
      batch_.values.resize(start);
      return false;
    }
    batch_.keys.push_back(key);
    return true;
  }

 private:
  RequiredFields required_;
  RowBatch& batch_;
  std::vector<char> seen_;
};

}  // namespace

/// Keeps its memory for the next text, which mostly is as long as the last one.
struct RowIntake::Parser {
  dom::parser json;
  std::vector<char> padded;
  RowBatch batch;

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
    BatchReader reader(pool, parser_->batch);
    reader.reserve(rows.size());
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

}  // namespace quor
