#include "tables/field_table.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <shared_mutex>

namespace quor {
namespace {

constexpr Field built_in_fields[] = {
    {"CLOSE", 11},
    {"C", 11},
    {"COMMODITY", 901024},
    {"HIGH", 8},
    {"H", 8},
    {"NOTICE_REALTIME_TIMESTAMP", 199},
    {"LOW", 9},
    {"L", 9},
    {"VIX", 80000000},
    {"OPEN", 7},
    {"O", 7},
    {"VOLATILITY", 80000001},
    {"VOL", 13},
    {"V", 13},
    {"IMPLIEDVOLATILITY", 90000000},
    {"AMOUNT", 19},
    {"DELTA", 90000001},
    {"AVPRICE", 2656718},
    {"GAMMA", 90000002},
    {"TIME", 1},
    {"VEGA", 90000003},
    {"OPI", 65},
    {"THETA", 90000004},
    {"SETTLE", 72},
    {"RHO", 90000005},
    {"TLR", 90000006},
    {"PR", 90000008},
    {"LR", 90000007},
    {"TP", 90000009},
    {"TV", 90000010},
    {"INV", 90000011},
};

constexpr Field realtime_fields[] = {
    {"NEW", 10},          {"BIDVOL1", 25},    {"VOLUME", 13},
    {"HIGH", 8},          {"BIDVOL2", 27},    {"TURNOVER", 19},
    {"LOW", 9},           {"BIDVOL3", 29},    {"OPI", 65},
    {"OPEN", 7},          {"BIDVOL4", 151},   {"DELTAVOL", 49},
    {"AVPRICE", 2656718}, {"BIDVOL5", 155},   {"DELTAOPI", 71},
    {"YCLOSE", 6},        {"ASK1", 30},       {"TODAYDELTAOPI", 920456},
    {"YSETTLE", 66},      {"ASK2", 32},       {"RISELIMIT", 69},
    {"BID1", 24},         {"ASK3", 34},       {"FALLLIMIT", 70},
    {"BID2", 26},         {"ASK4", 152},      {"量比", 1771976},
    {"BID3", 28},         {"ASK5", 156},      {"沉淀资金", 67},
    {"BID4", 150},        {"ASKVOL1", 31},    {"资金流向", 68},
    {"BID5", 154},        {"ASKVOL2", 33},    {"周涨幅%", 30001},
    {"ASKVOL3", 35},      {"月涨幅%", 30002}, {"ASKVOL4", 153},
    {"ASKVOL5", 157},
};

/// The words that hosts have declared. The strings live in a deque so that views of them stay valid
/// while it grows. The lock guards both; readers share it.
struct DeclaredFields {
  std::shared_mutex lock;
  std::deque<std::string> words;
  std::vector<Field> fields;
};

DeclaredFields& declared_fields() {
  static DeclaredFields declared;
  return declared;
}

template <typename Fields>
std::optional<int32_t> find_field(const Fields& fields, std::string_view word) {
  const auto row = std::ranges::find(fields, word, &Field::word);
  if (row == std::end(fields)) return std::nullopt;
  return row->id;
}

}  // namespace

std::optional<int32_t> reserved_field_id(std::string_view word) {
  if (const auto id = find_field(built_in_fields, word)) return id;
  DeclaredFields& declared = declared_fields();
  const std::shared_lock guard(declared.lock);
  return find_field(declared.fields, word);
}

void declare_reserved_field(std::string_view word, int32_t id) {
  if (find_field(built_in_fields, word)) return;
  DeclaredFields& declared = declared_fields();
  const std::unique_lock guard(declared.lock);
  if (find_field(declared.fields, word)) return;
  declared.fields.reserve(declared.fields.size() + 1);
  declared.fields.push_back({declared.words.emplace_back(word), id});
}

std::vector<Field> reserved_fields() {
  std::vector<Field> fields(std::begin(built_in_fields), std::end(built_in_fields));
  DeclaredFields& declared = declared_fields();
  const std::shared_lock guard(declared.lock);
  fields.insert(fields.end(), declared.fields.begin(), declared.fields.end());
  return fields;
}

std::optional<int32_t> realtime_field_id(std::string_view word) {
  return find_field(realtime_fields, word);
}

}  // namespace quor
