// The panes of a script's chart and the records in them, as `quor chart` would choose them.
#pragma once

#include <vector>

#include "host/input/bars.h"
#include "host/panes/panels.h"
#include "host/studio/json.h"
#include "run.h"

namespace quor_host {

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
  std::vector<Panel> panes;  ///< none without bars
};

/// The last bars tell which records share a pane.
Drawing drawing_of(const Run& run, const Bars& bars);

/// The bar fields, the lines and all that the records name, each once.
std::vector<uint32_t> columns_of(const Drawing& drawing, const Run& run, const Bars& bars);

/// Whether a record has a column of marks under one of its keys.
bool is_mark(const Drawing& drawing, uint32_t column);

/// The marks of a column of values, if all records that show it have the same.
std::optional<uint32_t> marks_of(const Drawing& drawing, uint32_t column);

Json records_json(const Drawing& drawing);
Json panes_json(const Drawing& drawing);

}  // namespace quor_host
