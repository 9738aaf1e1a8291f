// Style items without effect: of a kind that the drawing doesn't take, or beaten by a later one.
#include <algorithm>
#include <array>
#include <map>

#include "letters.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

// Kinds of items, one letter each: c colour, w width, d form of the line, p decimals, n NODRAW,
// t NOTEXT, a ALIGN, v VALIGN, f FONTSIZE, s SOLID and HOLLOW.
struct ItemKind {
  std::string_view front;
  char kind;
};
constexpr ItemKind item_kinds[] = {{"LINETHICK", 'w'},  {"SOLIDLINE", 'd'}, {"DASHLINE", 'd'},
                                   {"DASHDOTDOT", 'd'}, {"DASHDOT", 'd'},   {"DASH", 'd'},
                                   {"DOTLINE", 'd'},    {"DOT", 'd'},       {"POINTDOT", 'd'},
                                   {"PRECIS", 'p'},     {"NODRAW", 'n'},    {"NOTEXT", 't'},
                                   {"ALIGN", 'a'},      {"VALIGN", 'v'},    {"FONTSIZE", 'f'},
                                   {"SOLID", 's'},      {"HOLLOW", 's'},    {"RGB", 'c'}};

/// What a drawing takes behind it.
struct Taken {
  std::string_view word;
  std::string_view kinds;
};
constexpr Taken taken[] = {
    {"POLYLINE", "cwdpnt"},
    {"POLYLINE1", "cwdpn"},
    {"PARTLINE", "wdp"},
    {"PARTLINE1", "cwdp"},
    {"DRAWCOLORLINE", "wdp"},
    {"DRAWLINE", "wd"},
    {"DRAWLINE1", "cwd"},
    {"DRAWLINE3", "cwd"},
    {"DRAWLASTBARLINE", "cwd"},
    {"DRAWSL", "wd"},
    {"DRAWSL1", "cwd"},
    {"VERTLINE", "wd"},
    {"VERTLINE1", "cwd"},
    {"DRAWTEXT", "cavfpnt"},
    {"DRAWLASTBARTEXT", "cavf"},
    {"KTEXT", "f"},
    {"DRAWNUMBER", "avf"},
    {"DRAWNUMBER1", "cavf"},
    {"DRAWSHIFTNUMBER", "avf"},
    {"DRAWLASTBARNUMBER", "avf"},
    {"DRAWICON", "cav"},
    {"DRAWLASTBARICON", "av"},
    {"DRAWBMP", ""},
    {"DRAWBKBMP", ""},
    {"STICKLINE", "cs"},
    {"STICKLINE1", "cs"},
    {"DRAWCOLUMNCHART", ""},
    {"DRAWKLINE", ""},
    {"DRAWKLINE1", ""},
    {"DRAWBARLINE", ""},
    {"DRAWCOLORKLINE", ""},
    {"DRAWGBK", ""},
    {"DRAWGBK1", ""},
    {"FILLRGN", ""},
    {"FILLRGN1", "c"},
    {"HORIZONTALLINE", "cwdpt"},
    {"DRAWHORIZONTALLINE", "wdp"},
    {"TRENDLINES", "cwdpt"},
    {"DRAWTRENDLINE", "wdp"},
    {"ANGLELINE", "cwdpt"},
    {"DRAWANGLELINE", "wdp"},
    {"GOLDENLINE", "cwdpt"},
    {"DRAWGOLDENLINE", "wdp"},
    {"WAVERULER", "cwdpt"},
    {"DRAWWAVERULER", "wdp"},
};

char kind_of(const std::string& item) {
  if (is_colour(item)) return 'c';
  for (const ItemKind& row : item_kinds) {
    const bool is_numbered = std::string_view("wpavf").find(row.kind) != absent;
    if (is_numbered ? item.starts_with(row.front) : item == row.front) return row.kind;
  }
  return '\0';
}

