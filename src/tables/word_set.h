// A constant set of words, compared exactly.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

namespace quor {

class WordSet {
 public:
  template <size_t N>
  constexpr explicit WordSet(const std::string_view (&words)[N]) : words_(words) {}

  constexpr bool contains(std::string_view word) const {
    return std::find(words_.begin(), words_.end(), word) != words_.end();
  }
  constexpr auto begin() const { return words_.begin(); }
  constexpr auto end() const { return words_.end(); }
  constexpr size_t size() const { return words_.size(); }

 private:
  std::span<const std::string_view> words_;
};

}  // namespace quor
