#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr std::string_view shown = "A null COND shows.";
constexpr std::string_view cut_shown = "COND is cut: 0.5 doesn't show. A null COND shows.";
constexpr std::string_view left_out = "A null price leaves the bar out.";
constexpr std::string_view ratio_rule = "Null conditions show. RATIO must not be null (2012).";

constexpr std::string_view one_price = "COND: a condition; PRICE: where";
constexpr std::string_view one_price_colour =
    "COND: a condition; PRICE: where; COLOR: a colour word";
constexpr std::string_view two_anchors =
    "COND1, COND2: conditions that mark the anchors; PRICE1, PRICE2: where";
constexpr std::string_view two_anchors_colour =
    "COND1, COND2: conditions that mark the anchors; PRICE1, PRICE2: where; COLOR: a colour word";
constexpr std::string_view two_anchors_ratio =
    "COND1, COND2: conditions that mark the anchors; PRICE1, PRICE2: where; RATIO: a constant";
constexpr std::string_view two_anchors_ratio_colour =
    "COND1, COND2: conditions that mark the anchors; PRICE1, PRICE2: where; RATIO: a constant; "
    "COLOR: a colour word";
constexpr std::string_view moved_ends =
    "COND1, COND2: conditions of the ends; PRICE1, PRICE2: where; OFFSET1, OFFSET2: bars by which "
    "the ends move; EXPAND: how far the line goes on";
constexpr std::string_view candle = "HIGH, OPEN, LOW, CLOSE: prices";
constexpr std::string_view number_arguments =
    "COND: a condition; PRICE: where; NUMBER: what is shown; DECIMALS: how many, 0 for null or "
    "negative";
constexpr std::string_view stick_arguments =
    "COND: a condition; PRICE1, PRICE2: the ends; WIDTH: 1 for null, 0 and below, -1 leaves it to "
    "the host, or a colour word; HOLLOW: other than 0 for a hollow stick";

