// The panes of a script's chart and the records in them, as `quor chart` would choose them.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/input/bars.h"
#include "host/panes/panels.h"
#include "host/studio/json.h"
#include "run.h"

namespace quor_host {

/// Which columns are marks of the bars where records show, and whose.
class MarkColumns {
 public:
  MarkColumns() = default;
  explicit MarkColumns(const std::vector<Record>& records);

  /// Whether a record has the column under one of its keys of marks.
  bool contains(uint32_t column) const { return marks_.contains(column); }
  /// The marks of a column of values, if all records that show it have the same.
  std::optional<uint32_t> of(uint32_t values) const;

 private:
  std::unordered_set<uint32_t> marks_;
  std::unordered_map<uint32_t, std::optional<uint32_t>> of_values_;
};

/// The records of a script with the bars' own in front and, where a pane of the studio's own shows
/// the volume, that behind. The panes point to the records.
struct Drawing {
  Drawing() = default;
  ~Drawing() = default;
  Drawing(Drawing&&) = default;
  Drawing& operator=(Drawing&&) = default;
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  std::vector<Record> records;
  MarkColumns marks;         ///< of the records
  std::vector<Panel> panes;  ///< none without bars
};

/// The last bars tell which records share a pane.
Drawing drawing_of(const Run& run, const Bars& bars);

/// The bar fields, the lines and all that the records name, each once.
std::vector<uint32_t> columns_of(const Drawing& drawing, const Run& run, const Bars& bars);

Json records_json(const Drawing& drawing);
Json panes_json(const Drawing& drawing);

}  // namespace quor_host
