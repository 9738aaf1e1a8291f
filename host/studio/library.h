// What a page can have of what comes with the program: samples, words, periods.
#pragma once

#include <filesystem>

#include "json.h"

namespace quor_host {

/// The scripts in the folder of samples and in its cookbook; none of a folder that isn't there.
Json samples_json(const std::filesystem::path& folder);

/// All built-in words with what `quor help` says of them.
Json words_json();

/// The periods that bars usually have.
Json periods_json();

}  // namespace quor_host
