#include "library.h"

#include <algorithm>
#include <string>
#include <vector>

#include "../period.h"
#include "../text.h"
#include "advice/word_help.h"
#include "folder.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

void add_samples(Json& samples, const std::string& group, const fs::path& folder) {
  if (!fs::is_directory(folder)) return;
  const ScriptFolder scripts(folder);
  for (const std::string& name : scripts.names()) {
    samples.push_back(
        {{"name", fs::path(name).stem().string()}, {"group", group}, {"text", scripts.read(name)}});
  }
}

}  // namespace

Json samples_json(const fs::path& folder) {
  Json samples = Json::array();
  add_samples(samples, "samples", folder);
  add_samples(samples, "cookbook", folder / "cookbook");
  return samples;
}

Json words_json() {
  Json words = Json::array();
  for (const quor_advice::WordHelp& help : quor_advice::word_help()) {
    words.push_back({{"word", help.word},
                     {"form", help.form},
                     {"summary", help.summary},
                     {"arguments", help.arguments},
                     {"nulls", help.nulls},
                     {"example", help.example},
                     {"section", help.section}});
  }
  return words;
}

Json periods_json() {
  Json periods = Json::array();
  for (const char* const name :
       {"1min", "5min", "15min", "30min", "1hour", "day", "week", "month", "quarter", "year"}) {
    const uint32_t code = parse_period(name).value_or(period_of_a_day);
    periods.push_back({{"code", code}, {"name", period_text(code)}});
  }
  return periods;
}

}  // namespace quor_host
