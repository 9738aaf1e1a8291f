#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr WordHelp market_rows[] = {
    {"COST", "COST(P)", 1, 1,
     "The price below which P percent of the chips lie: the volume of about 121 bars, spread over "
     "the prices of each.",
     "P: percent, above 0 and below 100", "Null for a P outside; 0 without volume.", "A:COST(50);"},
    {"WINNER", "WINNER(P)", 1, 1, "Share of the chips at or below a price.", "P: the price",
     "From 0 to 1, next to the lowest low at times a little below 0; 0 without volume.",
     "A:WINNER(C);"},
    {"CODELIKE", "CODELIKE('TEXT')", 1, 1, "1 if the code of the security begins with the text.",
     "'TEXT': in single quotes", "", "A:CODELIKE('60');"},
    {"UNIT", "UNIT", 0, 0, "Multiplier of the contract, as the host says.", "", "", "A:C*UNIT;"},
    {"MINPRICE", "MINPRICE", 0, 0, "Smallest move of the price, as the host says.", "", "",
     "A:C/MINPRICE;"},
    {"SHARECOUNTPERUNIT", "SHARECOUNTPERUNIT", 0, 0, "Shares per lot, as the host says.", "", "",
     "A:VOL/SHARECOUNTPERUNIT;"},
};

}  // namespace

std::span<const WordHelp> market_help() { return market_rows; }

}  // namespace quor_advice
