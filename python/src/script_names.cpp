#include "script_names.h"

#include "advice/reading.h"

namespace quor_python {

std::vector<std::string> drawn_lines(const std::string& source) {
  std::vector<std::string> names;
  for (const auto& statement : quor_advice::read_script(source, {}).statements) {
    if (statement.form == quor_advice::Form::line) names.push_back(statement.name);
  }
  return names;
}

std::vector<std::pair<size_t, size_t>> places_of_word(const std::string& source,
                                                      const std::string& word) {
  std::vector<std::pair<size_t, size_t>> places;
  for (const auto& statement : quor_advice::read_script(source, {}).statements) {
    for (const auto& token : statement.tokens) {
      if (token.is(quor_advice::TokenKind::word, word)) places.emplace_back(token.begin, token.end);
    }
  }
  return places;
}

}  // namespace quor_python
