#include "vocabulary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

#include "letters.h"
#include "src/tables/colours.h"
#include "src/tables/fields.h"
#include "word_help.h"

namespace quor_advice {
namespace {

constexpr std::string_view quote_fields[] = {
    "NEW",       "OPEN",     "HIGH",    "LOW",      "AVPRICE",  "YCLOSE",        "YSETTLE",
    "VOLUME",    "TURNOVER", "OPI",     "DELTAVOL", "DELTAOPI", "TODAYDELTAOPI", "RISELIMIT",
    "FALLLIMIT", "BID1",     "BID2",    "BID3",     "BID4",     "BID5",          "BIDVOL1",
    "BIDVOL2",   "BIDVOL3",  "BIDVOL4", "BIDVOL5",  "ASK1",     "ASK2",          "ASK3",
    "ASK4",      "ASK5",     "ASKVOL1", "ASKVOL2",  "ASKVOL3",  "ASKVOL4",       "ASKVOL5"};

constexpr std::string_view plain_styles[] = {
    "SOLIDLINE", "DASHLINE",   "DASH",       "DOTLINE",  "DOT",        "DASHDOT",
    "POINTDOT",  "DASHDOTDOT", "NODRAW",     "NOTEXT",   "SOLID",      "HOLLOW",
    "CROSSDOT",  "CIRCLEDOT",  "COLORSTICK", "VOLSTICK", "VOLUMESTICK"};

/// Styles that end in a number within bounds.
struct NumberedStyle {
  std::string_view front;
  int least;
  int most;
  int least_told;  ///< the bounds within which they differ
  int most_told;
};
constexpr NumberedStyle numbered_styles[] = {
    {"LINETHICK", 0, 9, 1, 9}, {"PRECIS", 0, 6, 0, 6},     {"ALIGN", 0, 2, 0, 2},
    {"VALIGN", 0, 2, 0, 2},    {"FONTSIZE", 1, 99, 8, 72},
};

constexpr std::string_view trade_words[] = {"BK", "BP", "SK", "SP", "BPK", "SPK", "CLOSEOUT"};
constexpr std::string_view other_short_forms[] = {
    "NOTICE",   "SOUND",       "ICON",       "WORD",     "STICK",
    "VOLSTICK", "VOLUMESTICK", "COLORSTICK", "CROSSDOT", "CIRCLEDOT"};
constexpr std::string_view branch_words[] = {"IF", "IFN", "IFELSE"};

constexpr std::string_view trading_day_words[] = {"DATE", "DATE1",   "YEAR",   "MONTH",
                                                  "DAY",  "QUARTER", "WEEKDAY"};
constexpr std::string_view constant_words[] = {"MINPRICE", "UNIT", "SHARECOUNTPERUNIT"};

constexpr PeriodArgument periods[] = {
    {"MA", 1, false, true},
    {"EMA", 1},
    {"EXPMA", 1},
    {"EMAWH", 1, false, true},
    {"SMA", 1},
    {"MEMA", 1, false, true},
    {"EXPMEMA", 1, false, true},
    {"WMA", 1, false, true},
    {"EMA2", 1, false, true},
    {"SMMA", 1, false, true},
    {"TRMA", 1},
    {"TSMA", 1, false, true},
    {"ADMA", 1, false, true},
    {"NUMPOW", 1, false, true},
    {"HHV", 1},
    {"LLV", 1},
    {"HHVBARS", 1},
    {"LLVBARS", 1},
    {"HV", 1},
    {"LV", 1},
    {"SUM", 1},
    {"COUNT", 1},
    {"STD", 1, false, true},
    {"STDP", 1, false, true},
    {"VAR", 1, false, true},
    {"VARP", 1, false, true},
    {"DEVSQ", 1, false, true},
    {"AVEDEV", 1, false, true},
    {"KURTOSIS", 1, false, true},
    {"SLOPE", 1, false, true},
    {"FORCAST", 1, false, true},
    {"COVAR", 2},
    {"CORRELATION", 2},
    {"COEFFICIENTR", 2},
    {"HARMEAN", 1, false, true},
    {"PERCENTILE", 1, false, true},
    {"REF", 1, true, true},
    {"REFX", 1, true, true},
    {"REFX1", 1, true},
    {"BARSSINCEN", 1},
    {"EXIST", 1, true},
    {"EVERY", 1, true},
    {"NDAY", 2, true},
    {"UPNDAY", 1, true},
    {"DOWNNDAY", 1, true},
    {"FILTER", 1},
    {"BACKSET", 1, true},
    {"LAST", 1, true},
    {"DIVERGENCE", 2, true},
};

const std::vector<std::string_view>& colour_words() {
  static const std::vector<std::string_view> words = [] {
    std::vector<std::string_view> all;
    for (const quor::Colour& colour : quor::ColorBrushTable) all.push_back(colour.word);
    all.emplace_back("COLORAUTO");
    return all;
  }();
  return words;
}

bool is_in_range(std::string_view digits, const NumberedStyle& style) {
  if (digits.empty() || digits.size() > 2) return false;
  if (!std::ranges::all_of(digits, is_digit)) return false;
  const double number = to_number(digits).value_or(-1);
  return number >= style.least && number <= style.most;
}

bool is_hexadecimal(char c) { return is_digit(c) || (c >= 'A' && c <= 'F'); }

std::vector<std::string_view> characters_of(std::string_view text) {
  std::vector<std::string_view> characters;
  while (!text.empty()) {
    characters.push_back(text.substr(0, front_character(text)));
    text.remove_prefix(characters.back().size());
  }
  return characters;
}

/// Number of single characters to insert, drop, replace or swap with a neighbour; where they are
/// more than `most`, some number above it.
size_t edit_distance(std::string_view first, std::string_view second, size_t most) {
  const size_t first_size = count_characters(first);
  const size_t second_size = count_characters(second);
  if (std::max(first_size, second_size) - std::min(first_size, second_size) > most) return most + 1;
  const auto a = characters_of(first);
  const auto b = characters_of(second);
  std::vector<size_t> before(b.size() + 1);
  std::vector<size_t> last(b.size() + 1);
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = std::exchange(last, row);
    const bool is_far = std::ranges::min(last) > most && std::ranges::min(before) > most;
    if (is_far) return most + 1;
  }
  return last[b.size()];
}

/// Edits that still leave a word recognisable. Two characters say more if they aren't of ASCII.
size_t tolerance(std::string_view word) {
  const size_t length = count_characters(word);
  if (length == 2) return std::ranges::any_of(word, is_beyond_ascii) ? 1 : 0;
  if (length < 2) return 0;
  return length <= 6 ? 1 : length <= 8 ? 2 : 3;
}

/// A short word with another letter in it is another word: LAG is no LOG, RANK no RAND.
bool is_another_word(std::string_view word, std::string_view candidate) {
  const bool is_plain = std::ranges::none_of(word, is_beyond_ascii);
  if (!is_plain || word.size() > 4 || word.size() != candidate.size()) return false;
  size_t differences = 0;
  for (size_t i = 0; i < word.size(); ++i) differences += word[i] == candidate[i] ? 0 : 1;
  return differences == 1;
}

/// LINETHIK2: the digits are taken as they stand if the letters in front are near.
std::optional<std::string> nearest_numbered_style(std::string_view word) {
  const size_t letters = word.find_last_not_of("0123456789") + 1;
  for (const NumberedStyle& style : numbered_styles) {
    const size_t tolerated = tolerance(style.front);
    if (edit_distance(word.substr(0, letters), style.front, tolerated) > tolerated) continue;
    if (is_in_range(word.substr(letters), style)) {
      return std::string(style.front) + std::string(word.substr(letters));
    }
  }
  return std::nullopt;
}

/// #FF8000 and COLOR#FF8000.
std::optional<std::string> colour_of_digits(std::string_view word) {
  const size_t mark = word.find('#');
  if (mark == absent) return std::nullopt;
  std::string colour = "COLOR" + std::string(word.substr(mark + 1));
  return is_known_colour(colour) ? std::optional(colour) : std::nullopt;
}

std::vector<std::string_view> words_of(Vocabulary vocabulary) {
  std::vector<std::string_view> words;
  if (vocabulary == Vocabulary::names) return words;
  if (vocabulary == Vocabulary::quote) return {std::begin(quote_fields), std::end(quote_fields)};
  if (vocabulary == Vocabulary::short_form) {
    words.assign(std::begin(other_short_forms), std::end(other_short_forms));
    words.insert(words.end(), std::begin(trade_words), std::end(trade_words));
    return words;
  }
  if (vocabulary != Vocabulary::expression) {
    words = colour_words();
    if (vocabulary == Vocabulary::colour) return words;
    words.insert(words.end(), std::begin(plain_styles), std::end(plain_styles));
    return words;
  }
  // One letter is as near to any other one; only whole field words can have been meant.
  for (const quor::Field& field : quor::ReservedFieldTable) {
    if (field.word.size() > 1) words.push_back(field.word);
  }
  for (const WordHelp& help : word_help()) words.push_back(help.word);
  return words;
}

}  // namespace

