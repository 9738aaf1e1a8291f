// What the page knows of the language: its words, and the periods of bars.
#pragma once

#include "host/studio/json.h"

namespace quor_host {

/// All built-in words with what `quor help` says of them.
Json words_json();

/// The numbers by which charts are laid out and drawn.
Json measures_json();

/// The periods that bars usually have.
Json periods_json();

}  // namespace quor_host
