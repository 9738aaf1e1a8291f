#include "code_help.h"

#include <algorithm>

namespace quor_advice {
namespace {

constexpr std::string_view reference_form = "write \"CODE$FIELD\"";
constexpr std::string_view longer_periods =
    "write MIN$1, 3, 5, 10, 15 or 30, HOUR$1 to 4, DAY$1, WEEK$1 or MONTH$1";

constexpr CodeHelp codes[] = {
    {1, "nothing defines an argument", "declare it above; a line can't read itself inside a call"},
    {2, "nothing defines a word", "declare it above, as a constant or as a parameter"},
    {3, "a form stands without what it belongs to",
     "put the condition or the value in front of the comma: C>O,BK;"},
    {4, "an operand is missing", "complete the expression"},
    {5, "a quote is left open", "close it; an apostrophe in a comment opens one, too"},
    {6, "parentheses are missing or don't match", "write as many ) as ( behind the word"},
    {7, "wrong number of arguments", "write what the help of the word shows"},
    {8, "a notice or trade signal can't have a name",
     "take the name away, or declare the condition first: X:=C>O; X,BK;"},
    {9, "a reference in double quotes must stand right behind ':' or '='",
     "give it a line of its own and calculate with that"},
    {10, "a reference in double quotes lacks its '$'", reference_form},
    {11, "a reference in double quotes lacks its code", reference_form},
    {12, "a function word can't be a name", "take another name"},
    {13, "a name can't hold '~'", "take another name"},
    {14, "the statement has no ';' at its end",
     "close it; // may stand only where no statement is under way"},
    {15, "a branch can't stand behind a comma", "write IFF, or give the branch a line of its own"},
    {2000, "a variable is gone", "compile again"},
    {2001, "a text or style stands alone in parentheses", "take it away"},
    {2002, "unknown field of a quote", "write one of the quote's fields, such as NEW or OPEN"},
    {2003, "unknown number of a sign", "write a number from 1 to 33"},
    {2004, "the name is taken", "take another name"},
    {2006, "ZIG can't be called", "write ZIGZAG"},
    {2007, "unknown unit of a period", longer_periods},
    {2008, "the unit doesn't allow this multiple", longer_periods},
    {2009, "the period isn't longer than that of the bars", "take a longer one"},
    {2010, "unknown field of a reference", "write a bar field, such as CLOSE"},
    {2011, "a short form lacks its digit or text", "write CJLVOL(0), or C>O,WORD(1,'text')"},
    {2012, "a constant or a short form is out of bounds",
     "the message names the part, or the form that was meant"},
    {2013, "unknown colour", "write a colour word, or COLOR and 6 to 8 hexadecimal digits"},
    {2014, "a second drawing or signal in one statement", "give each a statement of its own"},
    {2015, "a notice can't stand in a script that looks ahead", "take away one of the two"},
    {2016, "a trade signal can't stand in a script that looks ahead", "take away one of the two"},
    {4000, "the calculation failed",
     "the message tells: a negative period or deviation, or a text where a form wants quotes"},
};

}  // namespace

std::span<const CodeHelp> code_help() { return codes; }

const CodeHelp* find_code_help(int64_t code) {
  const auto row = std::ranges::lower_bound(code_help(), code, {}, &CodeHelp::code);
  return row != code_help().end() && row->code == code ? &*row : nullptr;
}

}  // namespace quor_advice
