// The twelve drawing records. Fields bear the names of their keys, with their defaults; the order
// of the keys in the JSON stands in shapes.cpp.
#pragma once

#include <memory>

#include "core/base_shape.h"
#include "tables/style_table.h"

namespace quor {

/// A visibility column holds one of these per bar: the record shows there, or it doesn't.
inline constexpr double shown_mark = 1.0;
inline constexpr double hidden_mark = -10000.0;

class BarShape final : public WholeShape {
 public:
  BarShape() : WholeShape("BarShape", 1) {}
  void tell(RecordKeys& keys) const override;

  std::string LowerShadowColor = "Brush.Gray9";
  std::string UpperShadowColor = "Brush.Gray9";
  int32_t Field2Id = -1;
  std::string Field2Text;
  int32_t Field2VisibleId = -1;
  float LineWidth = -1.0F;
  BarStyle Style = BarStyle::rect;
  int32_t IsFilled = 1;
  int32_t IsColorStick = 0;
  int32_t IsVolStick = 0;
};

class CandleShape final : public WholeShape {
 public:
  CandleShape() : WholeShape("CandleShape", 1) {}
  void tell(RecordKeys& keys) const override;

  int32_t CloseField = -1;
  std::string FilledColor = "Brush.Red6";
  std::string CloseFieldText;
  std::string LowerShadowColor = "Brush.Green6";
  std::string UpperShadowColor = "Brush.Red6";
  std::string EqualShadowColor = "Brush.Gray9";
  int32_t HighField = -1;
  std::string HighFieldText;
  int32_t LowField = -1;
  std::string LowFieldText;
  int32_t OpenField = -1;
  std::string OpenFieldText;
  CandleStyle Style = CandleStyle::rect;
  int32_t IsFilled = 1;
  int32_t IsColorKLine = 0;
};

class FuturesTradeShape final : public WholeShape {
 public:
  FuturesTradeShape() : WholeShape("FuturesTradeShape", -1) {}
  void tell(RecordKeys& keys) const override;

  int32_t trade_count = 0;
  int32_t NoticeLineNumber = 0;
};

class ImageShape final : public WholeShape {
 public:
  ImageShape() : WholeShape("ImageShape", -1) {}
  void tell(RecordKeys& keys) const override;

  int32_t IsLastCandle = 0;
};

class NoticeShape final : public WholeShape {
 public:
  NoticeShape() : WholeShape("NoticeShape", -1) {}
  void tell(RecordKeys& keys) const override;

  std::string NoticeMessage;
  int32_t NoticeLineNumber = 0;
};

class PolygonShape final : public WholeShape {
 public:
  PolygonShape() : WholeShape("PolygonShape", 2) {}
  void tell(RecordKeys& keys) const override;

  std::string FilledColor = "Brush.Gray9";
  int32_t Field2Id = -1;
  std::string Field2Text;
  PolygonStyle Style = PolygonStyle::polygon;
};

/// Lines through bars, and the analytical figures.
class PolylineShape final : public WholeShape {
 public:
  PolylineShape() : WholeShape("PolylineShape", 2) {}
  void tell(RecordKeys& keys) const override;

  std::string LineColor = "Brush.Gray9";
  std::string ConditionColor = "Brush.Gray9";
  double Ratio = 1.0;
  LineDashStyle LineShapeStyle = LineDashStyle::solid_line;
  LineFormStyle Style = LineFormStyle::polyline;
  float LineWidth = 1.0F;
  int32_t Field2Id = -1;
  int32_t Field2VisibleId = -1;
  int32_t Field3Id = -1;
  int32_t Field3VisibleId = -1;
  bool is_drawn = true;  ///< acts through the marks; no key of the JSON
  int32_t IsContinuousLine = 0;
};

class RectShape final : public WholeShape {
 public:
  RectShape() : WholeShape("RectShape", 0) {}
  void tell(RecordKeys& keys) const override;

  std::string FilledColor = "Brush.Gray9";
  std::string GradientColor;
  int32_t GradientDirection = 0;
  int32_t IsLastCandle = 0;
};

class SoundShape final : public WholeShape {
 public:
  SoundShape() : WholeShape("SoundShape", -1) {}
  void tell(RecordKeys& keys) const override;
};

class StraightLineShape final : public WholeShape {
 public:
  StraightLineShape() : WholeShape("StraightLineShape", 2) {}
  void tell(RecordKeys& keys) const override;

  std::string LineColor = "Brush.Gray9";
  int32_t Field2Id = -1;
  int32_t Field2VisibleId = -1;
  LineDashStyle LineShapeStyle = LineDashStyle::solid_line;
  LineFormStyle Style = LineFormStyle::straight_line;
  float LineWidth = 1.0F;
  int32_t IsExpand = 0;
  int32_t HorizontalOffset1FieldId = -1;
  int32_t HorizontalOffset2FieldId = -1;
  int32_t IsLastCandle = 0;
  double Slope = 0.0;
};

class TextShape final : public WholeShape {
 public:
  TextShape() : WholeShape("TextShape", 3) {}
  void tell(RecordKeys& keys) const override;

  int32_t NumberFieldId = -1;
  std::string Text;
  std::string TextColor = "Brush.Gray9";
  int32_t HorizontalAlign = 1;
  int32_t VerticalAlign = 1;
  double HorizontalOffset = 0.0;
  double VerticalOffset = 0.0;
  int32_t FontSize = 14;
  bool is_drawn = true;  ///< acts through the marks; no key of the JSON
};

/// The range of the value axis. Its name differs from its class.
class YRangeShape final : public WholeShape {
 public:
  YRangeShape() : WholeShape("YAxisRange", -1) {}
  void tell(RecordKeys& keys) const override;
};

}  // namespace quor
