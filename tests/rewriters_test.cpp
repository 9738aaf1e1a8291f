// The passes that turn older statement forms into plain statements, each as text in and text out.
#include "compiler/rewriters.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "compiler/rewrite_lines.h"
#include "compiler/rewrite_short_forms.h"
#include "compiler/rewrite_signals.h"
#include "compiler/scanner.h"
#include "support/test_host.h"
#include "text/utf8.h"

namespace quor_test {
namespace {

struct Rewritten {
  int32_t status;
  std::string error;
  std::vector<std::string> slots;
};

/// Scans and rewrites a script in a fresh instance.
Rewritten rewritten(std::string script) {
  quor::DataPoolCenter pool;
  quor::CalculateCenter calculator(pool);
  quor::CompileContext context(pool, calculator);
  Rewritten result{};
  quor::Status status = quor::split_statements(script, result.slots, result.error);
  if (!failed(status)) {
    status = quor::rewrite_statements(context, result.slots, result.error);
  }
  result.status = error_code(status);
  return result;
}

struct FormCase {
  const char* script;
  const char* slot;
};

class Form : public testing::TestWithParam<FormCase> {};

TEST_P(Form, Becomes) {
  const Rewritten result = rewritten(GetParam().script);
  ASSERT_EQ(result.status, 0) << GetParam().script << ": " << result.error;
  ASSERT_EQ(result.slots.size(), 1U) << GetParam().script;
  EXPECT_EQ(result.slots[0], GetParam().slot) << GetParam().script;
}

constexpr FormCase colours[] = {
    {"a:c,rgb(255,0,0);", "A:C@COLORff0000"},
    {"A:C,RGB(0,10,171);", "A:C@COLOR000aab"},
    // 300 is 0x12c: its ninth bit runs into the component in front.
    {"A:C,RGB(300,1,2);", "A:C@COLOR12c0102"},
    {"A:C,RGB(1,300,2);", "A:C@COLOR012c02"},
    {"A:C,RGB(0X10,X,-1);", "A:C@COLOR100000"},
    {"DRAWTEXT(C>O,L,'X',RGB(1,2,3)),RGB(1,2,3);", "DRAWTEXT(C>O@L@'X'@COLOR010203)@COLOR010203"},
    {"A:C,RGB(1,2,3),RGB(4,5,6);", "A:C@COLOR010203@COLOR040506"},
    {"A:C,RGB(1,2);", "A:C@RGB(1@2)"},
    {"A:C,RGB(1,2,3,4),RGB(1,2,3);", "A:C@RGB(1@2@3@4)@RGB(1@2@3)"},
    {"A:C,RGB(1,2,3;", "A:C@RGB(1@2@3"},
    {"A:ZRGB(1,2,3);", "A:ZRGB(1@2@3)"},
    {"ZRGB(1,2,3);", "ZCOLOR010203"},
    {"A:ARGB(1,2,3)+RGB(1,2,3),RGB(4);", "A:ACOLOR010203+COLOR010203@RGB(4)"},
    {"A:RGB(1,2,3),RGB(RGB(1,2,3),0,9);", "A:COLOR010203@COLOR000009"},
    {"A:RGB(1,2,3),RGB(4),RGB(1,2,3),RGB(5,6,7);", "A:COLOR010203@RGB(4)@COLOR010203@RGB(5@6@7)"},
    {"A:C,SETSTYLECOLOR(DASH,COLORRED);", "A:C@DASH@COLORRED"},
    {"A:MA(C,5),SETSTYLECOLOR(DASH,RGB(1,1,1));", "A:MA(C@5@DASH@COLOR010101"},
};
INSTANTIATE_TEST_SUITE_P(Colours, Form, testing::ValuesIn(colours));

constexpr FormCase short_forms[] = {
    {"C>O,SOUND('a.wav');", "PLAYSOUND(C>O@'a.wav')"},
    {"c>o,sound( 'It' 's' ),COLORRED;", "PLAYSOUND(C>O@'It''s')"},
    {"C>O,PLAYSOUND('a.wav');", "C>O@PLAYSOUND('a.wav')"},
    {"A:SOUND('B');", "A:SOUND('B')"},
    {"MA(C,5)>O,ICON(1,'up, up'),COLORRED,LINETHICK2;",
     "DRAWICON(MA(C@5)>O@H@'up, up')@COLORRED@LINETHICK2"},
    {"C>O,ICON(0,'dn');", "DRAWICON(C>O@L@'dn')"},
    {"C>O,DRAWICON(1,'X');", "C>O@DRAWICON(1@'X')"},
    {"C>O,WORD(1,'Up'),COLORRED;", "DRAWTEXT(C>O@H@'Up')@COLORRED"},
    {"C>O,WORD(0,'dn');", "DRAWTEXT(C>O@L@'dn')"},
    {"C>O,WORD(12,'Up');", "DRAWTEXT(C>O@H@'Up')"},
    {"C>O,WORD(X,'dn');", "DRAWTEXT(C>O@L@'dn')"},
    {"C>O,COLORRED,WORD(1,'X');", "C>O@COLORRED@WORD(1@'X')"},
    {"C>O,WORD('X');", "C>O@WORD('X')"},
    {"WORD(1,'X'),COLORRED;", "WORD(1@'X')@COLORRED"},
    {"CJLVOL(0);", "STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@V@-1@1)@ISVOLSTICK@TITLEVISIBLE"},
    {"cjlvol(1);", "STICKLINE1(1@0@V@2@0)@COLORGREY@TITLEVISIBLE"},
    {"A:CJLVOL(10);", "A:CJLVOL(10)"},
};
INSTANTIATE_TEST_SUITE_P(ShortForms, Form, testing::ValuesIn(short_forms));

constexpr FormCase line_forms[] = {
    {"C-O,STICK;", "STICKLINE1(1@0@C?O@1@1)@TITLEVISIBLE"},
    {"C,STICK,COLORRED,SOLID;", "STICKLINE1(1@0@C@1@0)@COLORRED@TITLEVISIBLE"},
    {"C,STICK,SOLID,COLORRED,LINETHICK2,HOLLOW,COLORBLUE;",
     "STICKLINE1(1@0@C@1@1)@COLORBLUE@TITLEVISIBLE"},
    {"C,COLORSTICK,COLORRED;",
     "STICKLINE1(1@0@C@1@1)@ISCOLORSTICK@EMPTY_LINE_NAME_RESERVED@TITLEVISIBLE"},
    {"C,COLORSTICK,SOLID;",
     "STICKLINE1(1@0@C@1@0)@ISCOLORSTICK@EMPTY_LINE_NAME_RESERVED@TITLEVISIBLE"},
    {"MA(V,5),VOLSTICK;",
     "STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@MA(V@5)@-1@1)@ISVOLSTICK@EMPTY_LINE_NAME_RESERVED@"
     "TITLEVISIBLE"},
    {"V,VOLUMESTICK;",
     "STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@V@-1@1)@ISVOLSTICK@EMPTY_LINE_NAME_RESERVED@"
     "TITLEVISIBLE"},
    // STICK is asked for first and takes what stands in front as it is.
    {"C,VOLSTICK,STICK;", "STICKLINE1(1@0@C@VOLSTICK@1@1)@TITLEVISIBLE"},
    {"C,STICKLINE1(1,0,C,1,1);", "C@STICKLINE1(1@0@C@1@1)"},
    {"A:C,STICK;", "A:C@STICK"},
    {"C>O,CROSSDOT;", "EMPTY_LINE_NAME_RESERVED1:C>O@CROSSDOT"},
    {"C>O,CIRCLEDOT,COLORRED;", "EMPTY_LINE_NAME_RESERVED1:C>O@CIRCLEDOT@COLORRED"},
    {"C>O,CROSSDOTS;", "C>O@CROSSDOTS"},
    {"A:C>O,CROSSDOT;", "A:C>O@CROSSDOT"},
    {"HHV(C,5);", "EMPTY_LINE_NAME_RESERVED1:HHV(C@5)"},
    {"LLV(C,5),COLORRED;", "EMPTY_LINE_NAME_RESERVED1:LLV(C@5)@COLORRED"},
    {"IF(C>O,1,0),COLORRED;", "EMPTY_LINE_NAME_RESERVED1:IF(C>O@1@0)@COLORRED"},
    {"IF(A,IF(B,1,2),3);", "EMPTY_LINE_NAME_RESERVED1:IF(A@IF(B@1@2)@3)"},
    {"A:HHV(C,5);", "A:HHV(C@5)"},
    {"1+HHV(C,5);", "1+HHV(C@5)"},
    {"HHVBARS(C,5);", "HHVBARS(C@5)"},
    {"IF(C>O,1,0),CROSSDOT;", "EMPTY_LINE_NAME_RESERVED1:IF(C>O@1@0)@CROSSDOT"},
};
INSTANTIATE_TEST_SUITE_P(Lines, Form, testing::ValuesIn(line_forms));

constexpr FormCase signal_forms[] = {
    {"C>O,NOTICE('Gap');", "NOTICE(C>O@'C>O,NOTICE('Gap')'@'Gap')"},
    // The record shows the statement as it was written, the call has it in upper case.
    {"ma(c,5)-o>-1,notice('Gap');", "NOTICE(MA(C@5)?O>^1@'ma(c,5)-o>-1,notice('Gap')'@'Gap')"},
    {"C>O,NOTICE('一二三四五六七八九十');",
     "NOTICE(C>O@'C>O,NOTICE('一二三四五六七八九十')'@'一二三四五六七八九十')"},
    {"C>O,NOTICE('\xFF');", "NOTICE(C>O@'C>O,NOTICE('\xFF')'@'\xFF')"},
    {"A:NOTICES;", "A:NOTICES"},
    {"C>O,BK;", "BK(C>O@'C>O,BK')"},
    {"c>o,closeout(2);", "CLOSEOUT(C>O@'c>o,closeout(2)'@2)"},
    {"C>O,SPK(0x10);", "SPK(C>O@'C>O,SPK(0x10)'@0x10)"},
    {"BKX:=C>O;", "BKX:=C>O"},
    {"X+BK>1;", "X+BK>1"},
};
INSTANTIATE_TEST_SUITE_P(Signals, Form, testing::ValuesIn(signal_forms));

TEST(Rewriters, PassesSeeWhatTheOnesBeforeLeft) {
  // A generated name carries on counting through the slots; the last digit is the count.
  const Rewritten result = rewritten("HHV(C,5);\n\nC,CIRCLEDOT,RGB(1,2,3);\nLLV(C,5);");
  ASSERT_EQ(result.status, 0);
  EXPECT_EQ(result.slots,
            (std::vector<std::string>{"EMPTY_LINE_NAME_RESERVED1:HHV(C@5)", "",
                                      "EMPTY_LINE_NAME_RESERVED2:C@CIRCLEDOT@COLOR010203",
                                      "EMPTY_LINE_NAME_RESERVED3:LLV(C@5)"}));
}

struct RefusedCase {
  const char* script;
  int code;
  const char* message;
};

class Refused : public testing::TestWithParam<RefusedCase> {};

TEST_P(Refused, WithCodeMessageAndLine) {
  TestHost host;
  // Two slots in front, so that the line is 2.
  const Report report = host.compile("A0:=1;\n\n" + std::string(GetParam().script));
  EXPECT_EQ(report.code, GetParam().code) << GetParam().script;
  EXPECT_EQ(report.message, GetParam().message) << GetParam().script;
  const bool without_line = GetParam().code == 8 || GetParam().code == 4000;
  EXPECT_EQ(report.line, without_line ? 0 : 2) << GetParam().script;
}

constexpr RefusedCase refused[] = {
    {"A:MA(C,IF(C>O,1,2));", 15, "IF"},
    {"A:MA(C,IFN(C>O,1,2));", 15, "IFN"},
    {"A:MA(C,IFELSE(C>O,1,2));", 15, "IFELSE"},
    // Only a call that opens the statement is exempt, and "IF(" isn't part of "IFELSE(".
    {"IFELSE(C>O,IF(C>1,1,2),3);", 15, "IF"},
    {"SOUND('a.wav');", 3, "SOUND"},
    {",SOUND('a.wav');", 3, "SOUND"},
    {",C>O,SOUND('a.wav');", 3, "SOUND"},
    {"C>O,SOUND(A);", 2012, "SOUND.NAME"},
    {"ICON(1,'X');", 3, "ICON"},
    {",ICON(1,'X');", 3, "ICON"},
    {",C>O,ICON(1,'X');", 3, "ICON"},
    {"C>O,ICON(2,'X');", 2012, "ICON.TYPE"},
    {"C>O,ICON(", 14, ""},
    {"C>O,ICON(;", 2012, "ICON.TYPE"},
    {"C>O,ICON(1,X);", 4000, "invalid string position"},
    {"C>O,ICON(1);", 4000, "invalid string position"},
    {"WORD(1,'X');", 3, "WORD"},
    {",WORD(1,'X');", 3, "WORD"},
    {"C>O,WORD(1,X);", 2011, "WORD"},
    {"CJLVOL(10);", 2011, "CJLVOL"},
    {"CJLVOL();", 2011, "CJLVOL"},
    {",STICK;", 3, "STICK"},
    {",VOLSTICK,COLORRED;", 3, "STICK"},
    {",CROSSDOT;", 3, "CROSSDOT"},
    {",CIRCLEDOT;", 3, "CIRCLEDOT"},
    {"NOTICE('A');", 2012, "COND, NOTICE('预警名称'); NOTICE"},
    {"A:NOTICE('A');", 2012, "COND, NOTICE('预警名称'); NOTICE"},
    {"A:C>O,NOTICE('X');", 8, ""},
    {",NOTICE;", 3, "NOTICE"},
    {"C>O,NOTICE;", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE('');", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE(A);", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE-'A';", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE='A';", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE(A'B');", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE('一二三四五六七八九十1');", 2012, "NOTICE('预警名称'); NOTICE"},
    {"C>O,NOTICE('😀😀😀😀😀1');", 2012, "NOTICE('预警名称'); NOTICE"},
    {"SP:1;", 2012, "COND, TRADE;SP"},
    {"A:BK;", 2012, "COND, TRADE;BK"},
    {"BK(C>O,'X');", 2012, "COND, TRADE;BK"},
    {"A:C>O,BPK;", 8, ""},
    {",SK;", 3, "SK"},
    {"C>O,BK(0);", 2012, "TRADE(NUMBER);BK"},
    {"C>O,BK(-1);", 2012, "TRADE(NUMBER);BK"},
    {"C>O,BK();", 2012, "TRADE(NUMBER);BK"},
    {"C>O,BP(X);", 2012, "TRADE(NUMBER);BP"},
    {"C>O,SPK,COLORRED;", 2012, "TRADE(NUMBER);SPK"},
    // The colour grows by one byte, so the word is looked for one byte too far to the right.
    {"RGB(1,2,3)>O,BK(2);", 2012, "TRADE(NUMBER);BK"},
    {"C>RGB(1,2,3)+RGB(1,2,4)+RGB(1,2,5)+RGB(1,2,6)+RGB(1,2,7),BK;", 4000,
     "invalid string position"},
};
INSTANTIATE_TEST_SUITE_P(Statements, Refused, testing::ValuesIn(refused));

TEST(Rewriters, AnEmptyConditionBeforeASignalInLowerCaseIsLeftToTheCompiler) {
  // Only the word in capitals is told as missing its subject.
  EXPECT_EQ(rewritten(",notice;").slots[0], "@NOTICE");
  EXPECT_EQ(rewritten(",bk;").slots[0], "@BK");
  EXPECT_EQ(rewritten(",BK(2);").slots[0], "@BK(2)");
}

TEST(Rewriters, TheFirstErrorStopsAllSlots) {
  TestHost host;
  const Report report = host.compile("A:NOBODY;\nSOUND('a');\nICON(1,'b');");
  EXPECT_EQ(report.code, 3);
  EXPECT_EQ(report.message, "SOUND");
  EXPECT_EQ(report.line, 1);
}

TEST(Utf16Length, CountsUnitsAndRefusesWhatIsNoUtf8) {
  EXPECT_EQ(quor::utf16_length("A\xC3\xA9"), 2U);
  EXPECT_EQ(quor::utf16_length("预警"), 2U);
  EXPECT_EQ(quor::utf16_length("😀"), 2U);
  EXPECT_EQ(quor::utf16_length("\xF4\x8F\xBF\xBF"), 2U);
  for (const char* invalid :
       {"\x80", "A\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
        "\xF8\x88\x80\x80", "\xE4\xB8\x41", "\x84\x80\x80\x80"}) {
    EXPECT_EQ(quor::utf16_length(invalid), 0U) << invalid;
  }
}

}  // namespace
}  // namespace quor_test
