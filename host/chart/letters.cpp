#include "letters.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "advice/letters.h"

namespace quor_host {
namespace {

// In thousandths of the size, from the blank on.
constexpr uint16_t widths[] = {
    318,  401, 460, 838, 636, 950, 780, 275, 390, 390, 500, 838, 318, 361, 318, 337,  //
    636,  636, 636, 636, 636, 636, 636, 636, 636, 636, 337, 337, 838, 838, 838, 531,  // 0
    1000, 684, 686, 698, 770, 632, 575, 775, 752, 295, 295, 656, 557, 863, 748, 787,  // @ A
    603,  787, 695, 635, 611, 732, 684, 989, 685, 611, 685, 390, 337, 390, 838, 500,  // P
    500,  613, 635, 550, 635, 615, 352, 635, 634, 278, 278, 579, 278, 974, 634, 612,  // ` a
    635,  635, 411, 521, 392, 634, 592, 818, 592, 592, 525, 636, 337, 636, 838};      // p
constexpr double bold_share = 1.12;
constexpr double width_beyond_ascii = 0.75;

double character_width(std::string_view character) {
  if (quor_advice::width_of(character) > 1) return 1.0;
  const auto at = static_cast<size_t>(static_cast<unsigned char>(character[0])) - ' ';
  return at < std::size(widths) ? widths[at] / 1000.0 : width_beyond_ascii;
}

}  // namespace

double letters_width(std::string_view text, bool bold) {
  double width = 0.0;
  while (!text.empty()) {
    const size_t size = quor_advice::front_character(text);
    width += character_width(text.substr(0, size));
    text.remove_prefix(size);
  }
  return bold ? width * bold_share : width;
}

bool go_deep(std::string_view text) {
  return std::ranges::any_of(text, [](char letter) {
    return quor_advice::is_beyond_ascii(letter) ||
           std::string_view("$()/,;@Q[\\]_gjpqy{|}").find(letter) != std::string_view::npos;
  });
}

}  // namespace quor_host
