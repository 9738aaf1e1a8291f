// Well-known indicators, written as scripts, over real bars. The expected values come from a
// separate short program that follows the textbook definitions on the same 300 bars: exponential
// averages start with the first value, Wilder's smoothing (x + (n-1) * prev) / n with the first
// known change, extremes take the bars there are, sums and means only full windows. Two words
// differ from the textbook, and the program follows them: the band's deviation begins one bar late,
// and the parabolic stop, negative while it stands above the bars, moves toward the far end of the
// bar before, quickens at every bar that keeps its direction, and takes an extreme point from the
// fifth bar on. The zigzag turns where the close has moved five percent from its last extreme.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

constexpr const char* script =
    "DIF:=EMA(C,12)-EMA(C,26);\n"
    "DEA:=EMA(DIF,9);\n"
    "MACD:=(DIF-DEA)*2;\n"
    "RSV:=(C-LLV(L,9))/(HHV(H,9)-LLV(L,9))*100;\n"
    "K:=SMA(RSV,3,1);\n"
    "D:=SMA(K,3,1);\n"
    "J:=3*K-2*D;\n"
    "LC:=REF(C,1);\n"
    "RSI:=SMA(MAX(C-LC,LC-LC),14,1)/SMA(ABS(C-LC),14,1)*100;\n"
    "UPPER:=MA(C,20)+2*STDP(C,20);\n"
    "TR:=MAX(MAX(H-L,ABS(H-LC)),ABS(L-LC));\n"
    "ATR:=SMA(IF(ISNULL(LC),NULL,TR),14,1);\n"
    "HD:=H-REF(H,1);\n"
    "LD:=REF(L,1)-L;\n"
    "PDI:=SUM((HD>0&&HD>LD)*HD,14)/SUM(TR,14)*100;\n"
    "MDI:=SUM((LD>0&&LD>HD)*LD,14)/SUM(TR,14)*100;\n"
    "TYP:=(H+L+C)/3;\n"
    "CCI:=(TYP-MA(TYP,14))/(0.015*AVEDEV(TYP,14));\n"
    "STEP:=IF(C>LC,V,IF(C<LC,-V,0));\n"
    "OBV:=SUM(IF(ISNULL(LC),0,STEP),0);\n"
    "WR:=(HHV(H,14)-C)/(HHV(H,14)-LLV(L,14))*100;\n"
    "ROC:=(C-REF(C,12))/REF(C,12)*100;\n"
    "ZZ:=ZIGZAG(C,5,1);\n"
    "STOP:=SAR(4,0.02,0.2);\n";

struct Expected {
  const char* line;
  std::vector<std::pair<size_t, double>> values;  ///< by row
};

const Expected expected[] = {
    {"DIF",
     {{30, -8.8869582077497853},
      {100, -13.760666904008076},
      {200, -29.465005242983352},
      {299, -26.566023615659105}}},
    {"DEA",
     {{30, -8.1544675313511092},
      {100, -9.4574906473650078},
      {200, -23.663090178927177},
      {299, -22.993982356085176}}},
    {"MACD",
     {{30, -1.4649813527973521},
      {100, -8.6063525132861365},
      {200, -11.603830128112349},
      {299, -7.1440825191478581}}},
    {"K",
     {{30, 40.0904875869889},
      {100, 29.119230228903138},
      {200, 24.445752672525298},
      {299, 37.569215941539575}}},
    {"D",
     {{30, 51.187940392534436},
      {100, 38.996977399550993},
      {200, 22.851350247466442},
      {299, 45.991084447680244}}},
    {"J",
     {{30, 17.895581975897827},
      {100, 9.363735887607433},
      {200, 27.634557522643007},
      {299, 20.725478929258244}}},
    {"RSI",
     {{30, 30.543821372502094},
      {100, 41.46856711379597},
      {200, 32.52561432986429},
      {299, 26.373422730922808}}},
    {"UPPER",
     {{30, 1457.0521488153402},
      {100, 1476.1390105988305},
      {200, 1485.8110339671953},
      {299, 1338.295954360369}}},
    {"ATR",
     {{30, 29.447323179505624},
      {100, 32.011604265852114},
      {200, 26.508249263486181},
      {299, 25.284046420910638}}},
    {"PDI",
     {{30, 17.86267457191806},
      {100, 16.761604528276646},
      {200, 10.47853824203094},
      {299, 14.882614946498201}}},
    {"MDI",
     {{30, 26.617767029277754},
      {100, 32.613831718329784},
      {200, 34.670534737077858},
      {299, 47.327143548957949}}},
    {"CCI",
     {{30, -42.859059782615205},
      {100, -82.302841651874004},
      {200, -93.376284652642909},
      {299, -252.46510567855162}}},
    {"OBV", {{30, 91600000}, {100, 255140000}, {200, -8882360000}, {299, -16944420000}}},
    {"WR",
     {{30, 45.016401540539647},
      {100, 81.309996194494815},
      {200, 82.995306774605211},
      {299, 96.817019638262934}}},
    {"ROC",
     {{30, 3.0797857570339362},
      {100, -2.1683398724452982},
      {200, -6.0243255109652862},
      {299, -5.799709066892528}}},
    {"ZZ",
     {{30, 1396.5699768333334},
      {100, 1381.2453906756757},
      {200, 1347.8523664117647},
      {299, 1180.160034}}},
    {"STOP",
     {{30, -1440.7285755472001},
      {100, -1458.3604086938881},
      {200, -1396.6190703781047},
      {299, -1267.420044}}},
};

Bars real_bars(size_t rows) {
  std::ifstream file(QUOR_SAMPLES "/index-daily.csv");
  std::string text;
  std::getline(file, text);
  Bars bars;
  while (rows-- > 0 && std::getline(file, text)) {
    std::istringstream cells(text);
    std::string cell;
    std::getline(cells, cell, ',');
    for (const char* field : {"O", "H", "L", "C", "", "V"}) {
      std::getline(cells, cell, ',');
      if (*field != '\0') bars[field].push_back(std::stod(cell));
    }
  }
  return bars;
}

TEST(Indicators, AgreeWithTheTextbookOnRealBars) {
  const Bars bars = real_bars(300);
  ASSERT_EQ(bars.at("C").size(), 300U);
  TestHost host;
  ASSERT_EQ(host.compile(script).code, 0);
  host.feed(bars);
  ASSERT_EQ(host.run(), success);
  for (const auto& [name, values] : expected) {
    const Series line = host.line(name);
    for (const auto& [row, value] : values) {
      EXPECT_NEAR(line[row], value, 1e-9 * std::max(1.0, std::abs(value))) << name << ' ' << row;
    }
  }
}

}  // namespace
}  // namespace quor_test
