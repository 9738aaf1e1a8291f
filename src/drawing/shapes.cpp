#include "drawing/shapes.h"

namespace quor {

void BarShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("LowerShadowColor", LowerShadowColor)
      .text("UpperShadowColor", UpperShadowColor)
      .integer("Field2Id", Field2Id)
      .text("Field2Text", Field2Text)
      .integer("Field2VisibleId", Field2VisibleId)
      .number("LineWidth", LineWidth)
      .text("Style", bar_word(Style))
      .integer("IsFilled", IsFilled)
      .integer("IsVolStick", IsVolStick)
      .integer("IsColorStick", IsColorStick);
}

void CandleShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.integer("CloseField", CloseField)
      .text("CloseFieldText", CloseFieldText)
      .integer("HighField", HighField)
      .text("HighFieldText", HighFieldText)
      .integer("LowField", LowField)
      .text("LowFieldText", LowFieldText)
      .integer("OpenField", OpenField)
      .text("OpenFieldText", OpenFieldText)
      .text("Style", candle_word(Style))
      .text("LowerShadowColor", LowerShadowColor)
      .text("UpperShadowColor", UpperShadowColor)
      .text("FilledColor", FilledColor)
      .integer("IsFilled", IsFilled)
      .text("EqualShadowColor", EqualShadowColor)
      .integer("IsColorKLine", IsColorKLine);
}

void FuturesTradeShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.integer("trade_count", trade_count)
      .integer("NoticeLineNumber", NoticeLineNumber)
      .text("Style", ShapeName);
}

void ImageShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("Style", ShapeName).integer("IsLastCandle", IsLastCandle);
}

void NoticeShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("NoticeMessage", NoticeMessage)
      .integer("NoticeLineNumber", NoticeLineNumber)
      .text("Style", ShapeName);
}

void PolygonShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("FilledColor", FilledColor)
      .integer("Field2Id", Field2Id)
      .text("Field2Text", Field2Text)
      .text("Style", polygon_word(Style));
}

void PolylineShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("LineColor", LineColor)
      .text("ConditionColor", ConditionColor)
      .text("Style", form_word(Style))
      .number("LineWidth", LineWidth)
      .text("LineShapeStyle", dash_word(LineShapeStyle))
      .integer("Field2Id", Field2Id)
      .integer("Field2VisibleId", Field2VisibleId)
      .number("Ratio", Ratio)
      .integer("IsContinuousLine", IsContinuousLine)
      .integer("Field3Id", Field3Id)
      .integer("Field3VisibleId", Field3VisibleId);
}

void RectShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("FilledColor", FilledColor)
      .text("Style", ShapeName)
      .text("GradientColor", GradientColor)
      .integer("GradientDirection", GradientDirection)
      .integer("IsLastCandle", IsLastCandle);
}

void SoundShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("Style", ShapeName);
}

void StraightLineShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("LineColor", LineColor)
      .text("Style", form_word(Style))
      .number("LineWidth", LineWidth)
      .integer("Field2Id", Field2Id)
      .integer("Field2VisibleId", Field2VisibleId)
      .integer("IsExpand", IsExpand)
      .number("Slope", Slope)
      .integer("IsLastCandle", IsLastCandle)
      .integer("HorizontalOffset1FieldId", HorizontalOffset1FieldId)
      .integer("HorizontalOffset2FieldId", HorizontalOffset2FieldId)
      .text("LineShapeStyle", dash_word(LineShapeStyle));
}

void TextShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("Text", Text)
      .text("TextColor", TextColor)
      .integer("HorizontalAlign", HorizontalAlign)
      .integer("VerticalAlign", VerticalAlign)
      .number("HorizontalOffset", HorizontalOffset)
      .number("VerticalOffset", VerticalOffset)
      .integer("NumberFieldId", NumberFieldId)
      .integer("FontSize", FontSize)
      .text("Style", ShapeName);
}

void YRangeShape::tell(RecordKeys& keys) const {
  BaseShape::tell(keys);
  keys.text("Style", ShapeName);
}

}  // namespace quor
