// The drawing words: the record that each leaves behind, what it writes per bar, and what it
// refuses.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "drawing/shapes.h"
#include "support/test_host.h"

namespace quor_test {
namespace {

// The records as they are before a word has filled them.
const std::map<std::string_view, std::string> defaults = {
    {"BarShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"BarShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":1,"LowerShadowColor":"Brush.Gray9",)"
     R"("UpperShadowColor":"Brush.Gray9","Field2Id":-1,"Field2Text":"","Field2VisibleId":-1,)"
     R"("LineWidth":-1.000000,"Style":"Rect","IsFilled":1,"IsVolStick":0,"IsColorStick":0})"},
    {"CandleShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"CandleShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":1,"CloseField":-1,"CloseFieldText":"","HighField":-1,)"
     R"("HighFieldText":"","LowField":-1,"LowFieldText":"","OpenField":-1,"OpenFieldText":"",)"
     R"("Style":"Rect","LowerShadowColor":"Brush.Green6","UpperShadowColor":"Brush.Red6",)"
     R"("FilledColor":"Brush.Red6","IsFilled":1,"EqualShadowColor":"Brush.Gray9",)"
     R"("IsColorKLine":0})"},
    {"ImageShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"ImageShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":-1,"Style":"ImageShape","IsLastCandle":0})"},
    {"PolygonShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"PolygonShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":2,"FilledColor":"Brush.Gray9","Field2Id":-1,)"
     R"("Field2Text":"","Style":"Polygon"})"},
    {"PolylineShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"PolylineShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":2,"LineColor":"Brush.Gray9",)"
     R"("ConditionColor":"Brush.Gray9","Style":"Polyline","LineWidth":1.000000,)"
     R"("LineShapeStyle":"SOLIDLINE","Field2Id":-1,"Field2VisibleId":-1,"Ratio":1.000000,)"
     R"("IsContinuousLine":0,"Field3Id":-1,"Field3VisibleId":-1})"},
    {"RectShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"RectShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":0,"FilledColor":"Brush.Gray9","Style":"RectShape",)"
     R"("GradientColor":"","GradientDirection":0,"IsLastCandle":0})"},
    {"StraightLineShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"StraightLineShape","Field1Id":-1,)"
     R"("Field1Text":"","Field1VisibleId":-1,"ZIndex":2,"LineColor":"Brush.Gray9",)"
     R"("Style":"StraightLine","LineWidth":1.000000,"Field2Id":-1,"Field2VisibleId":-1,)"
     R"("IsExpand":0,"Slope":0.000000,"IsLastCandle":0,"HorizontalOffset1FieldId":-1,)"
     R"("HorizontalOffset2FieldId":-1,"LineShapeStyle":"SOLIDLINE"})"},
    {"TextShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"TextShape","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":3,"Text":"","TextColor":"Brush.Gray9",)"
     R"("HorizontalAlign":1,"VerticalAlign":1,"HorizontalOffset":0.000000,)"
     R"("VerticalOffset":0.000000,"NumberFieldId":-1,"FontSize":14,"Style":"TextShape"})"},
    {"YRangeShape",
     R"({"TitleVisible":1,"Digit":-1,"ShapeName":"YAxisRange","Field1Id":-1,"Field1Text":"",)"
     R"("Field1VisibleId":-1,"ZIndex":-1,"Style":"YAxisRange"})"},
};

/// The default record of a class with some keys changed: "Field1Id=8 Style="Line"", one blank
/// between. A key that the class lacks fails the test.
std::string record(std::string_view shape, std::string_view changes) {
  std::string text = defaults.at(shape);
  while (!changes.empty()) {
    const size_t end = std::min(changes.find(' '), changes.size());
    const std::string_view change = changes.substr(0, end);
    const size_t equals = change.find('=');
    const std::string key = "\"" + std::string(change.substr(0, equals)) + "\":";
    const size_t at = text.find(key);
    EXPECT_NE(at, std::string::npos) << key;
    if (at == std::string::npos) return text;
    const size_t from = at + key.size();
    text.replace(from, text.find_first_of(",}", from) - from, change.substr(equals + 1));
    changes.remove_prefix(std::min(end + 1, changes.size()));
  }
  return text;
}

const Bars bars = {
    {"O", {1, 2, 3, 1}}, {"H", {5, 6, 7, 8}}, {"L", {0.5, 1, 2, 1}}, {"C", {2, 1, 3, 4}}};
// Over these bars C>O holds at the first and the last one, C<O at the second.

TEST(Shapes, NothingIsEscaped) {
  quor::YRangeShape range;
  range.Field1Text = R"(a"b\c)";
  EXPECT_EQ(range.ToJsonText(), record("YRangeShape", R"(Field1Text="a"b\c")"));
}

struct RecordCase {
  std::string_view script;
  std::string_view shape;
  std::string_view changes;
};

void expect_records(const std::vector<RecordCase>& cases) {
  for (const auto& [script, shape, changes] : cases) {
    TestHost host;
    const Report report = host.compile(script);
    EXPECT_EQ(report.code, 0) << script << " " << report.text;
    EXPECT_EQ(host.shapes(), "[" + record(shape, changes) + "]") << script;
  }
}

TEST(Drawing, StraightLines) {
  expect_records({
      {"DRAWLINE(C>O,H,C<O,L+1,COLORRED),LINETHICK3,DASH,COLORBLUE;", "StraightLineShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( Field2Id=20001 LineColor="TempBrushKey.#CC3030" LineWidth=3.000000)"
       R"( LineShapeStyle="DASH")"},
      {"DRAWLINE1(C>O,H,C<O,L,1),COLORGREEN,COLORBLUE;", "StraightLineShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( Field2Id=9 Field2VisibleId=20001 IsExpand=1 LineColor="TempBrushKey.#19A0FF")"},
      {"DRAWLINE3(C>O,H+1,2,C<O,L+1,3,DRAWNULL);", "StraightLineShape",
       R"(TitleVisible=0 Field1Id=20004 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( Field2Id=20005 Field2VisibleId=20001 IsExpand=-2147483648)"
       R"( HorizontalOffset1FieldId=20002 HorizontalOffset2FieldId=20003)"},
      {"DRAWLASTBARLINE(C>O,H,2,C<O,L,3,0.5),DOT;", "StraightLineShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( Field2Id=9 Field2VisibleId=20001 IsExpand=1 IsLastCandle=1)"
       R"( HorizontalOffset1FieldId=20002 HorizontalOffset2FieldId=20003 LineShapeStyle="DOT")"},
      {"DRAWSL(C>O,H+1,1.5,10,3,COLOR123ABC);", "StraightLineShape",
       R"(TitleVisible=0 Field1Id=20002 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( HorizontalOffset1FieldId=20001 LineColor="#123ABC" Style="SlopeStraightLine")"
       R"( Slope=1.500000 IsExpand=3)"},
      {"DRAWSL1(C>O,H,-1,10,2.5);", "StraightLineShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( HorizontalOffset1FieldId=20001 Style="SlopeStraightLine2" Slope=-1.000000)"
       R"( IsExpand=2)"},
      {"VERTLINE(C>O,COLORGREEN),COLORRED;", "StraightLineShape",
       R"(TitleVisible=0 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( LineColor="TempBrushKey.#0C993F" Style="VertLine")"},
      // Each colour item counts at once, so the first COLORAUTO has used up a step.
      {"VERTLINE1(C>O),COLORAUTO,COLORAUTO;", "StraightLineShape",
       R"(TitleVisible=0 Field1Text="StraightLineShape1" Field1VisibleId=20000)"
       R"( LineColor="Brush.Green7" Style="VertLine")"},
  });
}

TEST(Drawing, LinesThroughBars) {
  expect_records({
      // The line's own column is 20000.
      {"A:C+1,COLORRED,LINETHICK2;", "PolylineShape",
       R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20001 LineColor="TempBrushKey.#CC3030")"
       R"( LineWidth=2.000000)"},
      // A width below 1 is one of 1.
      {"A:C+1,COLORRED,LINETHICK0;", "PolylineShape",
       R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20001 LineColor="TempBrushKey.#CC3030")"},
      {"A:C*2,NOTEXT,PRECIS3,DASHDOT;", "PolylineShape",
       R"(TitleVisible=0 Digit=3 Field1Id=20000 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20001 LineColor="Brush.Cyan7" LineShapeStyle="DASHDOT")"},
      {"POLYLINE(1,C,COLORAUTO);", "PolylineShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 LineColor="Brush.Cyan7" IsContinuousLine=1)"},
      {"POLYLINE(1,C+1,COLORRED),TITLEVISIBLE;", "PolylineShape",
       R"(Field1Id=20001 Field1Text="PolylineShape1" Field1VisibleId=20000)"
       R"( LineColor="TempBrushKey.#CC3030" IsContinuousLine=1)"},
      // The third argument isn't parsed when an item names a colour.
      {"POLYLINE(1,C,1),COLORBLUE,TITLEVISIBLE;", "PolylineShape",
       R"(Field1Id=11 Field1Text="C" Field1VisibleId=20000 LineColor="TempBrushKey.#19A0FF")"
       R"( IsContinuousLine=1)"},
      {"POLYLINE1(1,H+1),PRECIS6,COLORX,TITLEVISIBLE,COLORGRAY;", "PolylineShape",
       R"(TitleVisible=0 Digit=6 Field1Id=20001 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 LineColor="TempBrushKey.#434448" IsContinuousLine=1)"},
      {"PARTLINE(1,C,COLORRED),COLORBLUE,NODRAW;", "PolylineShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 LineColor="TempBrushKey.#CC3030" Style="PartLine")"},
      {"PARTLINE1(1,C);", "PolylineShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 LineColor="Brush.Cyan7" Style="PartLine")"},
      {"DRAWCOLORLINE(1,C,COLORAUTO,COLORAUTO);", "PolylineShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 LineColor="Brush.Cyan7" ConditionColor="Brush.Green7")"
       R"( Style="ColorPolyline")"},
  });
}

TEST(Drawing, Texts) {
  expect_records({
      {"DRAWTEXT(C>O,H,'a\\B'),COLORRED,ALIGN0,VALIGN2,FONTSIZE72,PRECIS7,NODRAW;", "TextShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000 Text="a\B")"
       R"( TextColor="TempBrushKey.#CC3030" HorizontalAlign=0 VerticalAlign=2 FontSize=72)"},
      {"DRAWTEXT(1,C,1+1),PARAM_,NOTEXT,FONTSIZE7;", "TextShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="TextShape1" Field1VisibleId=20000)"
       R"( Text="2.000000" FontSize=-1)"},
      {"A:C*2,CIRCLEDOT,COLORBLUE;", "TextShape",
       R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20001 Text="●")"
       R"( TextColor="TempBrushKey.#19A0FF")"},
      // What is kept here is the last colour word, and COLORAUTO counts as none.
      {"DRAWLASTBARTEXT(H+1,'x'),COLORRED,COLORAUTO,FONTSIZE20;", "TextShape",
       R"(TitleVisible=0 Field1Id=20001 Field1Text="TextShape1" Field1VisibleId=20000 Text="x")"
       R"( FontSize=20)"},
      {"KTEXT(C>O,2.5,H,0,COLORRED,'x'),FONTSIZE,COLORBLUE;", "TextShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000 Text="x")"
       R"( TextColor="TempBrushKey.#CC3030" HorizontalAlign=0 HorizontalOffset=2.500000)"
       R"( FontSize=-1)"},
      {"KTEXT(C>O,DRAWNULL,H,12,COLORRED,C);", "TextShape",
       R"(TitleVisible=0 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000 Text="-nan")"
       R"( TextColor="TempBrushKey.#CC3030" HorizontalOffset=-nan)"},
  });
}

TEST(Drawing, Numbers) {
  expect_records({
      // NUMBER's column, then the one of the marks, then the price's.
      {"DRAWNUMBER(C>O,H+1,C*2,-1,COLORRED),COLORBLUE;", "TextShape",
       R"(TitleVisible=0 Digit=0 Field1Id=20002 Field1Text="TextShape1" Field1VisibleId=20001)"
       R"( NumberFieldId=20000 TextColor="TempBrushKey.#CC3030")"},
      {"DRAWNUMBER1(C>O,H,C,2.9),COLORBLUE,ALIGN2;", "TextShape",
       R"(TitleVisible=0 Digit=2 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000)"
       R"( NumberFieldId=11 TextColor="TempBrushKey.#19A0FF" HorizontalAlign=2)"},
      {"DRAWSHIFTNUMBER(C>O,H,7,DRAWNULL,COLORRED,0,3.9);", "TextShape",
       R"(TitleVisible=0 Digit=0 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20001)"
       R"( NumberFieldId=20000 TextColor="TempBrushKey.#CC3030" HorizontalOffset=-3.000000)"},
      {"DRAWSHIFTNUMBER(C>O,H,C,2,COLORRED,1,-4);", "TextShape",
       R"(TitleVisible=0 Digit=2 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000)"
       R"( NumberFieldId=11 TextColor="TempBrushKey.#CC3030" HorizontalOffset=-4.000000)"},
      {"DRAWSHIFTNUMBER(C>O,H,C,2,COLORRED,0,0);", "TextShape",
       R"(TitleVisible=0 Digit=2 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000)"
       R"( NumberFieldId=11 TextColor="TempBrushKey.#CC3030")"},
      {"DRAWSHIFTNUMBER(C>O,H,C,2,COLORRED,2,5);", "TextShape",
       R"(TitleVisible=0 Digit=2 Field1Id=8 Field1Text="TextShape1" Field1VisibleId=20000)"
       R"( NumberFieldId=11 TextColor="TempBrushKey.#CC3030")"},
      {"DRAWLASTBARNUMBER(H+1,C*2,-1,COLORAUTO);", "TextShape",
       R"(TitleVisible=0 Field1Id=20002 Field1Text="TextShape1" Field1VisibleId=20000)"
       R"( NumberFieldId=20001 TextColor="Brush.Cyan7")"},
  });
}

TEST(Drawing, SignsAndPictures) {
  expect_records({
      {"DRAWICON(C>O,L,'ico5'),COLORAUTO;", "TextShape",
       R"(TitleVisible=0 Field1Id=9 Field1Text="TextShape1" Field1VisibleId=20000 Text="买")"},
      {"DRAWICON(C>O,L,16),COLORRED,FONTSIZE20;", "TextShape",
       R"(TitleVisible=0 Field1Id=9 Field1Text="TextShape1" Field1VisibleId=20000 Text="😀")"
       R"( TextColor="TempBrushKey.#CC3030")"},
      {"DRAWICON(C>O,L,'33');", "TextShape",
       R"(TitleVisible=0 Field1Id=9 Field1Text="TextShape1" Field1VisibleId=20000 Text="💯")"},
      {"DRAWLASTBARICON(L,'ICO17'),VALIGN0;", "TextShape",
       R"(TitleVisible=0 Field1Id=9 Field1Text="TextShape1" Field1VisibleId=20000 Text="😀")"
       R"( VerticalAlign=0)"},
      {"DRAWBMP(C>O,L+1,'Up');", "ImageShape",
       R"(TitleVisible=0 Field1Id=20001 Field1Text="Up" Field1VisibleId=20000)"},
      {"DRAWBKBMP(C>O,'Up');", "ImageShape",
       R"(TitleVisible=0 Field1Text="Up" Field1VisibleId=20000 IsLastCandle=1)"},
      {"DRAWBKBMP(C>O,DRAWNULL);", "ImageShape",
       R"(TitleVisible=0 Field1Text="ImageShape1" Field1VisibleId=20000 IsLastCandle=1)"},
  });
}

TEST(Drawing, Sticks) {
  expect_records({
      {"STICKLINE(C>O,C,O,3,0,COLORRED),COLORBLUE,ISVOL;", "BarShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 LowerShadowColor="TempBrushKey.#19A0FF")"
       R"( UpperShadowColor="TempBrushKey.#19A0FF" Field2Id=7 LineWidth=3.000000 Style="Line")"
       R"( IsFilled=0)"},
      {"STICKLINE1(C>O,C+1,O+1,-1,DRAWNULL),TITLEVISIBLE;", "BarShape",
       R"(Field1Id=20001 Field1Text="EMPTY_LINE_NAME_RESERVED1" Field1VisibleId=20000)"
       R"( Field2Id=20002 Style="Line")"},
      {"STICKLINE(C>O,C,O,-2,0.5),HOLLOW;", "BarShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 Field2Id=7 LineWidth=1.000000 Style="Line")"},
      {"STICKLINE(C>O,C,O,2.5,1),SOLIDLINE;", "BarShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 Field2Id=7 LineWidth=2.500000 Style="Line" IsFilled=0)"},
      {"STICKLINE(C>O,C,O,COLORRED,0),COLORBLUE,HOLLOW,TITLEVISIBLE;", "BarShape",
       R"(Field1Id=11 Field1Text="BarShape1" Field1VisibleId=20000 Field2Id=7 Style="Line")"
       R"( LowerShadowColor="TempBrushKey.#19A0FF" UpperShadowColor="TempBrushKey.#19A0FF")"
       R"( IsFilled=0)"},
      // A stick that is coloured by its direction doesn't look at its colour word.
      {"A:C-O,COLORSTICK,COLORX;", "BarShape",
       R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20001 Field2Id=20002 Style="Line")"
       R"( LowerShadowColor="Brush.Green6" UpperShadowColor="Brush.Red6" LineWidth=1.000000)"
       R"( IsColorStick=1)"},
      {"A:C-O,VOLSTICK;", "BarShape",
       R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20001 Field2Id=20002 Style="Line")"
       R"( LowerShadowColor="Brush.Green6" UpperShadowColor="Brush.Red6" IsVolStick=1)"},
      {"STICKLINE1(C>O,VOL,0,-1,1),ISVOLSTICK;", "BarShape",
       R"(TitleVisible=0 Field1Id=13 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 Field2Id=20001 Style="Line" LowerShadowColor="Brush.Green6")"
       R"( UpperShadowColor="Brush.Red6" IsVolStick=1)"},
      {"STICKLINE1(C>O,C,0,0,1),ISCOLORSTICK,EMPTY_LINE_NAME_RESERVED;", "BarShape",
       R"(TitleVisible=0 Field1Id=11 Field1Text="EMPTY_LINE_NAME_RESERVED1")"
       R"( Field1VisibleId=20000 Field2Id=20001 Style="Line" LowerShadowColor="Brush.Green6")"
       R"( UpperShadowColor="Brush.Red6" LineWidth=1.000000 IsColorStick=1)"},
      {"DRAWCOLUMNCHART(C-O,C>O,C<O);", "BarShape",
       R"(Field1Id=20002 Field1Text="EMPTY_LINE_NAME_RESERVED1" Field1VisibleId=20000)"
       R"( Field2VisibleId=20001 Style="DoubleRect" IsFilled=0)"},
  });
}

TEST(Drawing, CandlesAndAreas) {
  expect_records({
      {"DRAWKLINE1(H+1,O,L,C);", "CandleShape",
       R"(TitleVisible=0 Field1Text="CandleShape1" HighField=20000 OpenField=7 LowField=9)"
       R"( CloseField=11 OpenFieldText="O" LowFieldText="L" CloseFieldText="C")"},
      {"DRAWBARLINE(HIGH,O,L,C);", "CandleShape",
       R"(TitleVisible=0 Field1Text="CandleShape1" HighField=8 OpenField=7 LowField=9)"
       R"( CloseField=11 HighFieldText="HIGH" OpenFieldText="O" LowFieldText="L")"
       R"( CloseFieldText="C" Style="American")"},
      {"DRAWCOLORKLINE(C>O,COLORBLUE,0);", "CandleShape",
       R"(TitleVisible=0 Field1Text="CandleShape1" HighField=8 OpenField=7 LowField=9)"
       R"( CloseField=11 Field1VisibleId=20000 FilledColor="TempBrushKey.#19A0FF" IsFilled=0)"
       R"( IsColorKLine=1)"},
      {"DRAWGBK(C>O,COLORAUTO,COLORAUTO,1);", "RectShape",
       R"(TitleVisible=0 Field1Text="EMPTY_LINE_NAME_RESERVED1" Field1VisibleId=20000)"
       R"( FilledColor="Brush.Cyan7" GradientColor="Brush.Green7" GradientDirection=1)"
       R"( IsLastCandle=1)"},
      {"DRAWGBK1(C>O,COLORRED);", "RectShape",
       R"(TitleVisible=0 Field1Text="EMPTY_LINE_NAME_RESERVED1" Field1VisibleId=20000)"
       R"( FilledColor="TempBrushKey.#CC3030")"},
      {"FILLRGN(C>O,C,O+1,COLORRED);", "PolygonShape",
       R"(TitleVisible=0 Field1Text="PolygonShape1" Field2Text="PolygonShape1" Field1Id=11)"
       R"( Field2Id=20001 Field1VisibleId=20000 FilledColor="TempBrushKey.#CC3030")"},
      {"FILLRGN1(C>O,C,O),DASH,COLORAUTO,COLORX;", "PolygonShape",
       R"(TitleVisible=0 Field1Text="PolygonShape1" Field2Text="PolygonShape1" Field1Id=11)"
       R"( Field2Id=7 Field1VisibleId=20000 FilledColor="Brush.Cyan7")"},
      {"FILLRGN1(C>O,C,O);", "PolygonShape",
       R"(TitleVisible=0 Field1Text="PolygonShape1" Field2Text="PolygonShape1" Field1Id=11)"
       R"( Field2Id=7 Field1VisibleId=20000)"},
      {"BACKGROUNDSTYLE(2.5);", "YRangeShape", R"(TitleVisible=0 Field1Text="2.500000")"},
  });
}

TEST(Drawing, Figures) {
  const std::string two_anchors =
      R"(Field1Id=8 Field1VisibleId=20000 Field2Id=20002 Field2VisibleId=20001)";
  const std::string three_anchors =
      R"(Field1Id=8 Field1VisibleId=20000 Field2Id=20003 Field2VisibleId=20001)"
      R"( Field3Id=11 Field3VisibleId=20002)";
  const std::string curve =
      R"( Field1Text="EMPTY_LINE_NAME_RESERVED1" LineColor="Brush.Cyan7" Style=)";
  const std::string straight =
      R"( TitleVisible=0 Field1Text="PolylineShape1" LineColor="TempBrushKey.#19A0FF" Style=)";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"ANGLELINE(C>O,H,C<O,L+1,2.5);", two_anchors + curve + "\"AngleLineCurve\" Ratio=2.500000"},
      {"DRAWANGLELINE(C>O,H,C<O,L+1,-1,COLORBLUE),COLORRED;",
       two_anchors + straight + "\"AngleLineStraightLine\" Ratio=-1.000000"},
      {"HORIZONTALLINE(C>O,C),NOTEXT,DOT,LINETHICK9,PRECIS0;",
       "Field1Id=11 Field1VisibleId=20000" + curve +
           R"("HorizontalCurve" TitleVisible=0 Digit=0 LineShapeStyle="DOT" LineWidth=9.000000)"},
      {"DRAWHORIZONTALLINE(C>O,C+1,COLORBLUE),NOTEXT;",
       "Field1Id=20001 Field1VisibleId=20000" + straight + "\"HorizontalStraightLine\""},
      {"TRENDLINES(C>O,H,C<O,L+1),COLORRED,COLORAUTO;", two_anchors + curve + "\"TrendLineCurve\""},
      {"DRAWTRENDLINE(C>O,H,C<O,L+1,COLORBLUE),COLORRED;",
       two_anchors + straight + "\"TrendLineStraightLine\""},
      {"GOLDENLINE(C>O,H,C<O,L+1,0);", two_anchors + curve + "\"GoldenLineCurve\" Ratio=0.000000"},
      {"DRAWGOLDENLINE(C>O,H,C<O,L+1,3,COLORBLUE);",
       two_anchors + straight + "\"GoldenStraightLine\" Ratio=3.000000"},
      {"WAVERULER(C>O,H,C<O,L+1,C=O,C,3);",
       three_anchors + curve + "\"WaveRulerCurve\" Ratio=3.000000"},
      {"DRAWWAVERULER(C>O,H,C<O,L+1,C=O,C,3,COLORBLUE);",
       three_anchors + straight + "\"WaveRulerStraightLine\" Ratio=3.000000"},
  };
  for (const auto& [script, changes] : cases) expect_records({{script, "PolylineShape", changes}});
}

TEST(Drawing, TitlesAndThePaletteCountThroughAScript) {
  TestHost host;
  for (int compile = 0; compile < 2; ++compile) {
    ASSERT_EQ(host.compile("A:C+1;B:C+2;VERTLINE1(C>O);VERTLINE1(C<O);PARTLINE1(1,C),COLORRED;"
                           "PARTLINE1(1,C);")
                  .code,
              0);
    const std::string part = R"(TitleVisible=0 Field1Id=11 Style="PartLine" Field1Text=)";
    const std::string vertical = R"(TitleVisible=0 Style="VertLine" Field1Text=)";
    // Two columns of the lines, then those of the marks in order of the calls.
    EXPECT_EQ(
        host.shapes(),
        "[" +
            record("PolylineShape", R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20002)"
                                    R"( LineColor="Brush.Cyan7")") +
            "," +
            record("PolylineShape", R"(Field1Id=20001 Field1Text="B" Field1VisibleId=20003)"
                                    R"( LineColor="Brush.Green7")") +
            "," +
            record("StraightLineShape",
                   vertical + R"("StraightLineShape1" Field1VisibleId=20004)") +
            "," +
            record("StraightLineShape",
                   vertical + R"("StraightLineShape2" Field1VisibleId=20005)") +
            "," +
            record("PolylineShape", part + R"("EMPTY_LINE_NAME_RESERVED1" Field1VisibleId=20006)" +
                                        R"( LineColor="TempBrushKey.#CC3030")") +
            "," +
            record("PolylineShape", part + R"("EMPTY_LINE_NAME_RESERVED2" Field1VisibleId=20007)" +
                                        R"( LineColor="Brush.Orange7")") +
            "]");
  }
}

TEST(Drawing, LineSettings) {
  TestHost host;
  const std::string_view lines = R"([{"LINE_NAME":"A","COLOR_KEY":"K","LINE_THICK":3,)"
                                 R"("IS_SELECTED":1},{"LINE_NAME":"B","COLOR_KEY":"K",)"
                                 R"("LINE_THICK":2,"IS_SELECTED":0}])";
  ASSERT_EQ(host.compile("A:C+1,COLORRED,LINETHICK9;B:C+2;D:C;", "", lines).code, 0);
  // B takes its step of the palette and its columns, though it isn't listed. D shares C's column.
  EXPECT_EQ(host.shapes(),
            "[" +
                record("PolylineShape", R"(Field1Id=20000 Field1Text="A" Field1VisibleId=20002)"
                                        R"( LineColor="K" LineWidth=3.000000)") +
                "," +
                record("PolylineShape", R"(Field1Id=11 Field1Text="D" Field1VisibleId=20004)"
                                        R"( LineColor="Brush.Green7")") +
                "]");
  host.feed(bars);
  EXPECT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("B"), {4, 3, 5, 6}));
  EXPECT_TRUE(same(host.column(20003), {1, 1, 1, 1}));
}

/// What a script's columns hold after a run over the bars; the first auxiliary one is 20000.
struct BarCase {
  std::string_view script;
  std::vector<std::string_view> columns;
};

TEST(Drawing, ColumnsPerBar) {
  const std::vector<BarCase> cases = {
      // One mark for both conditions, a null one being true.
      {"DRAWLINE(C>O,H,H<7,L+1,COLORRED);", {"1 -10000 -10000 -10000", "1.5 2 3 2"}},
      {"DRAWLINE(DRAWNULL,H,C>O,L,COLORRED);", {"1 -10000 -10000 1"}},
      {"DRAWLINE1(C>O,H,0.5,L,1);", {"1 -10000 -10000 1", "1 1 1 1"}},
      {"DRAWLINE3(C>O,H,C,C<O,L,-2,1);",
       {"1 -10000 -10000 1", "-10000 1 -10000 -10000", "-2 -1 -3 -4", "2 2 2 2"}},
      {"DRAWLASTBARLINE(C>O,H,C,C<O,L+1,2,1);",
       {"null null null 1", "null null null -10000", "null null null -4", "null null null -2",
        "null null null 2"}},
      {"DRAWSL(C>O,H,1,C*2,0,COLORRED);", {"1 -10000 -10000 1", "4 2 6 8"}},
      {"DRAWSL1(C>O,H,1,C*2,0);", {"1 -10000 -10000 1", "4 2 6 8"}},
      {"VERTLINE(C>O,COLORRED);", {"1 -10000 -10000 1"}},
      {"VERTLINE1(C-3);", {"1 1 -10000 1"}},
      {"POLYLINE(0.5,C,COLORRED);", {"1 1 1 1"}},
      {"POLYLINE(0,C,COLORRED);", {"-10000 -10000 -10000 -10000"}},
      {"POLYLINE(1,C,COLORRED),NODRAW;", {"-10000 -10000 -10000 -10000"}},
      {"POLYLINE(1,C*2,COLORRED);", {"1 1 1 1", "4 2 6 8"}},
      {"POLYLINE1(C<O,C*2);", {"-10000 1 -10000 -10000", "4 2 6 8"}},
      {"POLYLINE1(C<O,C*2),NODRAW;", {"-10000 -10000 -10000 -10000", "4 2 6 8"}},
      {"PARTLINE(C>O,C*2,COLORRED);", {"1 -10000 -10000 1", "4 2 6 8"}},
      {"PARTLINE1(0.5,C),NODRAW;", {"1 1 1 1"}},
      {"DRAWCOLORLINE(C>O,C*2,COLORRED,COLORBLUE);", {"1 -10000 -10000 1", "4 2 6 8"}},
      // Truncated conditions: 0.5 is false here.
      {"DRAWTEXT(C/2,H+1,'x');", {"1 -10000 1 1", "6 7 8 9"}},
      {"DRAWTEXT(DRAWNULL,H,'x');", {"1 1 1 1"}},
      {"DRAWTEXT(1,H,'x'),NODRAW;", {"-10000 -10000 -10000 -10000"}},
      {"DRAWICON(L,H,1);", {"-10000 1 1 1"}},
      {"STICKLINE(L,H,O,1,0);", {"-10000 1 1 1"}},
      {"STICKLINE1(C>O,H,O,1,0);", {"1 -10000 -10000 1"}},
      {"DRAWCOLUMNCHART(C-O,L-1,C>O);", {"1 -10000 1 -10000", "1 -10000 -10000 1", "1 -1 0 3"}},
      {"KTEXT(C>O,1,H+1,0,COLORRED,'x');", {"1 -10000 -10000 1", "6 7 8 9"}},
      {"DRAWBMP(C>O,H+1,'x');", {"1 -10000 -10000 1", "6 7 8 9"}},
      {"DRAWNUMBER1(C>O,H+1,C*2,0);", {"4 2 6 8", "1 -10000 -10000 1", "6 7 8 9"}},
      {"DRAWNUMBER(L,H+1,C*2,0,COLORRED);", {"4 2 6 8", "1 1 1 1", "6 7 8 9"}},
      {"DRAWSHIFTNUMBER(C>O,H,7,0,COLORRED,0,1);", {"7 7 7 7", "1 -10000 -10000 1"}},
      {"DRAWLASTBARNUMBER(H+1,C*2,0,COLORRED);",
       {"-10000 -10000 -10000 1", "null null null 8", "6 7 8 9"}},
      {"DRAWLASTBARTEXT(H,'x');", {"-10000 -10000 -10000 1"}},
      {"DRAWBKBMP(L-1,'x');", {"1 -10000 1 -10000"}},
      {"DRAWKLINE(H+1,O,L,C);", {"6 7 8 9"}},
      {"DRAWCOLORKLINE(C>O,COLORRED,0);", {"1 -10000 -10000 1"}},
      {"DRAWGBK(C>O,COLORRED,COLORBLUE,0);", {"1 -10000 -10000 1"}},
      {"DRAWGBK1(C>O,COLORRED);", {"1 -10000 -10000 1"}},
      {"FILLRGN(C>O,C+O,O,COLORRED);", {"1 -10000 -10000 1", "3 3 6 5"}},
      {"FILLRGN1(0.5,C+O,O);", {"1 1 1 1", "3 3 6 5"}},
      {"HORIZONTALLINE(C>O,C*2);", {"1 -10000 -10000 1", "4 2 6 8"}},
      {"ANGLELINE(C>O,H,C<O,L+1,1);", {"1 -10000 -10000 1", "-10000 1 -10000 -10000", "1.5 2 3 2"}},
      {"WAVERULER(C>O,H,C<O,L,C=O,C+1,1);",
       {"1 -10000 -10000 1", "-10000 1 -10000 -10000", "-10000 -10000 1 -10000", "3 2 4 5"}},
  };
  for (const auto& [script, columns] : cases) {
    TestHost host;
    ASSERT_EQ(host.compile(script).code, 0) << script;
    const std::string shapes = host.shapes();
    host.feed(bars);
    EXPECT_EQ(host.run(), success) << script;
    EXPECT_EQ(host.shapes(), shapes) << script;
    uint32_t id = 20000;
    for (const std::string_view column : columns) {
      EXPECT_TRUE(same(host.column(id), series(column)))
          << script << " " << id << ": " << to_text(host.column(id));
      ++id;
    }
    EXPECT_TRUE(host.column(id).empty() || same(host.column(id), Series(4, null)))
        << script << " has a column more";
  }
}

TEST(Drawing, TheRowThatWasTheLastOneKeepsItsMark) {
  TestHost host;
  ASSERT_EQ(host.compile("DRAWLASTBARTEXT(H,'x');").code, 0);
  host.feed(bars, 0, 3);
  ASSERT_EQ(host.run(), success);
  host.feed(bars, 3, 4);
  ASSERT_EQ(host.run(3), success);
  EXPECT_TRUE(same(host.column(20000), {-10000, -10000, 1, 1}));
  ASSERT_EQ(host.run(2), success);
  EXPECT_TRUE(same(host.column(20000), {-10000, -10000, -10000, 1}));
}

TEST(Drawing, StylesOfALineAreDrawnAtEveryBar) {
  for (const char* const style : {"CIRCLEDOT", "CROSSDOT", "COLORRED", "COLORSTICK"}) {
    TestHost host;
    ASSERT_EQ(host.compile(std::string("A:C*2,") + style + ';').code, 0);
    host.feed(bars);
    ASSERT_EQ(host.run(), success);
    EXPECT_TRUE(same(host.column(20001), {1, 1, 1, 1})) << style;
  }
}

/// The second price takes the shared argument's column anew, and the first record is left with one
/// that nothing writes.
TEST(Drawing, APriceThatTwoCallsShare) {
  TestHost host;
  ASSERT_EQ(host.compile("PARTLINE(1,1+1,COLORRED);PARTLINE(1,1+1,COLORRED);").code, 0);
  EXPECT_NE(host.shapes().find(R"("Field1Id":20001)"), std::string::npos) << host.shapes();
  EXPECT_NE(host.shapes().find(R"("Field1Id":20003)"), std::string::npos) << host.shapes();
  host.feed(bars);
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.column(20003), {2, 2, 2, 2}));
}

TEST(Drawing, APriceInAFieldWithTheIdZero) {
  TestHost host;
  const std::string word = new_word("PRICE");
  host.declare_field(word, 0);
  ASSERT_EQ(host.compile("PARTLINE(1," + word + ",COLORRED);").code, 0);
  EXPECT_NE(host.shapes().find(R"("Field1Id":0)"), std::string::npos) << host.shapes();
}

/// A compile that was broken off leaves a call without its last argument, which fails when it is
/// read: sticks and candles take it for null and go on, other words hand the status up.
TEST(Drawing, WordsThatDoNotLookAtAStatus) {
  TestHost host;
  ASSERT_EQ(host.compile("STICKLINE(1,C+1,O,2);").code, 7);
  host.feed(bars);
  EXPECT_EQ(host.run(), success);
  EXPECT_EQ(host.shapes(), "[" +
                               record("BarShape", R"(TitleVisible=0 LineWidth=2.000000)"
                                                  R"( Field1Text="EMPTY_LINE_NAME_RESERVED1")"
                                                  R"( Style="Line" Field1VisibleId=20000)"
                                                  R"( Field1Id=20001 Field2Id=7)") +
                               "]");
  EXPECT_TRUE(same(host.column(20001), {3, 2, 4, 5}));
  ASSERT_EQ(host.compile("DRAWKLINE(H,O,L);").code, 7);
  host.feed(bars);
  EXPECT_EQ(host.run(), success);
  ASSERT_EQ(host.compile("DRAWLINE1(1,C,1,O);").code, 7);
  host.feed(bars);
  EXPECT_EQ(host.run(), R"({"ErrCode":2000,"ExtraMsg":"","ErrLine":""})");
}

struct Refusal {
  std::string_view script;
  int64_t code;
  std::string_view message;
  int64_t line = 0;
};

TEST(Drawing, Refusals) {
  const std::vector<Refusal> cases = {
      {"DRAWLINE1(1,C,1,C,DRAWNULL);", 2012, "DRAWLINE1.EXP"},
      {"DRAWSL(1,C,1,1,2.5,COLORRED);", 2012, "DRAWSL.EXPAND"},
      {"DRAWSL(1,C,1,1,DRAWNULL,1);", 2012, "DRAWSL.EXPAND"},
      {"DRAWSL1(1,C,DRAWNULL,1,3);", 2012, "DRAWSL1.EXPAND"},
      // A slope from the bars is null when the record is made, before there are any.
      {"DRAWSL1(1,C,C,1,2);", 2012, "DRAWSL1.SLOPE"},
      {"\n\nANGLELINE(1,L,1,H,DRAWNULL);", 2012, "ANGLELINE.RATIO", 2},
      {"GOLDENLINE(1,L,1,H,DRAWNULL);", 2012, "GOLDENLINEGOLDENLINE"},
      {"DRAWGOLDENLINE(1,L,1,H,DRAWNULL,COLORRED);", 2012, "DRAWGOLDENLINE.RATIO"},
      {"DRAWLASTBARTEXT(C,DRAWNULL);", 2012, "DRAWLASTBARTEXT.TEXT"},
      {"DRAWLASTBARNUMBER(C,C,DRAWNULL,1);", 2012, "DRAWLASTBARNUMBER.PRECISION"},
      {"DRAWSHIFTNUMBER(1,C,C,1,1,DRAWNULL,DRAWNULL);", 2012, "DRAWSHIFTNUMBER.DIRECTION"},
      {"DRAWSHIFTNUMBER(1,C,C,1,1,2,DRAWNULL);", 2012, "DRAWSHIFTNUMBER.X"},
      {"DRAWGBK(1,COLORRED,COLORBLUE,2);", 2012, "DRAWGBK.D"},
      {"DRAWGBK(1,COLORRED,COLORBLUE,DRAWNULL);", 2012, "DRAWGBK.D"},
      {"BACKGROUNDSTYLE(DRAWNULL);", 2012, "BACKGROUNDSTYLE.i"},
      {"DRAWICON(1,C,34);", 2003, "DRAWICON"},
      {"DRAWICON(1,C,0);", 2003, "DRAWICON"},
      {"DRAWLASTBARICON(C,5);", 2003, "DRAWLASTBARICON"},
      {"DRAWTEXT(1,C,'x'),ALIGN3;", 2012, "get_num_val.ALIGN"},
      {"\nDRAWTEXT(1,C,'x'),VALIGN10;", 2012, "get_num_val.VALIGN", 1},
      {"DRAWTEXT(1,C,'x'),ALIGN;", 2012, "get_num_val.ALIGN"},
      {"DRAWTEXT(1,C,'x'),ALIGNX;", 4000, "invalid stoi argument"},
      {"\nDRAWTEXT(1,C,'x'),COLORFF00,COLORRED;", 2013, "COLORFF00", 0},
      {"PARTLINE1(1,C),COLORRED,COLORX;", 2013, "COLORX"},
      {"VERTLINE(1,2);", 2013, "2"},
  };
  for (const auto& [script, code, message, line] : cases) {
    TestHost host;
    const Report report = host.compile(script);
    EXPECT_EQ(report.code, code) << script;
    EXPECT_EQ(report.message, message) << script;
    EXPECT_EQ(report.line, line) << script;
    // A script that was refused halfway can be run; whatever it gives, it does no harm.
    host.feed(bars);
    host.run();
    host.run();
  }
}

}  // namespace
}  // namespace quor_test
