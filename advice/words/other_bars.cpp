#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr std::string_view one_condition = "COND: a condition";
constexpr std::string_view condition_and_period = "COND: a condition; N: the period";
constexpr std::string_view two_series = "A, B: the series";
constexpr std::string_view zero_at_nulls = "From row 1 on; 0 at row 0 and where a value is null.";
constexpr std::string_view stretch_nulls =
    "From row 0 on, over the bars there are. A null is no failure; N below 0 means as many bars as "
    "there are in all.";
constexpr std::string_view nth_nulls =
    "Null where there is no such bar, and for N below 1 or null.";

constexpr WordHelp other_bar_rows[] = {
    {"REF", "REF(X,N)", 2, 2, "X of N bars ago. A negative N reads ahead.",
     "X: the series; N: how many bars", "From row N on; null outside the bars.", "A:REF(C,1);"},
    {"REFX", "REFX(X,N)", 2, 2, "X of N bars later. Looks ahead.",
     "X: the series; N: how many bars", "Null in the last N bars.", "A:REFX(C,1);"},
    {"REFX1", "REFX1(X,N)", 2, 2, "X of N bars later, past the end X of the last bar. Looks ahead.",
     "X: the series; N: how many bars", "N null gives null.", "A:REFX1(C,1);"},
    {"VALUEWHEN", "VALUEWHEN(COND,X)", 2, 2, "X at the latest bar where COND, cut, is 1.",
     "COND: a condition; X: the series", "Null before the first such bar.", "A:VALUEWHEN(C>O,L);"},
    {"GET", "GET(X)", 1, 1, "X itself.", "X: the series", "", "A:GET(C);"},
    {"SET", "SET(NAME,X,...)", 0, -1,
     "Writes X into the named line at this bar, pair by pair. Its own value is 0.",
     "NAME: a line declared above; X: the value; further pairs may follow", "", "B:=O;SET(B,C);"},
    {"BARPOS", "BARPOS", 0, 0, "Number of the bar, 1 at the oldest.", "", "", "A:BARPOS;"},
    {"BARSCOUNT", "BARSCOUNT(X)", 1, -1,
     "Bars since the first X that isn't null: 1, 2, 3 and so on behind it.", "X: the series",
     "Left open where X is null and at its first value: null as an argument, 0 elsewhere. A null "
     "starts over.",
     "A:BARSCOUNT(MA(C,5));"},
    {"CURRBARSCOUNT", "CURRBARSCOUNT", 0, 0, "Bars from here to the last, 1 at the last.", "", "",
     "A:CURRBARSCOUNT;"},
    {"DATACOUNT", "DATACOUNT", 0, 0, "Number of bars, the same at every bar.", "", "",
     "A:DATACOUNT;"},
    {"TOTALBARSCOUNT", "TOTALBARSCOUNT", 0, 0, "Number of bars, the same at every bar.", "", "",
     "A:TOTALBARSCOUNT;"},
    {"ISLASTBAR", "ISLASTBAR", 0, 0, "1 at the last bar, else 0.", "", "", "A:ISLASTBAR;"},
    {"BARSTATUS", "BARSTATUS", 0, 0, "1 at the first bar, 2 at the last, else 0.", "", "",
     "A:BARSTATUS;"},
    {"BARSLAST", "BARSLAST(COND)", 1, 1, "Bars since COND, cut, was last 1; 0 at such a bar.",
     one_condition, "Left open before the first such bar: null as an argument, 0 elsewhere.",
     "A:BARSLAST(C>O);"},
    {"BARSLASTCOUNT", "BARSLASTCOUNT(COND)", 1, 1,
     "How many bars in a row, up to this one, COND is 1.", one_condition, "",
     "A:BARSLASTCOUNT(C>O);"},
    {"BARSSINCE", "BARSSINCE(COND)", 1, 1,
     "Bars since the first bar where COND is 1; later ones don't restart it. It must be the whole "
     "of a line.",
     one_condition, "Null before the first such bar.", "A:BARSSINCE(C>O);"},
    {"BARSSINCEN", "BARSSINCEN(COND,N)", 2, 2,
     "Bars since the first of the last N bars where COND is 1.", condition_and_period,
     "Null where there is none, and for N of 0 and below.", "A:BARSSINCEN(C>O,10);"},
    {"CONDBARS", "CONDBARS(A,B)", 2, 2,
     "Distance in bars between the latest A = 1 and the latest B = 1.", "A, B: conditions",
     "0 while one of them is missing.", "A:CONDBARS(C>O,C<O);"},
    {"SUMBARS", "SUMBARS(X,A)", 2, 2,
     "How many bars, from here back, until the sum of X reaches A; for VOL, under another name, "
     "too, until the sum by 100 does.",
     "X: the series; A: the sum, above 0",
     "Null if it isn't reached, for A of 0 and below, and if a null is met on the way.",
     "A:SUMBARS(AMOUNT,1000);"},
    {"NEWHBARS", "NEWHBARS(X,N)", 2, 2, "Distance of the N-th earlier bar with X above X here.",
     "X: the series; N: which one, from 1", nth_nulls, "A:NEWHBARS(H,1);"},
    {"NEWLBARS", "NEWLBARS(X,N)", 2, 2, "Distance of the N-th earlier bar with X below X here.",
     "X: the series; N: which one, from 1", nth_nulls, "A:NEWLBARS(L,1);"},
    {"NEWHBARS1", "NEWHBARS1(T,X,N)", 3, 3, "Distance of the N-th earlier bar with X above T here.",
     "T: the mark at this bar; X: the series; N: which one, from 1", nth_nulls,
     "A:NEWHBARS1(C,H,1);"},
    {"NEWLBARS1", "NEWLBARS1(T,X,N)", 3, 3, "Distance of the N-th earlier bar with X below T here.",
     "T: the mark at this bar; X: the series; N: which one, from 1", nth_nulls,
     "A:NEWLBARS1(C,L,1);"},
    {"EXIST", "EXIST(COND,N)", 2, 2, "1 if COND is above 0 at one of the last N bars, else 0.",
     condition_and_period,
     "From row 0 on, over the bars there are. N of 0 gives 0; N below 0 means as many bars as "
     "there are in all.",
     "A:EXIST(C>O,5);"},
    {"EVERY", "EVERY(COND,N)", 2, 2, "1 if COND is above 0 at each of the last N bars, else 0.",
     condition_and_period, stretch_nulls, "A:EVERY(C>O,3);"},
    {"NDAY", "NDAY(A,B,N)", 3, 3, "1 if A is above B at each of the last N bars, else 0.",
     "A, B: the series; N: the period", stretch_nulls, "A:NDAY(C,O,3);"},
    {"UPNDAY", "UPNDAY(X,N)", 2, 2, "1 if X rose at each of the last N bars, else 0.",
     "X: the series; N: the period", stretch_nulls, "A:UPNDAY(C,3);"},
    {"DOWNNDAY", "DOWNNDAY(X,N)", 2, 2, "1 if X fell at each of the last N bars, else 0.",
     "X: the series; N: the period", stretch_nulls, "A:DOWNNDAY(C,3);"},
    {"LAST", "LAST(COND,A,B)", 3, 3,
     "1 if COND is above 0 at one of the bars from B to A-1 bars ago, else 0.",
     "COND: a condition; A: the far end; B: the near end, in bars", "From row 0 on.",
     "A:LAST(C>O,3,1);"},
    {"CROSS", "CROSS(A,B)", 2, 2, "1 where A is above B now and wasn't at the bar before.",
     two_series, zero_at_nulls, "A:CROSS(MA(C,5),C);"},
    {"CROSSUP", "CROSSUP(A,B)", 2, 2, "1 where A is above B now and wasn't at the bar before.",
     two_series, zero_at_nulls, "A:CROSSUP(C,MA(C,5));"},
    {"CROSSDOWN", "CROSSDOWN(A,B)", 2, 2, "1 where A is below B now and wasn't at the bar before.",
     two_series, zero_at_nulls, "A:CROSSDOWN(C,O);"},
    {"FILTER", "FILTER(COND,N)", 2, 2,
     "1 where COND holds and gave no 1 in the N bars before, else 0.", condition_and_period,
     "Always 0 at row 0. A null COND counts as true.", "A:FILTER(C>O,5);"},
    {"BACKSET", "BACKSET(COND,N)", 2, 2,
     "1 at the N bars that end at a bar where COND holds, else 0; for a negative N at the bars "
     "from "
     "it on. Looks ahead.",
     condition_and_period, "N of 0 or null gives null. A null COND counts as true.",
     "A:BACKSET(C>O,3);"},
};

}  // namespace

std::span<const WordHelp> other_bar_help() { return other_bar_rows; }

}  // namespace quor_advice
