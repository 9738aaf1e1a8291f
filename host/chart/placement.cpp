#include "placement.h"

#include <algorithm>
#include <cmath>

namespace quor_host {
namespace {

constexpr double strip = 32.0;  ///< width of what a bucket covers
constexpr double step = 3.0;
constexpr double first_aside = 9.0;  ///< a text straight above its bar is better than a nearer one

Box brought_into(const Box& box, const Box& bounds) {
  const double x = std::max(bounds.left - box.left, std::min(0.0, bounds.right - box.right));
  const double y = std::max(bounds.top - box.top, std::min(0.0, bounds.bottom - box.bottom));
  return box.moved(x, y);
}

bool lies_within(const Box& box, const Box& bounds) {
  return box.left >= bounds.left && box.right <= bounds.right && box.top >= bounds.top &&
         box.bottom <= bounds.bottom;
}

}  // namespace

Placement::Placement(Box bounds)
    : bounds_(bounds),
      buckets_(static_cast<size_t>(std::max(1.0, (bounds.right - bounds.left) / strip)) + 1) {}

size_t Placement::bucket(double x) const {
  const double number = (x - bounds_.left) / strip;
  return static_cast<size_t>(std::clamp(number, 0.0, static_cast<double>(buckets_.size() - 1)));
}

void Placement::occupy(const Box& box) {
  for (size_t i = bucket(box.left); i <= bucket(box.right); ++i) buckets_[i].push_back(box);
}

bool Placement::is_free(const Box& box) const {
  for (size_t i = bucket(box.left); i <= bucket(box.right); ++i) {
    const auto meets = [&box](const Box& taken) { return taken.meets(box); };
    if (std::ranges::any_of(buckets_[i], meets)) return false;
  }
  return true;
}

std::optional<Box> Placement::search(const Box& wanted, double direction, double reach,
                                     bool sideways) const {
  const double half = std::floor((wanted.right - wanted.left) / 2);
  const int steps = static_cast<int>(reach / step);
  for (int i = 0; i <= steps; ++i) {
    const double way = i * step;
    for (const double aside : {0.0, -half, half}) {
      if (aside != 0.0 && (!sideways || way < first_aside)) continue;
      const Box box = wanted.moved(aside, direction * way);
      if (lies_within(box, bounds_) && is_free(box)) return box;
    }
  }
  return std::nullopt;
}

std::optional<Box> Placement::place(const Box& wanted, bool upwards, const Leeway& leeway) {
  const Box start = brought_into(wanted, bounds_);
  const double direction = upwards ? -1.0 : 1.0;
  auto box = search(start, direction, leeway.ahead, leeway.sideways);
  if (!box && leeway.behind > 0.0) {
    box = search(start, -direction, leeway.behind, leeway.sideways);
  }
  if (box) occupy(*box);
  return box;
}

}  // namespace quor_host
