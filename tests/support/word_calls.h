// A call of every word that takes arguments, with arguments that fit it.
#pragma once

#include <string_view>

namespace quor_test {

/// Words that are called alike: what stands between their parentheses.
struct WordGroup {
  std::string_view words;  ///< with blanks between them
  std::string_view arguments;
};

inline constexpr WordGroup word_groups[] = {
    {"ABS ACOS ASIN ATAN COS SIN TAN EXP LN LOG10 SQRT CEILING FLOOR INTPART FRACPART REVERSE "
     "SQUARE "
     "CUBE LOG ROUND SIGN NOT ISNULL RAND BARSCOUNT GET BARSLAST BARSLASTCOUNT BARSSINCE COST "
     "WINNER TIMETOT0 T0TOTIME",
     "C/O"},
    {"MAX MIN POW MOD MAX1 MIN1 CROSS CROSSUP CROSSDOWN MV", "C,O"},
    {"MA EMA EXPMA EMAWH EMA2 WMA MEMA EXPMEMA SMMA TRMA TSMA STD STDP VAR VARP DEVSQ AVEDEV SLOPE "
     "FORCAST HHV LLV HHVBARS LLVBARS HV LV SUM COUNT HARMEAN REF REFX REFX1 EXIST EVERY UPNDAY "
     "DOWNNDAY NEWHBARS NEWLBARS FILTER BACKSET WAVEPEAK1 WAVEVALLEY1",
     "C,3"},
    {"BARSSINCEN", "C>O,3"},
    {"KURTOSIS", "C,5"},
    {"AMA DMA", "C,0.5"},
    {"TMA", "C,0.5,0.5"},
    {"SMA", "C,3,1"},
    {"ADMA", "C,3,2,5"},
    {"COVAR CORRELATION COEFFICIENTR NEWHBARS1 NEWLBARS1 NDAY", "C,O,3"},
    {"PERCENTILE", "C,3,50"},
    {"SORT SORTPOS", "0,1,C,O"},
    {"NORMPDF", "C,O,2"},
    {"NUMPOW LAST", "C,3,1"},
    {"BETWEEN RANGE", "C,L,H"},
    {"IF IFELSE IFF IFN", "C>O,L,H"},
    {"VALUEWHEN CONDBARS", "C>O,O>C"},
    {"SUMBARS", "C,150"},
    {"SET", "C,C"},
    {"ZIGZAG", "C,1,0"},
    {"PEAK PEAKBARS TROUGH TROUGHBARS", "C,1,1,0"},
    {"WAVEPEAK WAVEVALLEY", "1"},
    {"SAR SARSHOWTYPE SAR1 SAR1SHOWTYPE", "4,0.02,0.2"},
    {"DIVERGENCE", "C,O,2,5,1"},
    {"CODELIKE", "'60'"},
    {"RGB", "255,MAX(1,2),0"},
    {"SOUND", "'A'"},
    {"PLAYSOUND", "C>O,'A'"},
    {"DRAWLINE", "C>O,H,C<O,L,COLORRED"},
    {"DRAWLINE1", "C>O,H,C<O,L,1"},
    {"DRAWLINE3 DRAWLASTBARLINE", "C>O,H,1,C<O,L,2,1"},
    {"DRAWSL", "C>O,H,1,10,1,COLORRED"},
    {"DRAWSL1", "C>O,H,1,10,1"},
    {"VERTLINE DRAWGBK1", "C>O,COLORRED"},
    {"VERTLINE1", "C>O"},
    {"POLYLINE PARTLINE", "C>O,H,COLORRED"},
    {"POLYLINE1 PARTLINE1 HORIZONTALLINE", "C>O,H"},
    {"DRAWCOLORLINE", "C>O,H,COLORRED,COLORBLUE"},
    {"DRAWTEXT DRAWBMP", "C>O,H,'text'"},
    {"DRAWICON", "C>O,H,1"},
    {"DRAWLASTBARTEXT DRAWLASTBARICON", "H,'ICO1'"},
    {"DRAWNUMBER", "C>O,H,C-O,2,COLORRED"},
    {"DRAWNUMBER1", "C>O,H,C-O,2"},
    {"DRAWSHIFTNUMBER", "C>O,H,C-O,2,COLORRED,1,5"},
    {"DRAWLASTBARNUMBER", "H,C-O,2,COLORRED"},
    {"KTEXT", "C>O,1,H,0,COLORRED,'text'"},
    {"DRAWBKBMP", "C>O,'name'"},
    {"STICKLINE STICKLINE1", "C>O,C,O,2,0"},
    {"DRAWCOLUMNCHART", "C,C>O,C<O"},
    {"DRAWBARLINE DRAWKLINE DRAWKLINE1", "H,O,L,C"},
    {"DRAWCOLORKLINE", "C>O,COLORRED,0"},
    {"DRAWGBK", "C>O,COLORRED,COLORBLUE,0"},
    {"FILLRGN", "C>O,C,O,COLORRED"},
    {"FILLRGN1", "C>O,C,O"},
    {"BACKGROUNDSTYLE", "1"},
    {"ANGLELINE GOLDENLINE", "C>O,L,C<O,H,1"},
    {"DRAWANGLELINE DRAWGOLDENLINE", "C>O,L,C<O,H,1,COLORRED"},
    {"DRAWHORIZONTALLINE", "C>O,H,COLORRED"},
    {"TRENDLINES", "C>O,L,C<O,H"},
    {"DRAWTRENDLINE", "C>O,L,C<O,H,COLORRED"},
    {"WAVERULER", "C>O,L,C<O,H,C>L,O,1"},
    {"DRAWWAVERULER", "C>O,L,C<O,H,C>L,O,1,COLORRED"},
};

/// Empty for a word of no group.
constexpr std::string_view arguments_of(std::string_view word) {
  for (const auto& [words, arguments] : word_groups) {
    for (size_t at = words.find(word); at != words.npos; at = words.find(word, at + 1)) {
      const size_t end = at + word.size();
      const bool whole =
          (at == 0 || words[at - 1] == ' ') && (end == words.size() || words[end] == ' ');
      if (whole) return arguments;
    }
  }
  return {};
}

/// Words whose statement is a condition with the word behind it.
inline constexpr std::string_view signal_words = "BK BP SK SP SPK BPK CLOSEOUT NOTICE('name')";

/// Words without arguments.
inline constexpr std::string_view bare_words =
    "DAY YEAR MONTH MINUTE HOUR WEEKDAY DATE1 DATE BARPOS CURRENTDATE CURRENTTIME DATACOUNT TIME0 "
    "TIME "
    "PERIOD QUARTER BARSTATUS ISDOWN ISUP ISEQUAL ISLASTBAR NULL CURRBARSCOUNT TOTALBARSCOUNT "
    "BARINTERVAL BARTYPE UNIT MINPRICE DRAWNULL SHARECOUNTPERUNIT";

}  // namespace quor_test
