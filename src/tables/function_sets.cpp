#include "tables/function_sets.h"

namespace quor {
namespace {

constexpr std::string_view output_words[] = {"STICKLINE",
                                             "STICKLINE1",
                                             "DRAWCOLUMNCHART",
                                             "DRAWCOLORKLINE",
                                             "DRAWKLINE",
                                             "DRAWKLINE1",
                                             "DRAWBARLINE",
                                             "DRAWBKBMP",
                                             "DRAWBMP",
                                             "FILLRGN",
                                             "FILLRGN1",
                                             "POLYLINE",
                                             "POLYLINE1",
                                             "PARTLINE",
                                             "PARTLINE1",
                                             "DRAWCOLORLINE",
                                             "ANGLELINE",
                                             "DRAWANGLELINE",
                                             "HORIZONTALLINE",
                                             "DRAWHORIZONTALLINE",
                                             "TRENDLINES",
                                             "DRAWTRENDLINE",
                                             "GOLDENLINE",
                                             "DRAWGOLDENLINE",
                                             "WAVERULER",
                                             "DRAWWAVERULER",
                                             "DRAWGBK",
                                             "DRAWGBK1",
                                             "SOUND",
                                             "PLAYSOUND",
                                             "DRAWLINE",
                                             "DRAWLINE1",
                                             "DRAWLINE3",
                                             "DRAWLASTBARLINE",
                                             "VERTLINE",
                                             "VERTLINE1",
                                             "DRAWSL",
                                             "DRAWSL1",
                                             "DRAWICON",
                                             "DRAWTEXT",
                                             "DRAWLASTBARICON",
                                             "DRAWLASTBARNUMBER",
                                             "DRAWLASTBARTEXT",
                                             "DRAWNUMBER",
                                             "DRAWNUMBER1",
                                             "DRAWSHIFTNUMBER",
                                             "KTEXT",
                                             "BACKGROUNDSTYLE",
                                             "NOTICE",
                                             "BK",
                                             "BP",
                                             "SK",
                                             "SP",
                                             "BPK",
                                             "SPK",
                                             "CLOSEOUT"};

constexpr std::string_view whole_series_words[] = {
    "BACKSET", "REFX1",         "PEAK",      "PEAKBARS",       "TROUGH",    "TROUGHBARS", "ZIGZAG",
    "REFX",    "CURRBARSCOUNT", "DATACOUNT", "TOTALBARSCOUNT", "WAVEPEAK1", "WAVEVALLEY1"};

constexpr std::string_view look_ahead_words[] = {
    "WAVEPEAK", "WAVEPEAK1", "WAVEVALLEY", "WAVEVALLEY1", "BACKSET", "REFX1",
    "PEAK",     "PEAKBARS",  "TROUGH",     "TROUGHBARS",  "ZIGZAG",  "REFX"};

constexpr std::string_view bare_words[] = {
    "DAY",         "YEAR",    "MONTH",     "MINUTE",      "HOUR",          "WEEKDAY",
    "DATE1",       "DATE",    "BARPOS",    "CURRENTDATE", "CURRENTTIME",   "DATACOUNT",
    "TIME0",       "TIME",    "PERIOD",    "QUARTER",     "BARSTATUS",     "ISDOWN",
    "ISUP",        "ISEQUAL", "ISLASTBAR", "NULL",        "CURRBARSCOUNT", "TOTALBARSCOUNT",
    "BARINTERVAL", "BARTYPE", "UNIT",      "MINPRICE",    "DRAWNULL",      "SHARECOUNTPERUNIT"};

constexpr std::string_view branch_words[] = {"IF", "IFN", "IFELSE"};
constexpr std::string_view branch_range_words[] = {"IF", "IFN", "IFELSE", "HHV", "LLV"};
constexpr std::string_view trade_words[] = {"BK", "BPK", "SPK", "SK", "BP", "SP", "CLOSEOUT"};

}  // namespace

constinit const WordSet OutputFunctionSet(output_words);
constinit const WordSet WholeSeriesFunctionSet(whole_series_words);
constinit const WordSet LookAheadFunctionSet(look_ahead_words);
constinit const WordSet BareFunctionSet(bare_words);
constinit const WordSet BranchFunctionSet(branch_words);
constinit const WordSet BranchRangeFunctionSet(branch_range_words);
constinit const WordSet TradeSignalSet(trade_words);

}  // namespace quor
