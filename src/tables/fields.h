// The words of data fields and the ids under which the host delivers them: the one list of them,
// for the library as for what reads files and advises authors.
#pragma once

#include <cstdint>
#include <string_view>

namespace quor {

struct Field {
  std::string_view word;
  int32_t id;
};

/// The words of bar fields that scripts know.
inline constexpr Field ReservedFieldTable[] = {
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

/// The words of the fields of a realtime reference.
inline constexpr Field RealtimeFieldTable[] = {
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

/// The id of a bar field's built-in word, which must be one.
constexpr int32_t built_in_field_id(std::string_view word) {
  const Field* field = ReservedFieldTable;
  while (field->word != word) ++field;
  return field->id;
}

/// A column id that names no column.
inline constexpr uint32_t no_column = 0xFFFFFFFF;

/// The id of the column that holds the row key.
inline constexpr uint32_t time_column_id = 1;

inline constexpr uint32_t open_column_id = 7;
inline constexpr uint32_t high_column_id = 8;
inline constexpr uint32_t low_column_id = 9;
inline constexpr uint32_t close_column_id = 11;
inline constexpr uint32_t volume_column_id = 13;
inline constexpr uint32_t amount_column_id = 19;

}  // namespace quor
