#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr std::string_view swing =
    "X: the series; N: the least swing; TYPE: 1 percent, else absolute";
constexpr std::string_view nth_turn =
    "X: the series; N: the least swing; M: which one, 1 the last; TYPE: 1 percent, else absolute";
constexpr std::string_view turn_nulls =
    "From the M-th turn on. An M with a fraction, and N or TYPE null, give null.";
constexpr std::string_view wave_nulls =
    "0 in the first and last N bars. N of 0 or null gives null.";
constexpr std::string_view stop =
    "N: bars it starts from, 1 or more; STEP, LIMIT: factors such as 0.02 and 0.2, not 0";
constexpr std::string_view stop_nulls =
    "From row N-1 on. N below 1, STEP or LIMIT of 0 stop the calculation (2012).";

constexpr WordHelp pattern_rows[] = {
    {"ZIGZAG", "ZIGZAG(X,N,TYPE)", 3, 3,
     "The turns of X, with straight lines between them. Looks ahead.", swing,
     "From row 0 on. Bars where X is null are passed over; N or TYPE null gives null.",
     "A:ZIGZAG(C,5,1);"},
    {"ZIG", "ZIG(X,N,TYPE)", 0, -1, "Can't be called (2006): write ZIGZAG.", swing, "",
     "A:ZIGZAG(C,5,1);"},
    {"PEAK", "PEAK(X,N,M,TYPE)", 4, 4, "X at the M-th last peak of the ZIGZAG line. Looks ahead.",
     nth_turn, turn_nulls, "A:PEAK(C,5,1,1);"},
    {"PEAKBARS", "PEAKBARS(X,N,M,TYPE)", 4, 4,
     "Bars back to the M-th last peak of the ZIGZAG line. Looks ahead.", nth_turn, turn_nulls,
     "A:PEAKBARS(C,5,1,1);"},
    {"TROUGH", "TROUGH(X,N,M,TYPE)", 4, 4,
     "X at the M-th last trough of the ZIGZAG line. Looks ahead.", nth_turn, turn_nulls,
     "A:TROUGH(C,5,1,1);"},
    {"TROUGHBARS", "TROUGHBARS(X,N,M,TYPE)", 4, 4,
     "Bars back to the M-th last trough of the ZIGZAG line. Looks ahead.", nth_turn, turn_nulls,
     "A:TROUGHBARS(C,5,1,1);"},
    {"WAVEPEAK", "WAVEPEAK(N)", 1, 1,
     "1 where the high stands above those of the N bars on each side, else 0. Looks ahead.",
     "N: bars on each side", wave_nulls, "A:WAVEPEAK(3);"},
    {"WAVEVALLEY", "WAVEVALLEY(N)", 1, 1,
     "1 where the low stands below those of the N bars on each side, else 0. Looks ahead.",
     "N: bars on each side", wave_nulls, "A:WAVEVALLEY(3);"},
    {"WAVEPEAK1", "WAVEPEAK1(X,N)", 2, 2,
     "1 where X stands above that of the N bars on each side, else 0. Looks ahead.",
     "X: the series; N: bars on each side", wave_nulls, "A:WAVEPEAK1(C,3);"},
    {"WAVEVALLEY1", "WAVEVALLEY1(X,N)", 2, 2,
     "1 where X stands below that of the N bars on each side, else 0. Looks ahead.",
     "X: the series; N: bars on each side", wave_nulls, "A:WAVEVALLEY1(C,3);"},
    {"SAR", "SAR(N,STEP,LIMIT)", 3, 3,
     "Parabolic stop, negative while it falls. It turns at this bar, too.", stop, stop_nulls,
     "A:ABS(SAR(4,0.02,0.2));"},
    {"SAR1", "SAR1(N,STEP,LIMIT)", 3, 3,
     "Parabolic stop that turns by the bar before only, negative while it falls.", stop, stop_nulls,
     "A:ABS(SAR1(4,0.02,0.2));"},
    {"SARSHOWTYPE", "SARSHOWTYPE(N,STEP,LIMIT)", 3, 3, "Direction of SAR: 0 rising, 1 falling.",
     stop, stop_nulls, "A:SARSHOWTYPE(4,0.02,0.2);"},
    {"SAR1SHOWTYPE", "SAR1SHOWTYPE(N,STEP,LIMIT)", 3, 3, "Direction of SAR1: 0 rising, 1 falling.",
     stop, stop_nulls, "A:SAR1SHOWTYPE(4,0.02,0.2);"},
    {"DIVERGENCE", "DIVERGENCE(A,B,P,W,T)", 5, 5,
     "1 where, among the W bars before this one, A has two peaks or troughs, one of them the "
     "extreme, while B has its extreme at neither.",
     "A: the series with the turns; B: the series to compare; P: bars on each side that don't beat "
     "a turn; W: how many bars; T: 1 peaks, -1 troughs",
     "0 before row P+W and for any other T.", "A:DIVERGENCE(C,VOL,3,30,1);"},
};

}  // namespace

std::span<const WordHelp> pattern_help() { return pattern_rows; }

}  // namespace quor_advice
