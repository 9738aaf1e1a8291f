// The report of a compile.
#pragma once

#include <string>
#include <string_view>

#include "core/data_pool_center.h"
#include "core/status.h"

namespace quor {

/// The report of a script that compiled and passed its trial run: what the host must deliver.
std::string success_report(const DataPoolCenter& pool, std::string_view error);

/// The report of a failure: no lists and no flags.
std::string failure_report(Status status, std::string_view message, int line);

/// The fields that the host must deliver for the script, and the columns that the script declared,
/// as a JSON array of ids; [1] if there are none.
std::string variable_fields_text(
    const DataPoolCenter& pool, const std::map<std::string, uint32_t, std::less<>>& declared_names);

}  // namespace quor
