#include "references.h"

#include <algorithm>
#include <limits>
#include <map>

#include "errors.h"
#include "fields.h"

namespace quor_host {
namespace {

struct ReferenceFile {
  std::string key;
  std::string path;
};

ReferenceFile parse_option(const std::string& text) {
  const size_t mark = text.find('=');
  const bool complete = mark != std::string::npos && mark + 1 < text.size() &&
                        text.substr(0, mark).find('|') != std::string::npos;
  if (!complete) throw HostError("--reference " + text + ": not of the form SOURCE|FIELD=FILE.csv");
  return {text.substr(0, mark), text.substr(mark + 1)};
}

bool matches(const Reference& reference, const std::string& key) {
  const std::string source = reference.source + '|' + std::to_string(reference.field);
  return key == source || key == source + '|' + std::to_string(reference.column);
}

/// The value of every bar: that of the same key or, with `lasting`, of the newest key up to it.
std::vector<double> values_at(const std::vector<int64_t>& keys,
                              const std::map<int64_t, double>& known, bool lasting) {
  std::vector<double> values;
  values.reserve(keys.size());
  for (const int64_t key : keys) {
    const auto behind = known.upper_bound(key);
    const auto found = behind == known.begin() ? known.end() : std::prev(behind);
    const bool serves = found != known.end() && (lasting || found->first == key);
    values.push_back(serves ? found->second : std::numeric_limits<double>::quiet_NaN());
  }
  return values;
}

std::map<int64_t, double> read_known(const std::string& path, uint32_t field) {
  const Bars bars = read_bars(path);
  const auto column = bars.columns.find(field);
  if (column == bars.columns.end()) {
    throw HostError(path + " has no column for " + field_text(field));
  }
  std::map<int64_t, double> known;
  for (size_t row = 0; row < bars.keys.size(); ++row) known[bars.keys[row]] = column->second[row];
  return known;
}

}  // namespace

std::vector<FilledColumn> read_references(const std::vector<std::string>& texts, Report& report,
                                          const std::vector<int64_t>& keys) {
  std::vector<FilledColumn> columns;
  for (const std::string& text : texts) {
    const ReferenceFile file = parse_option(text);
    const size_t before = columns.size();
    for (auto* references : {&report.securities, &report.periods, &report.quotes}) {
      const bool lasting = references == &report.periods;
      std::erase_if(*references, [&](const Reference& reference) {
        if (!matches(reference, file.key)) return false;
        const auto known = read_known(file.path, reference.field);
        columns.push_back({text, reference.column, values_at(keys, known, lasting)});
        return true;
      });
    }
    if (columns.size() == before) {
      throw HostError("--reference " + file.key + ": the script asks for no such data");
    }
  }
  return columns;
}

}  // namespace quor_host
