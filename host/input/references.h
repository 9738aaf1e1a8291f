// Data of other securities and periods, from files of bars.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "../options/options.h"
#include "bars.h"
#include "engine/engine.h"

namespace quor_host {

/// The values of a reference by the moments from which they count.
class ReferenceSeries {
 public:
  struct Dated {
    int64_t seconds;
    double value;
  };

  /// Values in the order of their moments; with `lasts` each counts until the next one.
  ReferenceSeries(std::string text, uint32_t column, std::vector<Dated> values, bool lasts)
      : text_(std::move(text)), column_(column), values_(std::move(values)), lasts_(lasts) {}

  const std::string& text() const { return text_; }
  uint32_t column() const { return column_; }
  /// At the bar of a key; NaN where there is none.
  double at(int64_t key) const;

 private:
  std::string text_;
  uint32_t column_;
  std::vector<Dated> values_;
  bool lasts_;
};

/// A column that a file fills, in the order of the bars; NaN where the file has no value.
struct FilledColumn {
  std::string text;  ///< that names the file
  uint32_t column = 0;
  std::vector<double> values;
};

/// The files that a user hands over as "SOURCE=FILE" or "SOURCE|FIELD=FILE", with a field by its
/// word or id. A bar of another security counts at the bar of the same key; one of a longer period
/// counts from its end on, until the next one ends. With `takes_forming` it counts from its own key
/// on, so that bars dated at their beginning show what is yet to come.
class References {
 public:
  /// Throws UsageError for a text of another form, HostError for a file that can't be read.
  explicit References(const BarOptions& options);

  /// What the files hold for the references of a script. Throws HostError for a file without the
  /// field.
  std::vector<ReferenceSeries> series_for(const quor::engine::Report& report) const;
  /// The same at the keys of bars.
  std::vector<FilledColumn> columns_for(const quor::engine::Report& report,
                                        std::span<const int64_t> keys) const;

  /// The references that no file serves: "600000 CLOSE (11)".
  std::vector<std::string> missing(const quor::engine::Report& report) const;

  /// Throws UsageError for a file that serves none of the script's references.
  void require_use(const quor::engine::Report& report) const;

 private:
  struct File {
    std::string text;
    std::string source;
    std::optional<uint32_t> field;
    std::string path;
    Bars bars;
  };

  const File* file_for(const quor::engine::Reference& reference) const;

  std::vector<File> files_;
  bool takes_forming_ = false;
};

/// "600000 CLOSE (11)".
std::string reference_text(const quor::engine::Reference& reference);

}  // namespace quor_host