constexpr WordHelp lines[] = {
    {"POLYLINE", "POLYLINE(COND,PRICE,COLOR)", 3, -1, "A line through all bars where COND holds.",
     one_price_colour, shown, "POLYLINE(C>O,C,COLORRED),LINETHICK2;"},
    {"POLYLINE1", "POLYLINE1(COND,PRICE)", 2, -1,
     "A line through all bars where COND holds; its colour stands among the styles.", one_price,
     shown, "POLYLINE1(1,C),COLORRED;"},
    {"PARTLINE", "PARTLINE(COND,PRICE,COLOR)", 3, -1, "Pieces of a line where COND holds.",
     one_price_colour, shown, "PARTLINE(C>O,C,COLORRED);"},
    {"PARTLINE1", "PARTLINE1(COND,PRICE)", 2, -1,
     "Pieces of a line where COND holds; its colour stands among the styles.", one_price, shown,
     "PARTLINE1(C>O,C),COLORRED;"},
    {"DRAWCOLORLINE", "DRAWCOLORLINE(COND,PRICE,COLOR,COLOR2)", 4, -1,
     "A line in the first colour where COND holds, else in the second.",
     "COND: a condition; PRICE: where; COLOR, COLOR2: colour words", shown,
     "DRAWCOLORLINE(C>O,C,COLORRED,COLORGREEN);"},
    {"DRAWLINE", "DRAWLINE(COND1,PRICE1,COND2,PRICE2,COLOR)", 5, -1,
     "A straight line between two prices, shown where both conditions hold at one bar.",
     "COND1, COND2: conditions; PRICE1, PRICE2: the ends; COLOR: a colour word", shown,
     "DRAWLINE(C>O,H,C>REF(C,1),L,COLORRED);"},
    {"DRAWLINE1", "DRAWLINE1(COND1,PRICE1,COND2,PRICE2,EXPAND)", 5, -1,
     "Straight lines from bars with COND1 to bars with COND2.",
     "COND1, COND2: conditions of the ends; PRICE1, PRICE2: where; EXPAND: how far the line goes "
     "on",
     shown, "DRAWLINE1(C>O,H,C<O,L,0),COLORRED;"},
    {"DRAWLINE3", "DRAWLINE3(COND1,PRICE1,OFFSET1,COND2,PRICE2,OFFSET2,EXPAND)", 7, -1,
     "As DRAWLINE1, with ends moved by bars.", moved_ends, shown, "DRAWLINE3(C>O,H,2,C<O,L,2,0);"},
    {"DRAWLASTBARLINE", "DRAWLASTBARLINE(COND1,PRICE1,OFFSET1,COND2,PRICE2,OFFSET2,EXPAND)", 7, -1,
     "As DRAWLINE3, at the last bar only.", moved_ends, shown, "DRAWLASTBARLINE(1,H,5,1,L,0,1);"},
    {"DRAWSL", "DRAWSL(COND,PRICE,SLOPE,LENGTH,EXPAND,COLOR)", 6, -1,
     "A straight line of a slope and a length.",
     "COND: a condition; PRICE: where it starts; SLOPE, LENGTH: constants; EXPAND: 0 to 3; COLOR: "
     "a "
     "colour word",
     shown, "DRAWSL(C>O,L,1,5,0,COLORRED);"},
    {"DRAWSL1", "DRAWSL1(COND,PRICE,SLOPE,LENGTH,EXPAND)", 5, -1,
     "A straight line of a slope and a length; its colour stands among the styles.",
     "COND: a condition; PRICE: where it starts; SLOPE, LENGTH: constants; EXPAND: 0 to 2", shown,
     "DRAWSL1(C>O,L,1,5,0),COLORRED;"},
    {"VERTLINE", "VERTLINE(COND,COLOR)", 2, -1, "A vertical line where COND holds.",
     "COND: a condition; COLOR: a colour word", shown, "VERTLINE(DAY<REF(DAY,1),COLORGRAY),DOT;"},
    {"VERTLINE1", "VERTLINE1(COND)", 1, -1,
     "A vertical line where COND holds; its colour stands among the styles.", "COND: a condition",
     shown, "VERTLINE1(DAY<REF(DAY,1)),COLORGRAY;"},
    {"HORIZONTALLINE", "HORIZONTALLINE(COND,PRICE)", 2, -1,
     "A level from bars where COND holds; its colour stands among the styles.", one_price, shown,
     "HORIZONTALLINE(ISLASTBAR,C);"},
    {"DRAWHORIZONTALLINE", "DRAWHORIZONTALLINE(COND,PRICE,COLOR)", 3, -1,
     "A level from bars where COND holds, straight form.", one_price_colour, shown,
     "DRAWHORIZONTALLINE(ISLASTBAR,C,COLORRED);"},
    {"TRENDLINES", "TRENDLINES(COND1,PRICE1,COND2,PRICE2)", 4, -1,
     "A line over two anchors; its colour stands among the styles.", two_anchors, shown,
     "TRENDLINES(C>O,L,C<O,H);"},
    {"DRAWTRENDLINE", "DRAWTRENDLINE(COND1,PRICE1,COND2,PRICE2,COLOR)", 5, -1,
     "A line over two anchors, straight form.", two_anchors_colour, shown,
     "DRAWTRENDLINE(C>O,L,C<O,H,COLORRED);"},
    {"ANGLELINE", "ANGLELINE(COND1,PRICE1,COND2,PRICE2,RATIO)", 5, -1,
     "Angle lines; their colour stands among the styles.", two_anchors_ratio, ratio_rule,
     "ANGLELINE(C>O,L,C<O,H,1);"},
    {"DRAWANGLELINE", "DRAWANGLELINE(COND1,PRICE1,COND2,PRICE2,RATIO,COLOR)", 6, -1,
     "Angle lines, straight form.", two_anchors_ratio_colour, ratio_rule,
     "DRAWANGLELINE(C>O,L,C<O,H,1,COLORRED);"},
    {"GOLDENLINE", "GOLDENLINE(COND1,PRICE1,COND2,PRICE2,RATIO)", 5, -1,
     "Levels between two anchors; their colour stands among the styles.", two_anchors_ratio,
     ratio_rule, "GOLDENLINE(C>O,L,C<O,H,1);"},
    {"DRAWGOLDENLINE", "DRAWGOLDENLINE(COND1,PRICE1,COND2,PRICE2,RATIO,COLOR)", 6, -1,
     "Levels between two anchors, straight form.", two_anchors_ratio_colour, ratio_rule,
     "DRAWGOLDENLINE(C>O,L,C<O,H,1,COLORRED);"},
    {"WAVERULER", "WAVERULER(COND1,PRICE1,COND2,PRICE2,COND3,PRICE3,RATIO)", 7, -1,
     "Levels over three anchors; their colour stands among the styles.",
     "COND1 to COND3: conditions that mark the anchors; PRICE1 to PRICE3: where; RATIO: a constant",
     ratio_rule, "WAVERULER(C>O,L,C<O,H,C>O,L,1);"},
    {"DRAWWAVERULER", "DRAWWAVERULER(COND1,PRICE1,COND2,PRICE2,COND3,PRICE3,RATIO,COLOR)", 8, -1,
     "Levels over three anchors, straight form.",
     "COND1 to COND3: conditions that mark the anchors; PRICE1 to PRICE3: where; RATIO: a "
     "constant; "
     "COLOR: a colour word",
     ratio_rule, "DRAWWAVERULER(C>O,L,C<O,H,C>O,L,1,COLORRED);"},
};

