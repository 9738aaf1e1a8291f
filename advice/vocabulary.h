// What the language's words are: fields, styles, colours, and the roles of functions.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quor_advice {

/// Words of one kind, and whether a word is among them.
using Words = std::span<const std::string_view>;

bool contains(Words words, std::string_view word);

bool is_function(std::string_view word);

/// A function that stands without parentheses, such as DATE.
bool is_bare_word(std::string_view word);

/// A function that draws, sounds or signals: it acts, and gives no number.
bool acts(std::string_view word);

/// The words of conditions and values that stand behind a comma: NOTICE, BK, ICON, STICK, ...
bool is_short_form(std::string_view word);

bool is_trade_word(std::string_view word);

/// IF, IFN and IFELSE.
bool is_branch(std::string_view word);

/// A word for the date of a bar's trading day, which a calendar gives: DATE, YEAR and the like. The
/// words for the time of day need none.
bool reads_trading_day(std::string_view word);

/// MINPRICE, UNIT and SHARECOUNTPERUNIT: numbers that only the host knows.
std::vector<std::string_view> market_constants();

bool is_field(std::string_view word);

/// The words of a field by its number, the first one of several; empty for an unknown one.
std::vector<std::string_view> words_of_field(uint32_t id);

/// The names of a word's arguments in its form: COND, PRICE, 'TEXT' of DRAWTEXT; none for words of
/// several forms.
std::vector<std::string_view> arguments_of_form(std::string_view word);

/// What a style word takes whose number is out of bounds, "LINETHICK1 to LINETHICK9"; else empty.
std::string bounds_of_style(std::string_view item);

/// Whether a style item has an effect somewhere, in capitals: COLORRED, LINETHICK2, DOT, ...
bool is_style(std::string_view item);

/// Whether the item asks for a colour, be it a known one or not.
bool is_colour(std::string_view item);
bool is_known_colour(std::string_view item);
/// COLOR and seven digits, which the library takes and no host can draw.
bool has_seven_digits(std::string_view item);

/// 0xRRGGBB of a colour word or of COLOR and six digits, in capitals; nothing for COLORAUTO.
std::optional<uint32_t> colour_code(std::string_view word);
std::optional<std::string_view> word_of_colour(uint32_t code);

/// The style items that aren't colours, each of those with a number.
std::vector<std::string> style_words();

/// Which argument of a word is the number of bars that it looks at.
struct PeriodArgument {
  std::string_view word;
  size_t index;  ///< from 0
  bool takes_negative = false;
  bool needs_all_bars = false;  ///< null until there are that many
};
const PeriodArgument* find_period(std::string_view word);

/// Which words a nearest one is looked for among.
enum class Vocabulary { expression, style, colour, quote, short_form, names };

std::vector<std::string_view> words_among(Vocabulary vocabulary);

/// The word of the vocabulary, or of `more`, that is fewest edits away; nothing if none is near.
std::optional<std::string> nearest(std::string_view word, Vocabulary vocabulary,
                                   const std::vector<std::string>& more = {});

}  // namespace quor_advice