bool contains(Words words, std::string_view word) {
  return std::ranges::find(words, word) != words.end();
}

std::vector<std::string_view> words_among(Vocabulary vocabulary) { return words_of(vocabulary); }

std::optional<uint32_t> colour_code(std::string_view word) {
  constexpr size_t digits = 6;
  std::string_view text = word;
  if (text.starts_with("COLOR")) text.remove_prefix(5);
  const auto* const row = std::ranges::find(quor::ColorBrushTable, word, &quor::Colour::word);
  if (row != std::end(quor::ColorBrushTable)) {
    text = row->brush.substr(row->brush.size() - digits);
  } else if (text.size() != digits || text.size() == word.size()) {
    return std::nullopt;
  }
  uint32_t code = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + digits, code, 16);
  if (error != std::errc() || end != text.data() + digits) return std::nullopt;
  return code;
}

std::optional<std::string_view> word_of_colour(uint32_t code) {
  for (const quor::Colour& colour : quor::ColorBrushTable) {
    if (colour_code(colour.word) == code) return colour.word;
  }
  return std::nullopt;
}

std::vector<std::string> style_words() {
  std::vector<std::string> words;
  for (const std::string_view word : plain_styles) words.emplace_back(word);
  for (const NumberedStyle& style : numbered_styles) {
    for (int number = style.least_told; number <= style.most_told; ++number) {
      words.push_back(std::string(style.front) + std::to_string(number));
    }
  }
  return words;
}

