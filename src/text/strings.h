// Byte-wise text helpers on which the compiler decides.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quor {

/// Replaces every occurrence of `from`; the search goes on behind each inserted text.
void replace_all(std::string& text, std::string_view from, std::string_view to);

/// As `replace_all`, matching ASCII letters in either case; the search goes on at the place of the
/// replacement, so `to` must not hold `from`.
void replace_all_ignoring_case(std::string& text, std::string_view from, std::string_view to);

/// The pieces of `text` between occurrences of `separator`, in order, empty pieces dropped.
/// The views point into `text`.
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

/// Splits at the first separator of the list that occurs anywhere in what is left, then goes on
/// with the rest, so the order of the list beats the position in the text. Empty pieces are
/// dropped.
std::vector<std::string_view> split_in_order(std::string_view text,
                                             std::span<const std::string_view> separators);

/// Removes `sign` from both ends, repeatedly.
std::string_view trim(std::string_view text, char sign);

char to_upper(char letter);
char to_lower(char letter);

/// Upper case of the ASCII letters; bytes from 0x80 up stay.
std::string upper_case(std::string_view text);

/// As `upper_case`, but text in quotes keeps its case. Either kind of quote toggles one flag.
void upper_case_outside_quotes(std::string& text);

bool equal_ignoring_case(std::string_view a, std::string_view b);

inline bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace quor
