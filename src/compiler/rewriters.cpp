#include "compiler/rewriters.h"

#include "core/status.h"
#include "text/strings.h"

namespace quor {

int rewrite_statements(CompileContext&, std::vector<std::string>& slots, std::string&) {
  for (std::string& slot : slots) upper_case_outside_quotes(slot);
  return status_ok;
}

}  // namespace quor
