// The base of all drawing records. This header depends on nothing.
#pragma once

#include <cstdint>
#include <string>

namespace quor {

/// What a drawing word leaves behind: what to draw, and in which columns the host finds the
/// numbers. Final once it has been made; from then on only the cells of the columns change.
class BaseShape {
 public:
  BaseShape(std::string name, int32_t z_index) : ShapeName(std::move(name)), ZIndex(z_index) {}
  virtual ~BaseShape() = default;

  /// The record as one JSON object. The base gives its own keys only, each with its comma.
  virtual std::string ToJsonText() const;

  int32_t TitleVisible = 1;
  int32_t Digit = -1;  ///< decimal places of the printed value; -1 leaves them to the host
  std::string ShapeName;
  int32_t Field1Id = -1;
  std::string Field1Text;
  int32_t Field1VisibleId = -1;
  int32_t ZIndex;
};

}  // namespace quor
