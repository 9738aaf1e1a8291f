// The numbers of a script that a page lets its author move.
#pragma once

#include <string>
#include <string_view>

#include "host/studio/json.h"
#include "host/studio/task.h"
#include "places.h"

namespace quor_host {

/// A range that holds a value and others of its size, and the steps in it.
struct SliderRange {
  double low = 0.0;
  double high = 1.0;
  double step = 0.01;
};
SliderRange slider_range(double value);

/// The parameters, and the CONST numbers of the script with the places where they stand. A
/// parameter that the script doesn't read, or has a CONST of the same name for, is idle.
Json sliders_of(std::string_view script, const Parameters& parameters, const Places& places);

}  // namespace quor_host
