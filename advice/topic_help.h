// What `quor help` tells beside words and codes: topics of the language, and words by meaning.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quor_advice {

/// A topic such as fields or colours. Each line is a term and what it is, both plain English.
struct TopicLine {
  std::string_view term;
  std::string_view meaning;
};
struct TopicHelp {
  std::string_view name;    ///< "fields", in small letters
  std::string_view others;  ///< further names, parted by blanks
  std::string_view summary;
  std::span<const TopicLine> lines;
};

std::span<const TopicHelp> topic_help();

/// By one of its names, in capitals or not; null if there is no such topic.
const TopicHelp* find_topic_help(std::string_view name);

/// The words whose name, summary or arguments hold the text, those of the name first; at most 20.
std::vector<std::string_view> words_about(std::string_view text);

/// What to write for a word of elsewhere; empty if it isn't known.
std::string word_from_elsewhere(std::string_view word);

}  // namespace quor_advice
