#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr std::string_view signal_arguments =
    "COND: a condition in front of the comma; QUANTITY: an integer above 0, may be left out with "
    "its parentheses";
constexpr std::string_view signal_nulls = "A null COND counts as true.";

constexpr WordHelp signal_rows[] = {
    {"NOTICE", "COND,NOTICE('NAME')", 1, 1,
     "A notice, once per run of bars on which COND, cut, is 1. Takes no name in front.",
     "COND: a condition in front of the comma; 'NAME': 1 to 10 characters", "",
     "CROSS(C,O),NOTICE('up');"},
    {"BK", "COND,BK(QUANTITY)", 0, 1,
     "Trade signal, action 0: buy to open. At every calculation of a bar where COND holds; the "
     "host filters.",
     signal_arguments, signal_nulls, "CROSS(C,O),BK(2);"},
    {"BP", "COND,BP(QUANTITY)", 0, 1,
     "Trade signal, action 1: buy to close. At every calculation of a bar where COND holds; the "
     "host filters.",
     signal_arguments, signal_nulls, "CROSS(C,O),BP;"},
    {"SK", "COND,SK(QUANTITY)", 0, 1,
     "Trade signal, action 2: sell to open. At every calculation of a bar where COND holds; the "
     "host filters.",
     signal_arguments, signal_nulls, "CROSS(O,C),SK(2);"},
    {"SP", "COND,SP(QUANTITY)", 0, 1,
     "Trade signal, action 3: sell to close. At every calculation of a bar where COND holds; the "
     "host filters.",
     signal_arguments, signal_nulls, "CROSS(O,C),SP;"},
    {"BPK", "COND,BPK(QUANTITY)", 0, 1,
     "Trade signal, action 4: buy to close and to open. At every calculation of a bar where COND "
     "holds; the host filters.",
     signal_arguments, signal_nulls, "CROSS(C,O),BPK(1);"},
    {"SPK", "COND,SPK(QUANTITY)", 0, 1,
     "Trade signal, action 5: sell to close and to open. At every calculation of a bar where COND "
     "holds; the host filters.",
     signal_arguments, signal_nulls, "CROSS(O,C),SPK(1);"},
    {"CLOSEOUT", "COND,CLOSEOUT(QUANTITY)", 0, 1,
     "Trade signal, action 6: close everything. At every calculation of a bar where COND holds; "
     "the host filters.",
     signal_arguments, signal_nulls, "CROSS(O,C),CLOSEOUT;"},
    {"PLAYSOUND", "PLAYSOUND(COND,'A')", 2, 2,
     "A sound where COND is other than 0; COND,SOUND('A') is the same.",
     "COND: a condition; 'A': 'A' to 'J' in capitals, any other text is the first sound",
     signal_nulls, "PLAYSOUND(C>O,'A');"},
    {"SOUND", "SOUND('A')", 1, 1,
     "A sound at every bar. As a statement of its own it wants a condition: COND,SOUND('A').",
     "'A': 'A' to 'J', any other text is the first sound", "", "C>O,SOUND('A');"},
};

}  // namespace

std::span<const WordHelp> signal_help() { return signal_rows; }

}  // namespace quor_advice
