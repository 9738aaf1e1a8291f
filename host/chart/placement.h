// Finds places for texts that must not cover bars or one another.
#pragma once

#include <optional>
#include <vector>

namespace quor_host {

struct Box {
  double left = 0.0;
  double top = 0.0;
  double right = 0.0;
  double bottom = 0.0;

  bool operator==(const Box&) const = default;
  bool meets(const Box& other) const {
    return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
  }
  Box moved(double x, double y) const { return {left + x, top + y, right + x, bottom + y}; }
};

/// How far a box may give way, in pixels.
struct Leeway {
  double ahead = 0.0;     ///< away from the bar
  double behind = 0.0;    ///< to its other side
  bool sideways = false;  ///< by half of its width, where it gives way at all
};

class Placement {
 public:
  /// Whatever is placed lies within the bounds.
  explicit Placement(Box bounds);

  void occupy(const Box& box);
  bool is_free(const Box& box) const;

  /// The free place nearest to the wanted one, looked for upwards or downwards and only then on the
  /// other side, and taken. None if there is none near by.
  std::optional<Box> place(const Box& wanted, bool upwards, const Leeway& leeway);

 private:
  std::optional<Box> search(const Box& wanted, double direction, double reach, bool sideways) const;
  size_t bucket(double x) const;

  Box bounds_;
  std::vector<std::vector<Box>> buckets_;  ///< taken boxes by the strips that they reach into
};

}  // namespace quor_host
