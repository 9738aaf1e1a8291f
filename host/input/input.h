// Files as streams, unpacked on the way.
#pragma once

#include <istream>
#include <memory>
#include <string>

namespace quor_host {

/// A file to read, or the standard input for "-"; what gzip has packed comes unpacked, where the
/// program was built with zlib. Throws HostError for a file that can't be opened; reading throws it
/// for a file that is no sound one of gzip.
std::unique_ptr<std::istream> open_input(const std::string& path);

}  // namespace quor_host
