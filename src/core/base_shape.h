// The base of all drawing records. This header depends on nothing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quor {

/// Takes what a record holds, key by key in the order of its JSON.
class RecordKeys {
 public:
  virtual ~RecordKeys() = default;
  virtual RecordKeys& integer(std::string_view key, int32_t value) = 0;
  virtual RecordKeys& text(std::string_view key, std::string_view value) = 0;
  virtual RecordKeys& number(std::string_view key, double value) = 0;
};

/// What a drawing word leaves behind: what to draw, and in which columns the host finds the
/// numbers. Final once it has been made; from then on only the cells of the columns change.
class BaseShape {
 public:
  BaseShape(std::string name, int32_t z_index) : ShapeName(std::move(name)), ZIndex(z_index) {}
  virtual ~BaseShape() = default;

  /// The record as one JSON object. The base gives its own keys only, each with its comma.
  virtual std::string ToJsonText() const;
  /// Hands over all that the record holds, what the base has in front.
  virtual void tell(RecordKeys& keys) const;

  int32_t TitleVisible = 1;
  int32_t Digit = -1;  ///< decimal places of the printed value; -1 leaves them to the host
  std::string ShapeName;
  int32_t Field1Id = -1;
  std::string Field1Text;
  int32_t Field1VisibleId = -1;
  int32_t ZIndex;
};

/// A record with keys of its own: its JSON holds those of the base and then its own.
class WholeShape : public BaseShape {
 public:
  using BaseShape::BaseShape;
  std::string ToJsonText() const final;
};

}  // namespace quor
