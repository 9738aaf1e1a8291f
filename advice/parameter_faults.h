// What is wrong with the names under which a host sends parameters.
#pragma once

#include <optional>
#include <string_view>

#include "reading.h"
#include "syntax.h"

namespace quor_advice {

struct NameFault {
  Problem problem;
  bool has_place = false;
  bool is_idle = false;  ///< the parameter changes nothing
};

/// Nothing for a name that the script reads and that stands for nothing else.
std::optional<NameFault> find_name_fault(const Reading& reading, std::string_view name);

}  // namespace quor_advice
