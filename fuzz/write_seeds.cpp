// Writes what the fuzzers start from, made of the tables and of the tests' vectors:
//   write_seeds FOLDER SAMPLES
// makes words.dict and json.dict, and one folder of inputs per target.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

#include "fuzz_host.h"
#include "support/vectors.h"
#include "support/word_calls.h"
#include "tables/field_table.h"
#include "tables/icon_table.h"
#include "tables/style_table.h"
#include "vocabulary/function_sets.h"

namespace {

using quor_fuzz::part_mark;
namespace fs = std::filesystem;

using Words = std::set<std::string, std::less<>>;

Words language_words() {
  Words words = {"\"600000$C\"", "\"MIN$5$C\"", "\"DAY$1$C\"", "GETPRICE(", "GETSTOCKPRICE(",
                 "COLORFF8040",  "LINETHICK2",  "PRECIS2",     " AND ",     " OR ",
                 "CONST ",       "&&",          "||",          ":=",        "<>",
                 ">=",           "<=",          "!=",          "==",        "//",
                 "/*",           "*/",          "~31",         "'ICO1'",    "CIRCLEDOT",
                 "SOUND('a')",   "ICON(1,'a')", "WORD(1,'a')", "CJLVOL(0)", "NOTICE('a')",
                 "RGB(1,2,3)",   "-1",          "0.5",         "1E99",      "2147483648",
                 "ErrLine.",     "DRAWNULL",    "NEW",         "\xC2\xA0",  "SETSTYLECOLOR("};
  for (const auto& row : quor::FunctionIdTable()) {
    words.insert(std::string(row.word));
    words.insert(std::string(row.word) + "(");
  }
  for (const auto& field : quor::reserved_fields()) words.insert(std::string(field.word));
  for (const auto* set : {&quor::StyleWordSet, &quor::StickWordSet, &quor::DotWordSet}) {
    for (const std::string_view word : *set) words.insert("," + std::string(word));
  }
  return words;
}

const Words json_words = {"\"1\":",
                          "\"11\":",
                          "\"7\":",
                          "\"20000\":",
                          "4294967295",
                          "2147483648",
                          "20240102093000",
                          "1e308",
                          "-0.0",
                          "null",
                          "true",
                          "status_code",
                          "data",
                          "timezone",
                          "trade_dates",
                          "start_date",
                          "end_date",
                          "times",
                          "start_time",
                          "end_time",
                          "offset",
                          "trans_day_type",
                          "type",
                          "continuous",
                          "start",
                          "end",
                          "date",
                          "UTC+08:00",
                          "UTC-11:30",
                          "09:00:00",
                          "23:59:59",
                          "20240105",
                          "00000000",
                          "99999999",
                          "\"0\"",
                          "\"1\"",
                          "\"2\"",
                          "\"-1\"",
                          "daylight_save_times",
                          "trade_times",
                          "special_trade_times",
                          "PARAM_NAME",
                          "DEFAULT",
                          "LINE_NAME",
                          "COLOR_KEY",
                          "LINE_THICK",
                          "IS_SELECTED",
                          "99999999999999",
                          "9223372036854775807",
                          "\\u0000"};

/// A dictionary holds one quoted word a line, all but plain signs as \xHH.
void write_dictionary(const fs::path& path, const Words& words) {
  std::ofstream file(path);
  for (const std::string& word : words) {
    file << '"';
    for (const char c : word) {
      const auto code = static_cast<unsigned char>(c);
      static constexpr char digits[] = "0123456789abcdef";
      if (code > 0x20 && code < 0x7f && c != '"' && c != '\\') {
        file << c;
      } else {
        file << "\\x" << digits[code / 16] << digits[code % 16];
      }
    }
    file << "\"\n";
  }
}

class SeedFolder {
 public:
  explicit SeedFolder(const fs::path& path) : path_(path) { fs::create_directories(path); }

  void add(const std::string& input) {
    std::ofstream file(path_ / std::to_string(count_++), std::ios::binary);
    file << input;
  }

 private:
  fs::path path_;
  int count_ = 0;
};

std::string text_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string rows_of(const quor_test::Vector& vector) {
  size_t rows = 0;
  for (const auto& [field, values] : vector.bars) rows = std::max(rows, values.size());
  std::vector<int64_t> keys = vector.keys;
  while (keys.size() < rows) keys.push_back(20240101000000 + static_cast<int64_t>(keys.size()));
  return quor_test::rows_json(vector.bars, 0, rows, keys);
}

void write_script_seeds(SeedFolder folder, const fs::path& samples,
                        const std::vector<quor_test::Vector>& vectors) {
  const std::string lines = R"([{"LINE_NAME":"A","COLOR_KEY":"k","LINE_THICK":3,"IS_SELECTED":1}])";
  for (const auto& entry : fs::directory_iterator(samples)) {
    if (entry.path().extension() == ".quor") folder.add(text_of(entry.path()));
  }
  for (const auto& vector : vectors) {
    folder.add(vector.script + part_mark + vector.parameters + part_mark + lines + part_mark +
               "\1");
  }
  for (const auto& group : quor_test::word_groups) {
    const std::string_view word = group.words.substr(0, group.words.find(' '));
    folder.add(std::string(word) + "(" + std::string(group.arguments) + ");");
  }
}

void write_calendar_seeds(SeedFolder folder, const fs::path& samples) {
  const std::string keys = "20240105210500,20240108090000,20240108150000,20240109230000";
  folder.add(text_of(samples / "night-calendar.json") + part_mark + keys);
  folder.add(
      R"({"status_code":0,"data":{"timezone":"UTC-05:00","trade_dates":["20240109","20240108"],)"
      R"("daylight_save_times":[{"start":1704672000,"end":1704844800,"offset":60}],)"
      R"("trade_times":[{"start_date":"20240101","end_date":"20241231","times":[)"
      R"({"start_time":"21:00:00","end_time":"26:30:00","offset":"-1","trans_day_type":"2",)"
      R"("type":"continuous"}]}],"special_trade_times":[{"date":"20240108","times":[)"
      R"({"start_time":1704672000,"end_time":1704700800}]}]}})" +
      (part_mark + keys));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::cerr << "usage: write_seeds FOLDER SAMPLES\n";
    return 1;
  }
  const fs::path out = arguments[1];
  const fs::path samples = arguments[2];
  const auto vectors = quor_test::load_vectors();
  write_script_seeds(SeedFolder(out / "script"), samples, vectors);
  write_calendar_seeds(SeedFolder(out / "calendar"), samples);
  SeedFolder rows(out / "rows");
  for (size_t i = 0; i < vectors.size(); i += 16) rows.add("\1" + rows_of(vectors[i]));
  SeedFolder calls(out / "calls");
  calls.add(
      {0, 0, 0, 2, 2, 0, 3, 6, 1, 2, 3, 4, 5, 6, 7, 8, 0, 6, 1, 0, 1, 0, 8, 3, 1, 4, 2, 0, 9});
  write_dictionary(out / "words.dict", language_words());
  write_dictionary(out / "json.dict", json_words);
  return 0;
}
