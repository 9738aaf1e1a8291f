// The colours of records and of the page, on light ground and on dark ground.
#pragma once

#include <vector>

#include "host/panes/records.h"
#include "host/studio/json.h"

namespace quor_host {

/// Every key that the records name, and those of the theme, as lines, texts and areas have them.
Json colours_json(const std::vector<Record>& records);

/// The grounds, grids and signs of both themes.
Json themes_json();

}  // namespace quor_host
