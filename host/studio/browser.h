// The user's browser.
#pragma once

#include <string>

namespace quor_host {

/// Opens a link where there is a display; says nothing if that fails.
void open_browser(const std::string& link);

}  // namespace quor_host
