#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr std::string_view two_series_and_period = "X, Y: the series; N: the period";
constexpr std::string_view one_later =
    "From row N on, one bar after N bars are there; for an X without a column of its own N-1 bars "
    "later. A null among the bars gives null.";
constexpr std::string_view extreme_nulls =
    "From row 0 on, over the bars there are. N of 0 gives 0; N below 0 or null gives null; a null "
    "at the oldest bar gives null.";
constexpr std::string_view distance_nulls =
    "From row 0 on, over the bars there are. A null at the oldest bar counts as the extreme.";
constexpr std::string_view before_nulls =
    "From row 1 on. N of 0 gives 0; N below 0 or null gives null.";
constexpr std::string_view pair_nulls = "From row 1 on. A null among the bars gives null.";

constexpr WordHelp window_rows[] = {
    {"HHV", "HHV(X,N)", 2, 2, "Greatest value of the last N bars.", series_and_period,
     extreme_nulls, "A:HHV(H,9);"},
    {"LLV", "LLV(X,N)", 2, 2, "Smallest value of the last N bars.", series_and_period,
     extreme_nulls, "A:LLV(L,9);"},
    {"HHVBARS", "HHVBARS(X,N)", 2, 2,
     "Bars since the greatest value of the last N bars; of equal ones the oldest counts.",
     series_and_period, distance_nulls, "A:HHVBARS(H,9);"},
    {"LLVBARS", "LLVBARS(X,N)", 2, 2,
     "Bars since the smallest value of the last N bars; of equal ones the oldest counts.",
     series_and_period, distance_nulls, "A:LLVBARS(L,9);"},
    {"HV", "HV(X,N)", 2, 2, "Greatest value of the N bars before this one.", series_and_period,
     before_nulls, "A:HV(H,9);"},
    {"LV", "LV(X,N)", 2, 2, "Smallest value of the N bars before this one.", series_and_period,
     before_nulls, "A:LV(L,9);"},
    {"SUM", "SUM(X,N)", 2, 2, "Sum of the last N bars; for N = 0 of all bars so far.",
     series_and_period,
     "From row 0 on, over the bars there are. Nulls are passed over, but X null at this bar gives "
     "0, and so does the first value behind nothing but nulls. N below 0 or null gives X at row 0, "
     "then 0.",
     "A:SUM(VOL,5);"},
    {"COUNT", "COUNT(COND,N)", 2, 2,
     "How many of the last N bars have COND above 0; for N = 0 of all bars so far.",
     "COND: a condition; N: the period", "From row 0 on. N below 0 or null gives 0.",
     "A:COUNT(C>O,10);"},
    {"STD", "STD(X,N)", 2, 2, "Standard deviation of the sample of N bars, divisor N-1.",
     series_and_period, one_later, "A:STD(C,20);"},
    {"STDP", "STDP(X,N)", 2, 2, "Standard deviation of the population of N bars, divisor N.",
     series_and_period, one_later, "A:STDP(C,20);"},
    {"VAR", "VAR(X,N)", 2, 2, "Variance of the sample of N bars, divisor N-1.", series_and_period,
     one_later, "A:VAR(C,20);"},
    {"VARP", "VARP(X,N)", 2, 2, "Variance of the population of N bars, divisor N.",
     series_and_period, one_later, "A:VARP(C,20);"},
    {"DEVSQ", "DEVSQ(X,N)", 2, 2, "Sum of the squared distances from the mean of N bars.",
     series_and_period, one_later, "A:DEVSQ(C,20);"},
    {"AVEDEV", "AVEDEV(X,N)", 2, 2, "Mean distance from the mean of N bars.", series_and_period,
     "From row N-1 on, for an X without a column of its own N-1 bars later. A null among the bars "
     "gives null; N of 0 gives 0.",
     "A:AVEDEV(C,14);"},
    {"KURTOSIS", "KURTOSIS(X,N)", 2, 2, "Excess kurtosis of the sample of N bars.",
     "X: the series; N: the period, 4 or more", one_later, "A:KURTOSIS(C,20);"},
    {"SLOPE", "SLOPE(X,N)", 2, 2, "Slope per bar of the regression line through N bars.",
     series_and_period, "From row N-1 on. A null among the bars gives null.", "A:SLOPE(C,10);"},
    {"FORCAST", "FORCAST(X,N)", 2, 2,
     "The regression line through N bars at this bar; TSMA is one bar ahead.", series_and_period,
     "From row N on. A null among the bars gives null.", "A:FORCAST(C,10);"},
    {"COVAR", "COVAR(X,Y,N)", 3, 3, "Covariance of the population of N bars.",
     two_series_and_period, "From row 0 on. A null among the bars gives null.",
     "A:COVAR(C,VOL,20);"},
    {"CORRELATION", "CORRELATION(X,Y,N)", 3, 3,
     "Covariance by the product of the sample deviations: (N-1)/N of Pearson's coefficient.",
     two_series_and_period, pair_nulls, "A:CORRELATION(C,VOL,20);"},
    {"COEFFICIENTR", "COEFFICIENTR(X,Y,N)", 3, 3, "Pearson's coefficient of correlation.",
     two_series_and_period, pair_nulls, "A:COEFFICIENTR(C,VOL,20);"},
    {"HARMEAN", "HARMEAN(X,N)", 2, 2, "Harmonic mean of the last N bars.", series_and_period,
     "From row N-1 on. A null or 0 among the bars, and N of 0 and below, give null.",
     "A:HARMEAN(C,5);"},
    {"PERCENTILE", "PERCENTILE(X,N,P)", 3, 3,
     "The value at place (N-1)*P/100, rounded up, of the sorted last N bars.",
     "X: the series; N: the period; P: percent, 0 to 100",
     "From row N-1 on. P outside 0 to 100, and N below 1 or null, give null.",
     "A:PERCENTILE(C,20,90);"},
};

}  // namespace

std::span<const WordHelp> window_help() { return window_rows; }

}  // namespace quor_advice
