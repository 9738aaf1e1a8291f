#include "references.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <numeric>
#include <utility>

#include "../errors.h"
#include "../options/period.h"
#include "../text.h"
#include "fields.h"

namespace quor_host {
namespace {

using quor::engine::Reference;

/// A reference names its field by the id behind the last bar.
struct Wanted {
  std::string source;
  uint32_t field = 0;
};

Wanted wanted_of(const Reference& reference) {
  const size_t mark = std::min(reference.source.rfind('|'), reference.source.size());
  Wanted wanted{reference.source.substr(0, mark), 0};
  const std::string_view id =
      std::string_view(reference.source).substr(std::min(mark + 1, reference.source.size()));
  std::from_chars(id.data(), id.data() + id.size(), wanted.field);
  return wanted;
}

bool is_source(const std::string& name, const std::string& source, Reference::Kind kind) {
  if (to_upper(name) == to_upper(source)) return true;
  if (kind != Reference::Kind::period) return false;
  const auto code = parse_period(name);
  return code && code == parse_period(source);
}

using Dated = ReferenceSeries::Dated;

std::vector<Dated> dated_values(const Bars& bars, const std::vector<double>& values,
                                std::optional<uint32_t> ended_period) {
  std::vector<Dated> list;
  list.reserve(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    const int64_t seconds = seconds_of(bars.keys[i]);
    list.push_back({ended_period ? end_of_period(seconds, *ended_period) : seconds, values[i]});
  }
  // Of two bars of one period the later one stands behind the other.
  std::vector<size_t> order(values.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::ranges::sort(order, {}, [&](size_t i) { return std::pair(list[i].seconds, bars.keys[i]); });
  std::vector<Dated> sorted;
  sorted.reserve(list.size());
  for (const size_t i : order) sorted.push_back(list[i]);
  return sorted;
}

}  // namespace

double ReferenceSeries::at(int64_t key) const {
  const int64_t seconds = seconds_of(key);
  const auto behind = std::ranges::upper_bound(values_, seconds, {}, &Dated::seconds);
  const bool serves =
      behind != values_.begin() && (lasts_ || std::prev(behind)->seconds == seconds);
  return serves ? std::prev(behind)->value : std::numeric_limits<double>::quiet_NaN();
}

References::References(const BarOptions& options) : takes_forming_(options.takes_forming) {
  const quor_bars::Naming naming = naming_of(options.form);
  for (const std::string& text : options.references) {
    const size_t mark = text.find('=');
    const std::string key = text.substr(0, mark);
    if (mark == std::string::npos || mark == 0 || mark + 1 == text.size()) {
      throw UsageError("--reference " + text + ": not of the form SOURCE=FILE.csv");
    }
    File file{text, key, std::nullopt, text.substr(mark + 1), {}};
    if (const size_t bar = key.find('|'); bar != std::string::npos) {
      file.source = key.substr(0, bar);
      // A column behind the field, as reports have it, is told by these two.
      const std::string field = key.substr(bar + 1, key.find('|', bar + 1) - bar - 1);
      file.field = quor_bars::field_id(field);
      if (!file.field) throw UsageError("--reference " + text + ": no field is called " + field);
    }
    file.bars = read_bars(file.path, naming);
    files_.push_back(std::move(file));
  }
}

const References::File* References::file_for(const Reference& reference) const {
  const Wanted wanted = wanted_of(reference);
  const auto file = std::ranges::find_if(files_, [&](const File& one) {
    return is_source(one.source, wanted.source, reference.kind) &&
           (!one.field || *one.field == wanted.field);
  });
  return file == files_.end() ? nullptr : &*file;
}

std::vector<ReferenceSeries> References::series_for(const quor::engine::Report& report) const {
  std::vector<ReferenceSeries> series;
  for (const Reference& reference : report.references) {
    const File* const file = file_for(reference);
    if (file == nullptr) continue;
    const Wanted wanted = wanted_of(reference);
    const auto values = file->bars.columns.find(wanted.field);
    if (values == file->bars.columns.end()) {
      throw HostError(file->path + " has no column for " + field_text(wanted.field));
    }
    const bool lasts = reference.kind == Reference::Kind::period;
    const auto ended = lasts && !takes_forming_ ? parse_period(wanted.source) : std::nullopt;
    if (lasts && !takes_forming_ && !ended) {
      throw UsageError("--reference " + file->text + ": when a bar of " + wanted.source +
                       " ends isn't known; --forming has it count from its own date on");
    }
    series.emplace_back(file->text, reference.column,
                        dated_values(file->bars, values->second, ended), lasts);
  }
  return series;
}

std::vector<FilledColumn> References::columns_for(const quor::engine::Report& report,
                                                  std::span<const int64_t> keys) const {
  std::vector<FilledColumn> columns;
  for (const ReferenceSeries& series : series_for(report)) {
    FilledColumn& column = columns.emplace_back();
    column.text = series.text();
    column.column = series.column();
    column.values.reserve(keys.size());
    for (const int64_t key : keys) column.values.push_back(series.at(key));
  }
  return columns;
}

std::vector<std::string> References::missing(const quor::engine::Report& report) const {
  std::vector<std::string> texts;
  for (const Reference& reference : report.references) {
    if (file_for(reference) == nullptr) texts.push_back(reference_text(reference));
  }
  return texts;
}

void References::require_use(const quor::engine::Report& report) const {
  for (const File& file : files_) {
    const auto serves = [&](const Reference& reference) { return file_for(reference) == &file; };
    if (std::ranges::none_of(report.references, serves)) {
      throw UsageError("--reference " + file.text + ": the script asks for no such data");
    }
  }
}

std::string reference_text(const Reference& reference) {
  const Wanted wanted = wanted_of(reference);
  return wanted.source + ' ' + field_text(wanted.field);
}

}  // namespace quor_host
