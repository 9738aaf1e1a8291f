#include "drawing/shapes.h"

#include "text/json.h"

namespace quor {
namespace {

/// Writes one record: the base keys, then the keys of its class in the order of the calls.
class Keys {
 public:
  explicit Keys(const BaseShape& record) : text_("{" + record.BaseShape::ToJsonText()) {}

  Keys& integer(std::string_view key, int32_t value) {
    append_json_integer(text_, key, value, true);
    return *this;
  }
  Keys& text(std::string_view key, std::string_view value) {
    append_json_text(text_, key, value, true);
    return *this;
  }
  Keys& number(std::string_view key, double value) {
    append_json_float(text_, key, value, true);
    return *this;
  }
  std::string end() {
    text_.back() = '}';
    return std::move(text_);
  }

 private:
  std::string text_;
};

}  // namespace

std::string BarShape::ToJsonText() const {
  return Keys(*this)
      .text("LowerShadowColor", LowerShadowColor)
      .text("UpperShadowColor", UpperShadowColor)
      .integer("Field2Id", Field2Id)
      .text("Field2Text", Field2Text)
      .integer("Field2VisibleId", Field2VisibleId)
      .number("LineWidth", LineWidth)
      .text("Style", bar_word(Style))
      .integer("IsFilled", IsFilled)
      .integer("IsVolStick", IsVolStick)
      .integer("IsColorStick", IsColorStick)
      .end();
}

std::string CandleShape::ToJsonText() const {
  return Keys(*this)
      .integer("CloseField", CloseField)
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
      .integer("IsColorKLine", IsColorKLine)
      .end();
}

std::string FuturesTradeShape::ToJsonText() const {
  return Keys(*this)
      .integer("trade_count", trade_count)
      .integer("NoticeLineNumber", NoticeLineNumber)
      .text("Style", ShapeName)
      .end();
}

std::string ImageShape::ToJsonText() const {
  return Keys(*this).text("Style", ShapeName).integer("IsLastCandle", IsLastCandle).end();
}

std::string NoticeShape::ToJsonText() const {
  return Keys(*this)
      .text("NoticeMessage", NoticeMessage)
      .integer("NoticeLineNumber", NoticeLineNumber)
      .text("Style", ShapeName)
      .end();
}

std::string PolygonShape::ToJsonText() const {
  return Keys(*this)
      .text("FilledColor", FilledColor)
      .integer("Field2Id", Field2Id)
      .text("Field2Text", Field2Text)
      .text("Style", polygon_word(Style))
      .end();
}

std::string PolylineShape::ToJsonText() const {
  return Keys(*this)
      .text("LineColor", LineColor)
      .text("ConditionColor", ConditionColor)
      .text("Style", form_word(Style))
      .number("LineWidth", LineWidth)
      .text("LineShapeStyle", dash_word(LineShapeStyle))
      .integer("Field2Id", Field2Id)
      .integer("Field2VisibleId", Field2VisibleId)
      .number("Ratio", Ratio)
      .integer("IsContinuousLine", IsContinuousLine)
      .integer("Field3Id", Field3Id)
      .integer("Field3VisibleId", Field3VisibleId)
      .end();
}

std::string RectShape::ToJsonText() const {
  return Keys(*this)
      .text("FilledColor", FilledColor)
      .text("Style", ShapeName)
      .text("GradientColor", GradientColor)
      .integer("GradientDirection", GradientDirection)
      .integer("IsLastCandle", IsLastCandle)
      .end();
}

std::string SoundShape::ToJsonText() const { return Keys(*this).text("Style", ShapeName).end(); }

std::string StraightLineShape::ToJsonText() const {
  return Keys(*this)
      .text("LineColor", LineColor)
      .text("Style", form_word(Style))
      .number("LineWidth", LineWidth)
      .integer("Field2Id", Field2Id)
      .integer("Field2VisibleId", Field2VisibleId)
      .integer("IsExpand", IsExpand)
      .number("Slope", Slope)
      .integer("IsLastCandle", IsLastCandle)
      .integer("HorizontalOffset1FieldId", HorizontalOffset1FieldId)
      .integer("HorizontalOffset2FieldId", HorizontalOffset2FieldId)
      .text("LineShapeStyle", dash_word(LineShapeStyle))
      .end();
}

std::string TextShape::ToJsonText() const {
  return Keys(*this)
      .text("Text", Text)
      .text("TextColor", TextColor)
      .integer("HorizontalAlign", HorizontalAlign)
      .integer("VerticalAlign", VerticalAlign)
      .number("HorizontalOffset", HorizontalOffset)
      .number("VerticalOffset", VerticalOffset)
      .integer("NumberFieldId", NumberFieldId)
      .integer("FontSize", FontSize)
      .text("Style", ShapeName)
      .end();
}

std::string YRangeShape::ToJsonText() const { return Keys(*this).text("Style", ShapeName).end(); }

}  // namespace quor