constexpr WordHelp marks[] = {
    {"DRAWTEXT", "DRAWTEXT(COND,PRICE,'TEXT')", 3, -1, "A text where COND holds.",
     "COND: a condition; PRICE: where; 'TEXT': in single quotes", cut_shown,
     "DRAWTEXT(C>O,L,'up'),COLORRED;"},
    {"DRAWLASTBARTEXT", "DRAWLASTBARTEXT(PRICE,'TEXT')", 2, -1, "A text at the last bar.",
     "PRICE: where; 'TEXT': in single quotes", "", "DRAWLASTBARTEXT(H,'now');"},
    {"KTEXT", "KTEXT(COND,X,PRICE,ALIGN,COLOR,'TEXT')", 6, -1, "A text moved by X.",
     "COND: a condition; X: how far it moves; PRICE: where; ALIGN: its place; COLOR: a colour "
     "word; 'TEXT': in single quotes",
     shown, "KTEXT(C>O,0,L,1,COLORRED,'up');"},
    {"DRAWNUMBER", "DRAWNUMBER(COND,PRICE,NUMBER,DECIMALS,COLOR)", 5, -1,
     "A number where COND holds.",
     "COND: a condition; PRICE: where; NUMBER: what is shown; DECIMALS: how many, 0 for null or "
     "negative; COLOR: a colour word",
     shown, "DRAWNUMBER(C>O,H,C-O,2,COLORRED);"},
    {"DRAWNUMBER1", "DRAWNUMBER1(COND,PRICE,NUMBER,DECIMALS)", 4, -1,
     "A number where COND holds; its colour stands among the styles.", number_arguments, shown,
     "DRAWNUMBER1(C>O,H,C-O,2),COLORRED;"},
    {"DRAWSHIFTNUMBER", "DRAWSHIFTNUMBER(COND,PRICE,NUMBER,DECIMALS,COLOR,DIRECTION,X)", 7, -1,
     "A number moved by -X for direction 0, by X for 1, by nothing for others.",
     "COND: a condition; PRICE: where; NUMBER: what is shown; DECIMALS: how many; COLOR: a colour "
     "word; DIRECTION: 0 or 1; X: how far",
     "A null COND shows. DIRECTION and X must not be null (2012).",
     "DRAWSHIFTNUMBER(C>O,H,C,2,COLORRED,1,3);"},
    {"DRAWLASTBARNUMBER", "DRAWLASTBARNUMBER(PRICE,NUMBER,DECIMALS,COLOR)", 4, -1,
     "A number at the last bar.",
     "PRICE: where; NUMBER: what is shown; DECIMALS: how many; COLOR: a colour word", "",
     "DRAWLASTBARNUMBER(H,C,2,COLORRED);"},
    {"DRAWICON", "DRAWICON(COND,PRICE,SIGN)", 3, -1, "A sign where COND holds.",
     "COND: a condition; PRICE: where; SIGN: 1 to 33, also written 'ICO5'", cut_shown,
     "DRAWICON(C>O,L,1);"},
    {"DRAWLASTBARICON", "DRAWLASTBARICON(PRICE,'ICO5')", 2, -1, "A sign at the last bar.",
     "PRICE: where; 'ICO5': 'ICO1' to 'ICO33', only in this form", "",
     "DRAWLASTBARICON(H,'ICO5');"},
    {"DRAWBMP", "DRAWBMP(COND,PRICE,'PICTURE')", 3, 3, "A picture of the host where COND holds.",
     "COND: a condition; PRICE: where; 'PICTURE': its name", shown, "DRAWBMP(C>O,L,'flag');"},
    {"DRAWBKBMP", "DRAWBKBMP(COND,'PICTURE')", 2, 2, "A picture of the host as background.",
     "COND: a condition; 'PICTURE': its name", shown, "DRAWBKBMP(1,'flag');"},
};