bool is_function(std::string_view word) { return find_word_help(word) != nullptr; }

bool is_bare_word(std::string_view word) {
  const WordHelp* const help = find_word_help(word);
  return help != nullptr && help->form.find('(') == absent;
}

bool acts(std::string_view word) {
  const WordHelp* const help = find_word_help(word);
  if (help == nullptr || word == "RGB" || word == "DRAWNULL") return false;
  return help->section == "Drawing" || help->section == "Notices, signals and sounds";
}

bool is_short_form(std::string_view word) {
  return contains(other_short_forms, word) || is_trade_word(word);
}

bool is_trade_word(std::string_view word) { return contains(trade_words, word); }
bool is_branch(std::string_view word) { return contains(branch_words, word); }

bool reads_trading_day(std::string_view word) { return contains(trading_day_words, word); }

std::vector<std::string_view> market_constants() {
  return {std::begin(constant_words), std::end(constant_words)};
}

bool is_field(std::string_view word) {
  return std::ranges::find(quor::ReservedFieldTable, word, &quor::Field::word) !=
         std::end(quor::ReservedFieldTable);
}

std::vector<std::string_view> words_of_field(uint32_t id) {
  std::vector<std::string_view> words;
  for (const quor::Field& field : quor::ReservedFieldTable) {
    if (static_cast<uint32_t>(field.id) == id) words.push_back(field.word);
  }
  return words;
}

