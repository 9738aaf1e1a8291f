#include "drawing/base_shape.h"

#include "text/json.h"

namespace quor {

std::string BaseShape::ToJsonText() const {
  std::string text;
  append_json_integer(text, "TitleVisible", TitleVisible, true);
  append_json_integer(text, "Digit", Digit, true);
  append_json_text(text, "ShapeName", ShapeName, true);
  append_json_integer(text, "Field1Id", Field1Id, true);
  append_json_text(text, "Field1Text", Field1Text, true);
  append_json_integer(text, "Field1VisibleId", Field1VisibleId, true);
  append_json_integer(text, "ZIndex", ZIndex, true);
  return text;
}

}  // namespace quor
