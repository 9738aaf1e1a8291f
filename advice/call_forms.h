// The forms in which a word is called, with their arguments, and the call that a place is in.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reading.h"
#include "word_help.h"

namespace quor_advice {

struct CallForm {
  std::string_view text;         ///< "LOG(X,B)", "COND,BK(QUANTITY)"
  std::vector<Place> arguments;  ///< places in the text of what stands in its parentheses
};

/// Each form of a word, "LOG(X)" and "LOG(X,B)"; of one without parentheses none.
std::vector<CallForm> call_forms(const WordHelp& help);

/// What the help says of an argument, "the series"; empty if it says nothing.
std::string_view argument_help(const WordHelp& help, std::string_view argument);

/// The innermost call of a word with help, or of a short form, whose parentheses a place is in.
struct CallAt {
  const WordHelp* help = nullptr;
  size_t statement = 0;
  size_t word = 0;      ///< its token
  size_t argument = 0;  ///< the one that the place is in, from 0
};
std::optional<CallAt> call_around(const Reading& reading, size_t offset);

/// What to show while the arguments of a call are written.
struct CallHint {
  const WordHelp* help = nullptr;
  std::vector<CallForm> forms;  ///< at least one
  size_t form = 0;              ///< the shortest one that has the argument
  size_t argument = 0;          ///< of that form
  Place word;                   ///< of the call
};
std::optional<CallHint> call_hint_at(const Reading& reading, size_t offset);

}  // namespace quor_advice
