// The texts in which the host reads results. No blanks, no escaping, numbers with six decimals.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/data_pool_center.h"
#include "core/data_table.h"

namespace quor {

/// {"count":3,"data":[10.000000,null,12.500000]}
std::string window_text(const Window& window);

/// The window of `get_data_arr`. A count that makes no window answers with none.
Window reading_window(const DataTable& table, uint32_t column_id, uint32_t last_row, int32_t count);

/// The words of all built-ins that the trial run reached, as a JSON array of strings.
std::string invoked_functions_text(const DataPoolCenter& pool);

/// The column id of the first compiled variable whose text is the name, or -1.
int32_t field_id_of_name(const DataPoolCenter& pool, std::string_view name);

}  // namespace quor
