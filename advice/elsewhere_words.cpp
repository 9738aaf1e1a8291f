// The table of words from elsewhere.
#include <algorithm>
#include <iterator>

#include "elsewhere.h"
#include "letters.h"
#include "vocabulary.h"

namespace quor_advice {
namespace {

/// `meant` is a word of this language or an expression to write.
struct Elsewhere {
  std::string_view word;
  std::string_view meant;
};

constexpr Elsewhere same[] = {
    // averages
    {"AVERAGE", "MA"},
    {"AVG", "MA"},
    {"MEAN", "MA"},
    {"XAVERAGE", "EMA"},
    {"EXPAVG", "EMA"},
    {"SMAVG", "MA"},
    {"SIMPLEMA", "MA"},
    {"WAVERAGE", "WMA"},
    {"LWMA", "WMA"},
    {"LMA", "WMA"},
    {"RMA", "SMA(X,N,1)"},
    {"WILDER", "SMA(X,N,1)"},
    {"WILDERS", "SMA(X,N,1)"},
    {"WILDERSMA", "SMA(X,N,1)"},
    {"WWMA", "SMA(X,N,1)"},
    {"SMOOTH", "SMA(X,N,1)"},
    {"DEMA", "2*EMA(X,N)-EMA(EMA(X,N),N)"},
    {"TEMA", "3*EMA(X,N)-3*EMA(EMA(X,N),N)+EMA(EMA(EMA(X,N),N),N)"},
    {"HMA", "WMA(2*WMA(X,N/2)-WMA(X,N),SQRT(N))"},
    {"HULLMA", "WMA(2*WMA(X,N/2)-WMA(X,N),SQRT(N))"},
    {"VWMA", "SUM(X*VOL,N)/SUM(VOL,N)"},
    {"KAMA", "ADMA"},
    {"TRIMA", "TRMA"},
    {"LSMA", "FORCAST"},
    {"LINREG", "FORCAST"},
    {"LINEARREG", "FORCAST"},
    {"FORECAST", "FORCAST"},
    {"TSF", "TSMA"},
    {"LINREGSLOPE", "SLOPE"},
    {"LINEARREG_SLOPE", "SLOPE"},
    // windows
    {"HIGHEST", "HHV"},
    {"HIGHESTBARS", "HHVBARS"},
    {"HIGHESTBAR", "HHVBARS"},
    {"ROLLING_MAX", "HHV"},
    {"LOWEST", "LLV"},
    {"LOWESTBARS", "LLVBARS"},
    {"LOWESTBAR", "LLVBARS"},
    {"ROLLING_MIN", "LLV"},
    {"STDEV", "STD"},
    {"STDDEV", "STD"},
    {"STDEVP", "STDP"},
    {"VARIANCE", "VAR"},
    {"CORREL", "COEFFICIENTR"},
    {"CORR", "COEFFICIENTR"},
    {"COVARIANCE", "COVAR"},
    {"SUMMATION", "SUM"},
    {"ROLLING_SUM", "SUM"},
    {"CUM", "SUM(X,0)"},
    {"CUMSUM", "SUM(X,0)"},
    {"CUMULATE", "SUM(X,0)"},
    {"SUMIF", "SUM(IFF(COND,X,0),N)"},
    {"COUNTIF", "COUNT"},
    {"AVERAGEIF", "SUM(IFF(COND,X,0),N)/COUNT(COND,N)"},
    {"MEDIAN", "PERCENTILE(X,N,50)"},
    {"QUANTILE", "PERCENTILE(X,N,P) with P from 0 to 100"},
    {"MAD", "AVEDEV"},
    {"MEANDEV", "AVEDEV"},
    {"ZSCORE", "(X-MA(X,N))/STDP(X,N) with X on a line of its own"},
    {"RANK", "SORTPOS(T,K,A,...) for values of one bar, or COUNT(X<Y,N)"},
    {"PERCENTRANK", "COUNT(X<Y,N)/N*100 with Y:=X on a line of its own"},
    // other bars
    {"LAG", "REF"},
    {"SHIFT", "REF"},
    {"PREV", "REF(X,1)"},
    {"PREVIOUS", "REF(X,1)"},
    {"DELAY", "REF"},
    {"OFFSET", "REF"},
    {"MOM", "X-REF(X,N)"},
    {"MOMENTUM", "X-REF(X,N)"},
    {"MTM", "X-REF(X,N)"},
    {"CHANGE", "X-REF(X,1)"},
    {"DIFF", "X-REF(X,1)"},
    {"PCTCHANGE", "(X/REF(X,N)-1)*100"},
    {"PCT_CHANGE", "(X/REF(X,N)-1)*100"},
    {"RISING", "UPNDAY"},
    {"FALLING", "DOWNNDAY"},
    {"CROSSOVER", "CROSS"},
    {"CROSSES", "CROSS"},
    {"CROSSABOVE", "CROSS"},
    {"CROSSBELOW", "CROSSDOWN"},
    {"CROSSUNDER", "CROSSDOWN"},
    {"LONGCROSS", "CROSS(A,B) AND EVERY(REF(A<B,1),N)"},
    {"BARSSINCELAST", "BARSLAST"},
    {"SINCE", "BARSLAST"},
    {"OCCURRENCE", "COUNT"},
    {"ANY", "EXIST"},
    {"ALL", "EVERY"},
    {"PIVOTHIGH", "WAVEPEAK(N)"},
    {"PIVOTLOW", "WAVEVALLEY(N)"},
    {"ZIGZAGHIGH", "PEAK(X,N,M,TYPE)"},
    {"BARINDEX", "BARPOS"},
    {"BAR_INDEX", "BARPOS"},
    {"BARNUMBER", "BARPOS"},
    {"CURRENTBAR", "BARPOS"},
    {"BARCOUNT", "DATACOUNT"},
    {"LASTBAR", "ISLASTBAR"},
    {"ISLAST", "ISLASTBAR"},
    {"FIRSTBAR", "BARPOS=1"},
    {"ISFIRST", "BARPOS=1"},
    {"FIXNAN", "VALUEWHEN(NOT(ISNULL(X)),X)"},
    {"FILLNA", "IFF(ISNULL(X),0,X)"},
    {"FFILL", "VALUEWHEN(NOT(ISNULL(X)),X)"},
    // logic and numbers
    {"NZ", "IFF(ISNULL(X),0,X)"},
    {"COALESCE", "IFF(ISNULL(X),Y,X)"},
    {"IFERROR", "IFF(ISNULL(X),Y,X)"},
    {"IFNULL", "IFF(ISNULL(X),Y,X)"},
    {"ISNA", "ISNULL"},
    {"ISNAN", "ISNULL"},
    {"ISERROR", "ISNULL"},
    {"NA", "NULL"},
    {"NONE", "NULL"},
    {"NIL", "NULL"},
    {"EMPTY", "NULL"},
    {"TRUE", "1"},
    {"FALSE", "0"},
    {"XOR", "(A)<>(B) with two conditions"},
    {"IIF", "IF"},
    {"IFS", "IFF"},
    {"WHERE", "IF"},
    {"CHOOSE", "IFF(COND1,A,COND2,B,Z)"},
    {"CASE", "IFF(COND1,A,COND2,B,Z)"},
    {"SWITCH", "IFF(COND1,A,COND2,B,Z)"},
    {"SELECT", "IFF(COND1,A,COND2,B,Z)"},
    {"CLIP", "MAX(A,MIN(X,B))"},
    {"CLAMP", "MAX(A,MIN(X,B))"},
    {"POWER", "POW"},
    {"SQR", "SQUARE"},
    {"CEIL", "CEILING"},
    {"INT", "INTPART"},
    {"INTEGER", "INTPART"},
    {"TRUNC", "INTPART"},
    {"FRAC", "FRACPART"},
    {"SGN", "SIGN"},
    {"NEG", "REVERSE"},
    {"LOGN", "LN"},
    {"ROUND2", "ROUND"},
    {"RANDOM", "RAND"},
    {"ABSVALUE", "ABS"},
    {"PI", "3.141593"},
    // fields, dates and times
    {"VOLUME", "VOL"},
    {"TURNOVER", "AMOUNT"},
    {"OPENINT", "OPI"},
    {"OPENINTEREST", "OPI"},
    {"PRICE", "CLOSE"},
    {"LASTPRICE", "CLOSE"},
    {"ADJCLOSE", "CLOSE"},
    {"HL2", "(H+L)/2"},
    {"MEDPRICE", "(H+L)/2"},
    {"HLC3", "(H+L+C)/3"},
    {"TYPPRICE", "(H+L+C)/3"},
    {"TYPICALPRICE", "(H+L+C)/3"},
    {"OHLC4", "(O+H+L+C)/4"},
    {"AVGPRICE", "(O+H+L+C)/4"},
    {"PREVCLOSE", "REF(C,1)"},
    {"PRECLOSE", "REF(C,1)"},
    {"TR", "MAX1(H-L,ABS(H-REF(C,1)),ABS(L-REF(C,1)))"},
    {"TRUERANGE", "MAX1(H-L,ABS(H-REF(C,1)),ABS(L-REF(C,1)))"},
    {"NOW", "CURRENTTIME, or CURRENTDATE for the date"},
    {"TODAY", "CURRENTDATE"},
    {"ISTODAY", "DATE=CURRENTDATE+19000000"},
    {"TIMENUM", "TIME"},
    {"DATENUM", "DATE"},
    {"DAYOFWEEK", "WEEKDAY"},
    {"DAYOFMONTH", "DAY"},
    {"TIMEFRAME", "PERIOD"},
    {"SYMBOL", "CODELIKE('60')"},
    {"TICKER", "CODELIKE('60')"},
    {"STOCKCODE", "CODELIKE('60')"},
    {"TICKSIZE", "MINPRICE"},
    {"MINTICK", "MINPRICE"},
    {"POINTVALUE", "UNIT"},
    {"SECURITY", "\"CODE$CLOSE\" on a line of its own"},
    {"FOREIGN", "\"CODE$CLOSE\" on a line of its own"},
    // signals and drawings
    {"BUY", "COND,BK;"},
    {"SELL", "COND,SP;"},
    {"SHORT", "COND,SK;"},
    {"COVER", "COND,BP;"},
    {"SELLSHORT", "COND,SK;"},
    {"BUYTOCOVER", "COND,BP;"},
    {"LONG", "COND,BK;"},
    {"ENTERLONG", "COND,BK;"},
    {"EXITLONG", "COND,SP;"},
    {"ALERT", "COND,NOTICE('name');"},
    {"ALERTCONDITION", "COND,NOTICE('name');"},
    {"BEEP", "COND,SOUND('A');"},
    {"PLOT", "NAME:expression; for a line"},
    {"PLOT1", "NAME:expression; for a line"},
    {"DRAW", "NAME:expression; for a line"},
    {"HLINE", "NAME:80; for a level"},
    {"PLOTSHAPE", "DRAWICON"},
    {"PLOTCHAR", "DRAWTEXT"},
    {"PLOTARROW", "DRAWICON"},
    {"PLOTTEXT", "DRAWTEXT"},
    {"LABEL", "DRAWTEXT"},
    {"BGCOLOR", "DRAWGBK1"},
    {"BARCOLOR", "DRAWCOLORKLINE"},
    {"PAINTBAR", "DRAWCOLORKLINE"},
    {"FILL", "FILLRGN"},
    {"HISTOGRAM", "value,STICK;"},
    {"ICONDRAW", "DRAWICON"},
    {"ZIGZAG1", "ZIGZAG"},
    {"BAND", "FILLRGN"},
};

/// Indicators that the cookbook has a script for.
constexpr Elsewhere indicators[] = {
    {"RSI", "rsi"},
    {"MACD", "macd"},
    {"DIF", "macd"},
    {"DEA", "macd"},
    {"ATR", "atr"},
    {"AVGTRUERANGE", "atr"},
    {"BOLL", "boll"},
    {"BOLLINGER", "boll"},
    {"BBANDS", "boll"},
    {"BB", "boll"},
    {"BBANDTOP", "boll"},
    {"BBANDBOT", "boll"},
    {"KDJ", "kdj"},
    {"STOCH", "kdj"},
    {"STOCHASTIC", "kdj"},
    {"STOCHK", "kdj"},
    {"STOCHD", "kdj"},
    {"ROC", "roc"},
    {"CCI", "cci"},
    {"DMI", "dmi"},
    {"ADX", "dmi"},
    {"PDI", "dmi"},
    {"MDI", "dmi"},
    {"OBV", "obv"},
    {"PSY", "psy"},
    {"TRIX", "trix"},
    {"VR", "vr"},
    {"WR", "wr"},
    {"WILLR", "wr"},
    {"WILLIAMSR", "wr"},
    {"BIAS", "bias"},
    {"AROON", "aroon"},
    {"DONCHIAN", "donchian"},
    {"KELTNER", "keltner"},
    {"PSAR", "parabolic"},
    {"PARABOLIC", "parabolic"},
    {"VWAP", "session_average"},
    {"TRAILINGSTOP", "trailing_stop"},
    {"CHANDELIER", "trailing_stop"},
};

/// Style items and short forms.
constexpr Elsewhere items[] = {
    {"BUY", "BK"},
    {"SELL", "SP"},
    {"SHORT", "SK"},
    {"COVER", "BP"},
    {"SELLSHORT", "SK"},
    {"BUYSHORT", "BP"},
    {"LONG", "BK"},
    {"EXIT", "CLOSEOUT"},
    {"ALERT", "NOTICE('name')"},
    {"BEEP", "SOUND('A')"},
    {"TEXT", "WORD(1,'text')"},
    {"LABEL", "WORD(1,'text')"},
    {"HISTOGRAM", "STICK"},
    {"BAR", "STICK"},
    {"BOLD", "LINETHICK3"},
    {"THICK", "LINETHICK3"},
    {"LINEWIDTH", "LINETHICK2"},
    {"DOTTED", "DOT"},
    {"DASHED", "DASH"},
    {"HIDDEN", "NODRAW"},
    {"INVISIBLE", "NODRAW"},
    {"HIDE", "NODRAW"},
    {"ORANGE", "COLORFF8000"},
    {"PINK", "COLORFF80C0"},
    {"PURPLE", "COLOR8000FF"},
    {"BROWN", "COLOR804000"},
};

template <size_t size>
const Elsewhere* find(const Elsewhere (&rows)[size], std::string_view word) {
  const auto* const row = std::ranges::find(rows, word, &Elsewhere::word);
  return row == std::end(rows) ? nullptr : row;
}

std::string of_word(std::string_view word) {
  if (const Elsewhere* const row = find(indicators, word)) {
    return "the cookbook has its script, " + std::string(row->meant) + ".quor";
  }
  if (const Elsewhere* const row = find(same, word)) {
    const bool is_word = is_function(row->meant) || is_field(row->meant);
    return is_word ? "did you mean " + std::string(row->meant) + "?"
                   : "write " + std::string(row->meant);
  }
  if (is_known_colour("COLOR" + std::string(word)) && word.size() < 8) {
    return "did you mean COLOR" + std::string(word) + "?";
  }
  return {};
}

}  // namespace

std::string advice_for_elsewhere(std::string_view word) {
  if (std::string known = of_word(word); !known.empty()) return known;
  const size_t point = word.rfind('.');
  if (point == absent || point == 0 || is_digit(word[0])) return {};
  const std::string_view last = word.substr(point + 1);
  // A plain average has the name of another word elsewhere.
  if (last == "SMA") return "a plain average is MA(X,N), without a dot in its name";
  if (last == "EMA" || last == "WMA" || is_function(last) || is_field(last))
    return "write " + std::string(last) + ", without a dot in its name";
  std::string meant = of_word(last);
  return meant.empty() ? of_word(word.substr(0, word.find('.'))) : meant;
}

std::string item_from_elsewhere(std::string_view item) {
  if (const Elsewhere* const row = find(items, item)) return std::string(row->meant);
  for (const std::string_view width : {"LINEWIDTH", "WIDTH", "THICKNESS", "THICK"}) {
    if (!item.starts_with(width) || item.size() != width.size() + 1) continue;
    if (is_digit(item.back())) return std::string("LINETHICK") + item.back();
  }
  return {};
}

}  // namespace quor_advice
