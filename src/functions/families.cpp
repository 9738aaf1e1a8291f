#include "functions/families.h"

namespace quor {
namespace {

constexpr Family families[] = {
    moving_average_words,
    reference_words,
    polyline_words,
};

}  // namespace

std::span<const Family> function_families() { return families; }

}  // namespace quor