constexpr WordHelp areas[] = {
    {"STICKLINE", "STICKLINE(COND,PRICE1,PRICE2,WIDTH,HOLLOW)", 5, -1,
     "A stick from one price to another where COND holds.", stick_arguments, cut_shown,
     "STICKLINE(C>O,C,O,3,0),COLORRED;"},
    {"STICKLINE1", "STICKLINE1(COND,PRICE1,PRICE2,WIDTH,HOLLOW)", 5, -1,
     "A stick from one price to another where COND holds, the same as STICKLINE.", stick_arguments,
     cut_shown, "STICKLINE1(C>O,C,O,3,0),COLORRED;"},
    {"DRAWCOLUMNCHART", "DRAWCOLUMNCHART(X,COND1,COND2)", 3, -1,
     "Columns of X, of the first kind where COND1 holds, of the second where COND2 holds.",
     "X: the series; COND1, COND2: conditions", shown, "DRAWCOLUMNCHART(VOL,C>O,C<O);"},
    {"DRAWKLINE", "DRAWKLINE(HIGH,OPEN,LOW,CLOSE)", 4, 4, "Candles.", candle, left_out,
     "DRAWKLINE(H,O,L,C);"},
    {"DRAWKLINE1", "DRAWKLINE1(HIGH,OPEN,LOW,CLOSE)", 4, 4, "Candles, the same as DRAWKLINE.",
     candle, left_out, "DRAWKLINE1(H,O,L,C);"},
    {"DRAWBARLINE", "DRAWBARLINE(HIGH,OPEN,LOW,CLOSE)", 4, 4, "Bars of the American form.", candle,
     left_out, "DRAWBARLINE(H,O,L,C);"},
    {"DRAWCOLORKLINE", "DRAWCOLORKLINE(COND,COLOR,HOLLOW)", 3, 3,
     "The chart's own candles in a colour where COND holds.",
     "COND: a condition; COLOR: a colour word; HOLLOW: other than 0 for hollow candles", shown,
     "DRAWCOLORKLINE(C>O,COLORRED,1);"},
    {"DRAWGBK", "DRAWGBK(COND,COLOR,COLOR2,DIRECTION)", 4, -1,
     "A background that goes from one colour to another.",
     "COND: a condition; COLOR, COLOR2: colour words; DIRECTION: 0 or 1", shown,
     "DRAWGBK(C>O,COLORRED,COLORBLUE,0);"},
    {"DRAWGBK1", "DRAWGBK1(COND,COLOR)", 2, -1, "A background.",
     "COND: a condition; COLOR: a colour word", shown, "DRAWGBK1(C>O,COLORRED);"},
    {"FILLRGN", "FILLRGN(COND,PRICE1,PRICE2,COLOR)", 4, -1,
     "The area between two lines where COND holds.",
     "COND: a condition; PRICE1, PRICE2: the lines; COLOR: a colour word", shown,
     "FILLRGN(C>O,H,L,COLORBLUE);"},
    {"FILLRGN1", "FILLRGN1(COND,PRICE1,PRICE2)", 3, -1,
     "The area between two lines where COND holds, in the first colour among the styles.",
     "COND: a condition; PRICE1, PRICE2: the lines", shown, "FILLRGN1(C>O,H,L),COLORBLUE;"},
    {"BACKGROUNDSTYLE", "BACKGROUNDSTYLE(X)", 1, -1, "Range of the axis.",
     "X: a number that the host knows", "X must not be null (2012).", "BACKGROUNDSTYLE(1);"},
    {"RGB", "RGB(R,G,B)", 3, 3, "A colour, written where a colour word may stand.",
     "R, G, B: red, green, blue from 0 to 255, in digits", "", "A:C,RGB(255,128,0);"},
};

/// One array from several, in their order.
template <size_t... Sizes>
constexpr auto joined(const WordHelp (&... parts)[Sizes]) {
  std::array<WordHelp, (Sizes + ...)> all{};
  auto end = all.begin();
  ((end = std::copy(std::begin(parts), std::end(parts), end)), ...);
  return all;
}

constexpr auto drawing_rows = joined(lines, marks, areas);

}  // namespace

std::span<const WordHelp> drawing_help() { return drawing_rows; }

}  // namespace quor_advice