std::vector<std::string_view> arguments_of_form(std::string_view word) {
  const WordHelp* const help = find_word_help(word);
  if (help == nullptr || help->form.find(' ') != absent) return {};
  const size_t open = help->form.find('(');
  if (open == absent) return {};
  std::string_view rest = help->form.substr(open + 1, help->form.size() - open - 2);
  std::vector<std::string_view> arguments;
  while (!rest.empty()) {
    const size_t comma = std::min(rest.find(','), rest.size());
    arguments.push_back(rest.substr(0, comma));
    rest.remove_prefix(std::min(comma + 1, rest.size()));
  }
  return arguments;
}

std::string bounds_of_style(std::string_view item) {
  const size_t letters = item.find_last_not_of("0123456789") + 1;
  const auto* const row =
      std::ranges::find(numbered_styles, item.substr(0, letters), &NumberedStyle::front);
  if (row == std::end(numbered_styles)) return {};
  const std::string front(row->front);
  return front + std::to_string(row->least_told) + " to " + front + std::to_string(row->most_told);
}

bool is_style(std::string_view item) {
  if (is_known_colour(item) || contains(plain_styles, item)) return true;
  return std::ranges::any_of(numbered_styles, [item](const NumberedStyle& style) {
    return item.starts_with(style.front) && is_in_range(item.substr(style.front.size()), style);
  });
}

bool is_colour(std::string_view item) {
  return item.size() > 5 && item.starts_with("COLOR") && item != "COLORSTICK";
}

namespace {

/// What stands behind COLOR, if it can be a colour in digits.
std::string_view colour_digits(std::string_view item) {
  if (!item.starts_with("COLOR")) return {};
  const std::string_view digits = item.substr(5);
  const bool fits = digits.size() >= 6 && digits.size() <= 8;
  return fits && std::ranges::all_of(digits, is_hexadecimal) ? digits : std::string_view();
}

}  // namespace

bool is_known_colour(std::string_view item) {
  return contains(colour_words(), item) || !colour_digits(item).empty();
}

bool has_seven_digits(std::string_view item) { return colour_digits(item).size() == 7; }

const PeriodArgument* find_period(std::string_view word) {
  const auto* const row = std::ranges::find(periods, word, &PeriodArgument::word);
  return row == std::end(periods) ? nullptr : row;
}

std::optional<std::string> nearest(std::string_view word, Vocabulary vocabulary,
                                   const std::vector<std::string>& more) {
  constexpr size_t longest = 40;  // no word of a vocabulary is near that
  if (word.size() > longest) return std::nullopt;
  std::vector<std::string_view> words(more.begin(), more.end());
  const auto known = words_of(vocabulary);
  words.insert(words.end(), known.begin(), known.end());
  if (vocabulary == Vocabulary::style) {
    if (auto colour = colour_of_digits(word)) return colour;
    if (auto style = nearest_numbered_style(word)) return style;
    if (const std::string colour = "COLOR" + std::string(word); is_known_colour(colour)) {
      return colour;
    }
  }
  const size_t tolerated =
      vocabulary == Vocabulary::colour ? std::min<size_t>(2, word.size() - 5) : tolerance(word);
  size_t fewest = tolerated + 1;
  std::optional<std::string> best;
  for (const std::string_view candidate : words) {
    const size_t edits = edit_distance(word, candidate, fewest - 1);
    if (edits == 0 || edits >= fewest) continue;
    if (vocabulary == Vocabulary::expression && is_another_word(word, candidate)) continue;
    fewest = edits;
    best = candidate;
  }
  return best;
}

}  // namespace quor_advice
