#include "topic_help.h"

#include <algorithm>
#include <array>

#include "elsewhere.h"
#include "letters.h"
#include "word_help.h"

namespace quor_advice {
namespace {

constexpr TopicLine fields[] = {
    {"OPEN O, HIGH H, LOW L, CLOSE C", "the prices of the bar"},
    {"VOL V, AMOUNT", "volume and turnover"},
    {"OPI", "open interest; on stock markets it reads AMOUNT"},
    {"AVPRICE, SETTLE", "average price and settlement, where the bars have them"},
    {"VIX VOLATILITY IMPLIEDVOLATILITY DELTA GAMMA VEGA THETA RHO TLR LR PR TP TV INV",
     "figures of options, where the host has them"},
    {"REF(C,1)", "a field of an earlier bar; fields take no arguments"},
};

constexpr TopicLine operators[] = {
    {"( )", "binds tightest, then a sign as in -X"},
    {"/", "quotient; 0 where the divisor is 0. It binds tighter than *"},
    {"*", "product"},
    {"%", "remainder of two numbers cut to integers"},
    {"+ -", "sum, difference"},
    {"> >= < <=", "1 or 0; each has a rank of its own, so write parentheses"},
    {"<> !=", "1 where both differ; \"not\" is NOT(X)"},
    {"= ==", "1 where both are equal; a name is declared by : or :="},
    {"AND && &", "1 if both sides are other than 0; the word needs blanks around it"},
    {"OR || |", "1 if one side is other than 0"},
    {"POW(X,Y)", "a power; ^ is no operator"},
};

constexpr TopicLine colours[] = {
    {"COLORRED COLORGREEN COLORBLUE COLORMAGENTA COLORYELLOW COLORCYAN", "colours"},
    {"COLORLIRED COLORLIGREEN COLORLIBLUE", "lighter ones"},
    {"COLORGRAY COLORLIGRAY COLORBLACK COLORWHITE", "without a hue"},
    {"COLORAUTO", "the next of ten automatic colours, as without a colour"},
    {"COLORFF8000", "red, green and blue as hexadecimal digits"},
    {"RGB(255,128,0)", "the same in numbers"},
};

constexpr TopicLine signs[] = {
    {"1 to 33", "the signs of DRAWICON, by number or as 'ICO1' to 'ICO33'; 16 and 17 are the same"},
    {"COND,ICON(1,'ICO1');", "a sign at the high; 0 in place of 1: at the low"},
    {"docs/signs.png", "shows all of them; the host's font says how they look"},
};

constexpr TopicLine styles[] = {
    {"LINETHICK1 to LINETHICK9", "width of a line"},
    {"SOLIDLINE DASHLINE DASH DOTLINE DOT DASHDOT POINTDOT DASHDOTDOT", "form of a line"},
    {"PRECIS0 to PRECIS6", "decimals of the shown value"},
    {"NODRAW", "hides the drawing and keeps the values"},
    {"NOTEXT", "hides title and value"},
    {"ALIGN0 to ALIGN2, VALIGN0 to VALIGN2", "place of a text"},
    {"FONTSIZE8 to FONTSIZE72", "size of a text"},
    {"SOLID HOLLOW", "filled or empty sticks"},
    {"A:C,COLORRED,LINETHICK2;", "items stand behind commas; the later of two of a kind wins"},
};

constexpr TopicLine short_forms[] = {
    {"COND,ICON(1,'ICO3');", "a sign at the high, for 0 at the low"},
    {"COND,WORD(1,'text');", "a text at the high, for 0 at the low; COND holds no comma"},
    {"COND,NOTICE('name');", "a notice of 1 to 10 characters"},
    {"COND,BK; COND,BK(2);", "a trade signal, as BP, SK, SP, BPK, SPK, CLOSEOUT"},
    {"COND,SOUND('A');", "one of the sounds A to J"},
    {"X,STICK; X,COLORSTICK; X,VOLSTICK;", "sticks from 0 to the value"},
    {"X,CROSSDOT; X,CIRCLEDOT;", "a mark at the value of each bar"},
    {"CJLVOL(0);", "the volume"},
};

constexpr TopicLine settings[] = {
    {"CONST N:5;", "a constant, valid in the whole script; it keeps six decimals"},
    {"--set N=5", "a parameter from the command line, for a name that the script doesn't declare"},
    {"--params FILE", "parameters as JSON"},
    {"--lines FILE", "colours and widths of lines, which beat the script's"},
};

constexpr TopicLine statements[] = {
    {"NAME:expression,styles;", "calculates a line and draws it"},
    {"NAME:=expression;", "calculates a line"},
    {"CONST NAME:number;", "a constant"},
    {"CALL(...),styles;", "a drawing"},
    {"COND,NOTICE('up');", "short forms: quor help short forms"},
    {"{ } /* */ //", "comments; // stands only between statements"},
};

constexpr TopicLine nulls[] = {
    {"NULL", "a cell without a value: windows that aren't full, fields that aren't there"},
    {"ISNULL(X)", "1 if X is null; a comparison with NULL is never true"},
    {"X>0", "0 for null, where a bare X counts as true"},
    {"IFF(ISNULL(X),0,X)", "0 in place of null"},
};

constexpr TopicLine references[] = {
    {"A:\"600000$CLOSE\";", "a field of another security, on a line of its own"},
    {"A:\"DAY$1$CLOSE\";",
     "a field of a longer period: MIN, HOUR, DAY, WEEK, MONTH; windows over it count bars"},
    {"A:GETPRICE('NEW');", "a live quote"},
    {"--reference '600000|11=other.csv'", "hands the data over"},
};

constexpr TopicLine earlier_bars[] = {
    {"REF(C,1)", "one bar; REF(C,5) five bars ago"},
    {"SUM(X,N) MA(X,N) HHV(X,N) COUNT(COND,N)", "over a window of the last N bars, no loop needed"},
    {"BARSLAST(COND) VALUEWHEN(COND,X)", "since a condition held, and what stood there"},
    {"FILTER(COND,N) BARSLASTCOUNT(COND)", "once in N bars; how many bars in a row"},
    {"EMA(X,N) SMA(X,N,M) DMA(X,A)", "build on their own last value"},
    {"SET(A,X)", "writes into a line above, whose next bar can read it by REF"},
};

constexpr TopicLine later_bars[] = {
    {"REFX(X,N) BACKSET(COND,N)", "read later bars: old values change as bars come"},
    {"ZIGZAG PEAK TROUGH WAVEPEAK WAVEVALLEY", "a turn is known only some bars after it"},
    {"REF(X,1)", "reads what is over, and never changes"},
    {"the newest bar", "changes until it is over, and with it all that reads it"},
    {"codes 2015 and 2016", "such a script can't raise notices or signals"},
};

constexpr TopicLine signals[] = {
    {"COND,BK; COND,SP;", "buy to open, sell to close; COND,BK(2); names a quantity"},
    {"COND,SK; COND,BP;", "sell to open, buy to close"},
    {"COND,BPK; COND,SPK; COND,CLOSEOUT;", "close and open the other way; close everything"},
    {"COND,NOTICE('name');", "tells somebody"},
    {"CROSS(A,B)", "1 at the bar where A rises above B, which a signal mostly wants"},
    {"quor run --fire", "prints signals and notices; nothing is traded, nor an account kept"},
};

constexpr TopicLine calendars[] = {
    {"DATE TIME HOUR MINUTE WEEKDAY", "of the bar itself"},
    {"--calendar FILE",
     "trading days, sessions and holidays, with which a night bar belongs to the next day"},
    {"--period 5min", "the period of the bars, where their distances don't tell it"},
    {"quor check SCRIPT", "tells whether a script needs a calendar"},
};

constexpr TopicLine bar_files[] = {
    {"date,open,high,low,close,volume", "the first line names the columns; .gz is read, too"},
    {"--column close=\"Adj Close\" --delimiter tab", "for files that differ"},
    {"quor run SCRIPT BARS.csv", "prints lines; --csv and --json all of them in full precision"},
    {"quor scan SCRIPT FOLDER", "a script over many securities"},
    {"quor watch SCRIPT BARS.csv", "follows a file that grows"},
    {"quor chart SCRIPT BARS.csv", "draws a picture, with as many panes as the lines need"},
};

constexpr TopicLine levels[] = {
    {"HHV(H,20) LLV(L,20)", "the highest and lowest of 20 bars: a resistance, a support"},
    {"REF((H+L+C)/3,1)", "a pivot, of the bar before"},
    {"L>REF(H,1) H<REF(L,1)", "a gap up, a gap down"},
    {"WAVEPEAK(5) WAVEVALLEY(5)", "turns of the price, known only some bars after"},
    {"COST(50) WINNER(C)", "how volume lies over prices"},
    {"SAR(4,0.02,0.2)", "a stop that follows the price; SET keeps one of your own making"},
};

constexpr TopicLine debugging[] = {
    {"quor check SCRIPT", "errors and warnings with their places, lines, fields, look-back"},
    {"quor run SCRIPT BARS.csv --all --last 5", "the last values of every line, of := ones, too"},
    {"X:CROSS(A,B);", "any step of a long expression, on a line of its own, can be looked at"},
    {"--strict", "a warning gives the exit status of an error; --quiet leaves warnings out"},
};

constexpr TopicLine speed[] = {
    {"X:=C-O;A:MA(X,5);", "a long argument has a line of its own, calculated once a bar"},
    {"A:MA(HHV(C-O,20)*2,20);",
     "else it can be calculated at each bar that a window visits, here 20 times 20 for one bar"},
    {"docs/host.md", "what a bar costs, and what a host has to know of threads and memory"},
};

constexpr TopicLine programs[] = {
    {"quor lsp", "findings, completion and help in an editor"},
    {"quor format SCRIPT", "one layout, by which nothing changes"},
    {"quor studio", "a page in the browser with editor and chart"},
    {"Python, JavaScript", "a package each, with the same lines and findings"},
    {"C, C++, C#", "a library, with examples to start from"},
    {"quor --version", "the version; LICENCE says what may be done with it"},
};

constexpr TopicLine names_of_lines[] = {
    {"MA5 UP_2", "letters, digits and _ of any alphabet; big and small are the same"},
    {"MA, CLOSE", "words and fields of the language are taken, and so is a name that stands above"},
    {"CONST N:5;", "a name for a number"},
};

constexpr TopicHelp topics[] = {
    {"fields", "field interest", "Words for what a bar holds.", fields},
    {"operators", "operator precedence equals or modulo division zero",
     "From the tightest to the loosest.", operators},
    {"colours", "colour colors color", "Words for colours.", colours},
    {"signs", "icons icon marker markers", "Marks of DRAWICON and ICON.", signs},
    {"styles", "style items title legend thickness dash precision",
     "What stands behind the comma of a line or drawing.", styles},
    {"short forms", "shortforms forms form", "Statements that need no name.", short_forms},
    {"settings", "setting parameters parameter constants constant input inputs option",
     "Numbers that a script takes from elsewhere.", settings},
    {"statements",
     "statement syntax comments comment semicolon assignment variable variables function "
     "functions",
     "What a script is made of.", statements},
    {"nulls", "missing nan", "What no value does.", nulls},
    {"references",
     "reference securities periods index stock stocks intraday daily weekly monthly timeframe "
     "timeframes",
     "Data beside the bars.", references},
    {"earlier bars",
     "loop loops window windows history lookback recursion array arrays remember state",
     "How a bar comes to what was before it.", earlier_bars},
    {"later bars", "future forming repaint repaints repainting lookahead",
     "What nobody knows while a bar is the newest.", later_bars},
    {"signals", "trades entry entries exit exits position profit backtest order orders buy sell",
     "Trades and notices.", signals},
    {"calendar", "calendars session sessions holiday holidays night weekend midnight timezone",
     "Days and hours of trading.", calendars},
    {"bars",
     "csv json file files import export data panes pane panel panels svg png screener live stream",
     "Files that commands read and write.", bar_files},
    {"levels", "level support resistance pivot pivots gap gaps stop stops loss trailing",
     "Prices to watch.", levels},
    {"debugging", "debug print trace inspect warning warnings", "How to see what a script does.",
     debugging},
    {"speed", "performance memory threads", "What costs time.", speed},
    {"programs",
     "editor editors vscode vim neovim indent browser python javascript library version licence",
     "Where scripts are written and run.", programs},
    {"names", "naming keyword keywords reserved define unicode", "What a line may be called.",
     names_of_lines},
};

/// What is asked for, and how the help writes it.
struct Synonym {
  std::string_view asked;
  std::string_view written;
};
constexpr Synonym synonyms[] = {
    {"highest", "greatest"},    {"maximum", "greatest"},
    {"lowest", "smallest"},     {"minimum", "smallest"},
    {"average", "mean"},        {"median", "sorted"},
    {"momentum", "earlier"},    {"previous", "bars ago"},
    {"lag", "bars ago"},        {"volatility", "deviation"},
    {"regression", "slope"},    {"trend", "regression"},
    {"signal", "trade"},        {"alert", "notice"},
    {"label", "text"},          {"arrow", "sign"},
    {"candle", "candles"},      {"weekday", "day of the week"},
    {"power", "to the power"},  {"absolute", "absolute value"},
    {"moving average", "mean"}, {"moving", "mean"},
    {"notification", "notice"}, {"yesterday", "bars ago"},
    {"valley", "trough"},       {"channel", "deviation"},
    {"profile", "chips"},       {"string", "text"},
    {"candlestick", "candles"},
};

bool names(const TopicHelp& topic, std::string_view name) {
  if (topic.name == name) return true;
  const std::string others = ' ' + std::string(topic.others) + ' ';
  return !name.empty() && name.find(' ') == absent &&
         others.find(' ' + std::string(name) + ' ') != absent;
}

std::string in_small_letters(std::string_view text) {
  std::string small(text);
  for (char& c : small) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return small;
}

/// Whether a word of the text begins with the part, both in small letters.
bool begins_a_word(const std::string& text, const std::string& part) {
  const auto is_letter = [](char c) { return c >= 'a' && c <= 'z'; };
  for (size_t at = text.find(part); at != absent; at = text.find(part, at + 1)) {
    if (at == 0 || !is_letter(text[at - 1])) return true;
  }
  return false;
}

}  // namespace

std::span<const TopicHelp> topic_help() { return topics; }

const TopicHelp* find_topic_help(std::string_view name) {
  const std::string small = in_small_letters(name);
  const auto* const topic =
      std::ranges::find_if(topics, [&small](const TopicHelp& t) { return names(t, small); });
  return topic == std::end(topics) ? nullptr : topic;
}

std::vector<std::string_view> words_about(std::string_view text) {
  constexpr size_t most = 20;
  constexpr size_t shortest = 3;  // fewer letters stand in too many texts
  std::vector<std::string_view> words;
  if (text.size() < shortest) return words;
  std::vector<std::string> wanted = {in_small_letters(text)};
  for (const Synonym& row : synonyms) {
    if (row.asked == wanted[0]) wanted.emplace_back(row.written);
  }
  const auto take = [&](const auto& holds) {
    for (const WordHelp& help : word_help()) {
      const bool is_known = std::ranges::find(words, help.word) != words.end();
      if (!is_known && words.size() < most && holds(help)) words.push_back(help.word);
    }
  };
  const auto stands_in = [&wanted](std::string_view place) {
    const std::string small = in_small_letters(place);
    return std::ranges::any_of(
        wanted, [&small](const std::string& part) { return begins_a_word(small, part); });
  };
  take([&](const WordHelp& help) { return stands_in(help.word); });
  take([&](const WordHelp& help) { return stands_in(help.summary); });
  take([&](const WordHelp& help) { return stands_in(help.arguments); });
  return words;
}

std::string word_from_elsewhere(std::string_view word) {
  const std::string capitals = to_upper(word);
  const std::string meant = item_from_elsewhere(capitals);
  std::string advice = advice_for_elsewhere(capitals);
  return advice.empty() && !meant.empty() ? "did you mean " + meant + "?" : advice;
}

}  // namespace quor_advice
