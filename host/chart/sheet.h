// What the parts of a picture are drawn with.
#pragma once

#include "../panes/theme.h"
#include "../panes/view.h"
#include "canvas.h"

namespace quor_host {

inline constexpr double sheet_margin = 12.0;
inline constexpr double axis_text_size = 11.0;

struct Sheet {
  Canvas& canvas;
  const View& view;
  const Theme& theme;
};

}  // namespace quor_host
