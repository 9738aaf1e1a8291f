#include "numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace quor_host {
namespace {

struct Unit {
  double size;
  const char* sign;
};
constexpr Unit units[] = {{1e12, "T"}, {1e9, "B"}, {1e6, "M"}, {1e3, "K"}, {1.0, ""}};

const Unit& unit_of(double value) {
  return *std::ranges::find_if(units, [value](const Unit& unit) {
    return std::abs(value) >= unit.size || unit.size == 1.0;
  });
}

constexpr double huge = 1e16;  ///< from where on not even the greatest unit keeps a number short

std::string scientific_text(double value) {
  char text[32];
  return {text,
          std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, 2).ptr};
}

}  // namespace

std::string number_text(double value, int digits) {
  char text[400];
  char* end = text + sizeof text;
  return {text, std::to_chars(text, end, value, std::chars_format::fixed, digits).ptr};
}

std::string grouped_text(double value, int digits) {
  std::string text = number_text(value, digits);
  if (!(std::abs(value) >= 1e4)) return text;
  const size_t first = value < 0.0 ? 1 : 0;
  size_t place = std::min(text.find('.'), text.size());
  while (place > first + 3) text.insert(place -= 3, ",");
  return text;
}

std::string short_text(double value, int digits) {
  if (!(std::abs(value) >= 1e6)) return grouped_text(value, digits);
  if (std::abs(value) >= huge) return scientific_text(value);
  const Unit& unit = unit_of(value);
  const double share = value / unit.size;
  const double size = std::abs(share);
  return number_text(share, size < 10.0 ? 2 : size < 100.0 ? 1 : 0) + unit.sign;
}

int decimals_of(std::span<const double> prices) {
  double largest = 0.0;
  for (const double price : prices) largest = std::fmax(largest, std::abs(price));
  const int most = std::max(4, decimals_for(largest));
  int digits = 0;
  for (const double price : prices) {
    const auto is_whole = [price](int shift) {
      const double value = price * std::pow(10.0, shift);
      return std::abs(value - std::round(value)) <= 1e-7 * std::abs(value);
    };
    while (digits < most && std::isfinite(price) && !is_whole(digits)) ++digits;
  }
  return digits;
}

int decimals_for(double largest) {
  if (!(largest > 0.0)) return 2;
  return static_cast<int>(std::clamp(3.0 - std::floor(std::log10(largest)), 2.0, 12.0));
}

double nice_step(double span, double count) {
  const double raw = span / count;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  const double factor = raw / power;
  return power * (factor < 1.5 ? 1.0 : factor < 3.5 ? 2.0 : factor < 7.5 ? 5.0 : 10.0);
}

std::string tick_text(double value, double step, double largest) {
  if (std::abs(value) < step / 2) return "0";
  if (largest >= huge) return scientific_text(value);
  const Unit unit = largest >= 1e5 && step >= 1e3 ? unit_of(largest) : Unit{1.0, ""};
  const double places = -std::floor(std::log10(step / unit.size) + 1e-9);
  const int digits = static_cast<int>(std::clamp(places, 0.0, 12.0));
  return grouped_text(value / unit.size, digits) + unit.sign;
}

}  // namespace quor_host
