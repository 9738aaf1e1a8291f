// The passes that turn short forms with parentheses into plain calls and style items. All work on a
// slot in upper case; a slot without the form stays as it is.
#pragma once

#include <string>
#include <string_view>

#include "compiler/statement_text.h"

namespace quor {

/// Refuses a branch word whose first call stands as an argument behind another one. It changes
/// nothing.
Status check_branches(std::string_view slot, const StatementErrors& errors);

/// RGB(r,g,b) becomes COLORrrggbb, wherever it stands. A component above 255 runs into the bits of
/// the one beside it.
void rewrite_rgb(std::string& slot);

/// `COND,SOUND('file')` becomes a call of PLAYSOUND.
Status rewrite_sound(std::string& slot, const StatementErrors& errors);

/// `COND,ICON(1,'text'),ITEMS` becomes a call of DRAWICON at the high, ICON(0,'text') at the low.
/// Throws std::out_of_range for a form without a quoted text.
Status rewrite_icon(std::string& slot, const StatementErrors& errors);

/// `COND,WORD(1,'text'),ITEMS` becomes a call of DRAWTEXT at the high, any other number at the low.
Status rewrite_word(std::string& slot, const StatementErrors& errors);

/// CJLVOL(0) becomes volume sticks in the colours of the bars, any other digit grey ones.
Status rewrite_cjlvol(std::string& slot, const StatementErrors& errors);

/// Takes SETSTYLECOLOR( out, so that its arguments are style items, and with it every ")" of the
/// slot.
void rewrite_set_style_color(std::string& slot);

}  // namespace quor
