// The colours that a script names, and how to write others.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reading.h"

namespace quor_advice {

struct ColourAt {
  Place place;        ///< of a word or of a whole call of RGB
  uint32_t code = 0;  ///< 0xRRGGBB
};

/// Where the script names a colour, in its order.
std::vector<ColourAt> colours_of(const Reading& reading);

/// How a colour is written: by its word if it has one, by digits, and by RGB.
std::vector<std::string> colour_texts(uint32_t code);

}  // namespace quor_advice
