#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr WordHelp average_rows[] = {
    {"MA", "MA(X,N)", 2, 2, "Mean of the last N bars.", series_and_period,
     "From row N-1 on. Nulls among the bars aren't counted; N below 1 or null gives null.",
     "A:MA(C,5);"},
    {"EMA", "EMA(X,N)", 2, 2,
     "Exponential average ((N-1)*prev + 2*X)/(N+1). It starts with X itself at row 0.",
     series_and_period,
     "From row 0 on. X null gives null, and the next X starts anew; N null or 0 gives null.",
     "A:EMA(C,12);"},
    {"EXPMA", "EXPMA(X,N)", 2, 2, "Exponential average, the same as EMA.", series_and_period,
     "From row 0 on. X null gives null, and the next X starts anew; N null or 0 gives null.",
     "A:EXPMA(C,12);"},
    {"EMAWH", "EMAWH(X,N)", 2, 2, "As EMA, but null while there are fewer than N bars in all.",
     series_and_period, "Null everywhere for N below 1 or above the number of bars.",
     "A:EMAWH(C,60);"},
    {"SMA", "SMA(X,N,M)", 3, 3,
     "Smoothed average ((N-M)*prev + M*X)/N. It starts with X itself at row 0.",
     "X: the series; N: the period; M: the weight of this bar, an integer",
     "From row 0 on. X null keeps the value before; N below 1 or null gives null.",
     "A:SMA(C,3,1);"},
    {"MEMA", "MEMA(X,N)", 2, 2,
     "Smoothed average ((N-1)*prev + X)/N. It starts from the sum of the N-1 bars before row N-1, "
     "divided by N.",
     "X: a field, a named line or a call that keeps a column; N: the period",
     "From row N-1 on; null everywhere if X is another expression.", "A:MEMA(C,5);"},
    {"EXPMEMA", "EXPMEMA(X,N)", 2, 2,
     "Exponential average ((N-1)*prev + 2*X)/(N+1). It starts from twice the sum of the N-1 bars "
     "before row N-1, divided by N+1.",
     "X: a field, a named line or a call that keeps a column; N: the period",
     "From row N-1 on; X null gives 0; null everywhere if X is another expression.",
     "A:EXPMEMA(C,5);"},
    {"AMA", "AMA(X,A)", 2, 2, "prev + A*(X-prev). It starts with X itself at row 0.",
     "X: the series; A: the weight of this bar",
     "From row 0 on. X null gives null, and the next X starts anew; A null gives null.",
     "A:AMA(C,0.2);"},
    {"DMA", "DMA(X,A)", 2, 2,
     "(1-A)*prev + A*X, where A may change by the bar. It starts with X itself at row 0.",
     "X: the series; A: the weight of this bar, above 0 and below 1",
     "Null unless 0 < A < 1. X null gives null, and the next X starts anew.", "A:DMA(C,0.1);"},
    {"TMA", "TMA(X,A,B)", 3, 3, "A*prev + B*X. It starts with B*X at row 0.",
     "X: the series; A: the weight of the value before; B: the weight of this bar",
     "One null X makes all that follows null; A or B of 2 and more gives null.",
     "A:TMA(C,0.9,0.1);"},
    {"WMA", "WMA(X,N)", 2, 2, "Linearly weighted mean: 1 for the oldest bar to N for this one.",
     series_and_period, "From row N-1 on. A null among the bars gives null.", "A:WMA(C,10);"},
    {"EMA2", "EMA2(X,N)", 2, 2, "Linearly weighted mean, the same as WMA.", series_and_period,
     "From row N-1 on. A null among the bars gives null.", "A:EMA2(C,10);"},
    {"SMMA", "SMMA(X,N)", 2, 2, "(sum - sum/N + X)/N, with the sum of the last N bars.",
     series_and_period, "From row N-1 on. A null among the bars, and N of 0 and below, give null.",
     "A:SMMA(C,7);"},
    {"TRMA", "TRMA(X,N)", 2, 2,
     "Mean over K bars of means over K bars, K = (N+1)/2 for odd N, N/2+1 for even N.",
     series_and_period, "From row K-1 on. N below 1 or null gives null.", "A:TRMA(C,9);"},
    {"TSMA", "TSMA(X,N)", 2, 2,
     "The regression line through the last N bars, one bar ahead of this one.", series_and_period,
     "From row N-1 on. A null among the bars, and N below 2, give null.", "A:TSMA(C,10);"},
    {"ADMA", "ADMA(X,N,F,S)", 4, 4,
     "Adaptive average: it follows X the faster, the straighter the close moved over N bars.",
     "X: the series; N: the period; F, S: the periods of the fastest and the slowest average",
     "From row N on. N of 0 gives null.", "A:ADMA(C,10,2,30);"},
};

}  // namespace

std::span<const WordHelp> average_help() { return average_rows; }

}  // namespace quor_advice
