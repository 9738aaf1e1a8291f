// Scripts by a grammar of the words: nested calls of all of them, odd and varying arguments, texts
// that come again, lines that only name another one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz_host.h"

namespace quor_fuzz {

class Grammar {
 public:
  explicit Grammar(Bytes& bytes) : bytes_(bytes) {}

  std::string script();

 private:
  std::string line(const std::string& name);
  std::string expression(int depth);
  std::string arguments(std::string_view word, int depth);
  std::string argument(const std::string& usual, int depth);
  /// A field, a line, or an expression that stands elsewhere, too.
  const std::string& part() { return parts_[bytes_.below(parts_.size())]; }

  Bytes& bytes_;
  std::vector<std::string> parts_ = {"C", "O", "H", "L", "V", "AMOUNT"};
  int calls_left_ = 20;
};

}  // namespace quor_fuzz
