// What an editor can write in place of a mistake by itself.
#pragma once

#include <string>
#include <vector>

#include "finding.h"
#include "reading.h"

namespace quor_advice {

/// A change of the script: the text stands in place of what is there.
struct Fix {
  Place place;
  std::string text;
  std::string title;  ///< "write EMA", "take it away"
};

/// The changes that a finding's suggestion tells, each of which leaves fewer findings and no new
/// one: it is tried by `compile`. Without that they are those that need no trial: a word in place
/// of a misspelt one, a sign that is missing.
std::vector<Fix> fixes_of(const Input& input, const Finding& finding);

/// Where a finding stands; an empty place at the front for one without.
Place place_of(const Reading& reading, const Finding& finding);

}  // namespace quor_advice