class StyleCheck {
 public:
  StyleCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), out_(out) {}

  void run() {
    if (statement_.form == Form::assignment) {
      check_assignment();
      return;
    }
    const std::string_view owner = owner_word();
    std::map<char, const Token*> last;
    for (const Range item : statement_.items) {
      if (item.empty()) continue;
      const Token& token = statement_.tokens[item.begin];
      const char kind = kind_of(token.text);
      if (kind == '\0' || (item.size() > 1 && token.text != "RGB")) continue;
      if (check_taken(owner, token, kind)) continue;
      const Token*& before = last[kind];
      if (before != nullptr) add_beaten(*before, token);
      before = &token;
    }
  }

 private:
  void add(const Token& token, std::string sentence, std::string suggestion = {}) {
    out_.push_back({place_of(token), std::move(sentence), std::move(suggestion)});
  }

  void add_beaten(const Token& before, const Token& behind) {
    if (before.text == behind.text) {
      add(before, before.text + " stands twice", "take one away");
    } else {
      add(before, before.text + " has no effect, " + behind.text + " behind it wins",
          "take one of the two away");
    }
  }

  /// NODRAW and NOTEXT behind := may be a habit: they ask for what is so.
  void check_assignment() {
    for (const Range item : statement_.items) {
      if (item.empty() || statement_.expression.empty()) continue;
      const Token& token = statement_.tokens[item.begin];
      const bool is_habit = token.text == "NODRAW" || token.text == "NOTEXT" ||
                            token.text == "LINETHICK0" || !is_style(token.text);
      if (is_habit) continue;
      add(token, token.text + " has no effect: ':=' draws nothing",
          "write " + reading_.text(statement_, statement_.name_range) + ": to draw the line");
      return;
    }
  }

  /// The drawing, the first item if it is a short form, or nothing for a line.
  std::string_view owner_word() const {
    if (!statement_.tokens.empty() && statement_.form == Form::expression &&
        acts(statement_.tokens[0].text))
      return statement_.tokens[0].text;
    if (statement_.items.empty() || statement_.items[0].empty()) return {};
    const std::string& first = statement_.tokens[statement_.items[0].begin].text;
    return is_short_form(first) ? first : std::string_view();
  }

  /// Whether the item is told as one that its owner doesn't take.
  bool check_taken(std::string_view owner, const Token& token, char kind) {
    if (owner.empty()) {
      if (std::string_view("avfs").find(kind) == absent) return false;
      add(token, token.text + " has no effect on a line",
          kind == 's' ? "it is for sticks; a line is SOLIDLINE of itself"
                      : "it is for texts and marks");
      return true;
    }
    if (owner == "COLORSTICK" || owner == "VOLSTICK" || owner == "VOLUMESTICK") {
      if (kind != 'c') return false;
      add(token, token.text + " has no effect: " + std::string(owner) + " brings its own colours",
          "sticks of one colour are value,STICK," + token.text);
      return true;
    }
    if (owner == "NOTICE" || owner == "SOUND" || is_trade_word(owner) || owner == "PLAYSOUND") {
      add(token, token.text + " has no effect: " + std::string(owner) + " draws nothing",
          "take it away");
      return true;
    }
    return check_drawing(owner, token, kind);
  }

  bool check_drawing(std::string_view owner, const Token& token, char kind) {
    const std::string_view drawing = owner == "ICON"   ? "DRAWICON"
                                     : owner == "WORD" ? "DRAWTEXT"
                                                       : owner;
    const auto* const row = std::ranges::find(taken, drawing, &Taken::word);
    if (row == std::end(taken) || row->kinds.find(kind) != absent) return false;
    const bool has_colour_inside = kind == 'c' && !row->kinds.empty();
    add(token, token.text + " has no effect on " + std::string(owner),
        has_colour_inside ? "its colour stands among the arguments" : "take it away");
    return true;
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Problem>& out_;
};

}  // namespace

void warn_of_styles(const Reading& reading, const Statement& statement, std::vector<Problem>& out) {
  StyleCheck(reading, statement, out).run();
}

}  // namespace quor_advice
