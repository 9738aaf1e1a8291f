// References to other securities, other periods and realtime quotes.
#include "compiler/data_references.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/test_host.h"

namespace quor_test {
namespace {

using Keys = std::vector<std::string>;

constexpr uint32_t fifteen_seconds = 0x310F;
constexpr uint32_t five_minutes = 0x3005;
constexpr uint32_t one_hour = 0x303C;
constexpr uint32_t one_day = 0x4000;
constexpr uint32_t one_week = 0x5001;
constexpr uint32_t no_class_code = 0xFFFFFFFE;  ///< gives the instance a class that bars no period

TEST(DataReferences, ALineReadsTheColumnOfItsReference) {
  TestHost host;
  const Report report = host.compile(R"(A:"sh600000$close";B:=A*2;)");
  ASSERT_EQ(report.code, 0) << report.text;
  // The code keeps its case; 11 is the field of CLOSE, 20000 the first id of a compile.
  EXPECT_EQ(report.cross_security, Keys{"sh600000|11|20000"});
  EXPECT_EQ(report.cross_period, Keys{});
  EXPECT_EQ(report.realtime, Keys{});
  EXPECT_EQ(host.id_of("A"), 20000);
  host.feed({{"20000", {1, 2, 3}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("A"), {1, 2, 3}));
  EXPECT_TRUE(same(host.line("B"), {2, 4, 6}));
}

TEST(DataReferences, ASignBehindTheQuoteIsBinary) {
  TestHost host;
  const Report report =
      host.compile(R"(A:="600000$CLOSE"+1;B:="600000$OPEN"-1;D:="MONTH$1$C"-O;E:C="1$C"-1;)");
  ASSERT_EQ(report.code, 0) << report.text;
  // The references take the first ids in the order of the statements.
  host.feed(
      {{"20000", {5}}, {"20001", {7}}, {"20002", {4}}, {"20003", {11}}, {"O", {1}}, {"C", {10}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("A"), {6}));
  EXPECT_TRUE(same(host.line("B"), {6}));
  EXPECT_TRUE(same(host.line("D"), {3}));
  EXPECT_TRUE(same(host.line("E"), {1}));  // 10 = 11 - 1
}

TEST(DataReferences, EqualReferencesAreDeliveredIntoColumnsOfTheirOwn) {
  TestHost host;
  const Report report = host.compile(R"(A:"600000$CLOSE";B:"600000$CLOSE";)");
  ASSERT_EQ(report.code, 0);
  EXPECT_EQ(report.cross_security, (Keys{"600000|11|20000", "600000|11|20001"}));
}

struct PeriodCase {
  uint32_t period;
  const char* reference;
  int code;
  const char* key;  ///< of a reference that passes
};

class PeriodReference : public testing::TestWithParam<PeriodCase> {};

TEST_P(PeriodReference, MustBeLongerThanTheInstance) {
  const PeriodCase& wanted = GetParam();
  TestHost host;
  host.set_info(wanted.period, "600000", "USHA");
  const Report report = host.compile("\nA:\"" + std::string(wanted.reference) + "\";");
  EXPECT_EQ(report.code, wanted.code) << wanted.reference;
  EXPECT_EQ(report.message, "");
  EXPECT_EQ(report.line, wanted.code == 0 ? 0 : 1);
  EXPECT_EQ(report.cross_period, wanted.code == 0 ? Keys{wanted.key} : Keys{});
}

constexpr PeriodCase period_cases[] = {
    {fifteen_seconds, "MIN$1$CLOSE", 0, "MIN1|11|20000"},
    {five_minutes, "min$10$close", 0, "MIN10|11|20000"},
    {five_minutes, "MIN$5$CLOSE", 2009, ""},
    {five_minutes, "MIN$1$CLOSE", 2009, ""},
    {five_minutes, "HOUR$1$OPEN", 0, "HOUR1|7|20000"},
    {five_minutes, "DAY$1$CLOSE", 0, "DAY1|11|20000"},
    // An hour bar is sixty units of the class of minutes.
    {one_hour, "MIN$30$CLOSE", 2009, ""},
    {one_hour, "HOUR$1$CLOSE", 0, "HOUR1|11|20000"},
    {one_day, "HOUR$4$CLOSE", 2009, ""},
    {one_day, "DAY$1$CLOSE", 2009, ""},
    {one_day, "WEEK$1$CLOSE", 0, "WEEK1|11|20000"},
    {one_week, "DAY$1$CLOSE", 2009, ""},
    {one_week, "WEEK$1$CLOSE", 2009, ""},
    {one_week, "MONTH$1$CLOSE", 0, "MONTH1|11|20000"},
    {no_class_code, "MIN$1$CLOSE", 0, "MIN1|11|20000"},
    {five_minutes, "SEC$1$CLOSE", 2007, ""},
    {five_minutes, "$1$CLOSE", 2007, ""},
    {five_minutes, "MIN$7$CLOSE", 2008, ""},
    {five_minutes, "MIN$010$CLOSE", 2008, ""},
    {five_minutes, "DAY$2$CLOSE", 2008, ""},
    {five_minutes, "MIN$$CLOSE", 2008, ""},
    {five_minutes, "MIN$1$1$CLOSE", 2008, ""},
    {five_minutes, "DAY$1$XYZ", 2010, ""},
    // A period that is too short is told before a field that is unknown.
    {five_minutes, "MIN$1$XYZ", 2009, ""},
};
INSTANTIATE_TEST_SUITE_P(Periods, PeriodReference, testing::ValuesIn(period_cases));

TEST(DataReferences, RealtimeReferences) {
  TestHost host;
  host.set_info(one_day, "600036", "USHA");
  const Report report =
      host.compile("A:GETPRICE('NEW');B:getstockprice('sz000001','open')+1;GETPRICE(NEW)>1;");
  ASSERT_EQ(report.code, 0) << report.text;
  EXPECT_EQ(report.realtime, (Keys{"600036|10|20000", "sz000001|7|20001", "600036|10|20002"}));
  host.feed({{"20000", {3, 4}}, {"20001", {5, 6}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("A"), {3, 4}));
  EXPECT_TRUE(same(host.line("B"), {6, 7}));
}

TEST(DataReferences, ASecondRealtimeReferenceInAStatementStays) {
  TestHost host;
  const Report both = host.compile("A:GETPRICE(NEW)+GETSTOCKPRICE(OPEN);");
  // The arguments of the first run up to the last ")" of the statement.
  EXPECT_EQ(both.code, 2002);
  EXPECT_EQ(both.message, "GETPRICE.NEW)+GETSTOCKPRICE(OPEN");
}

struct RefusedCase {
  const char* statement;
  int code;
  const char* message;
};

class RefusedReference : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedReference, WithCodeMessageAndLine) {
  TestHost host;
  const Report report = host.compile("\n\n" + std::string(GetParam().statement) + ";");
  EXPECT_EQ(report.code, GetParam().code) << GetParam().statement;
  EXPECT_EQ(report.message, GetParam().message) << GetParam().statement;
  EXPECT_EQ(report.line, GetParam().code == 4000 ? 0 : 2) << GetParam().statement;
  EXPECT_EQ(report.cross_security, Keys{});
}

constexpr RefusedCase refused[] = {
    {R"("600000$CLOSE")", 9, ""},
    {R"(A:1+"600000$CLOSE")", 9, ""},
    {R"(A:"600000")", 10, "$"},
    {R"(A:"")", 10, "$"},
    {R"(A:"$CLOSE")", 11, ""},
    {R"(A:"600000$XYZ")", 2010, ""},
    {R"(A:"600000$")", 2010, ""},
    // What stands between the outermost quotes is one reference.
    {R"(A:"600000$CLOSE"+"600001$CLOSE")", 2007, ""},
    {"A:GETPRICE", 6, "GETPRICE"},
    {"A:GETPRICE('NEW'", 6, "GETPRICE"},
    {"A:GETSTOCKPRICE)(", 6, "GETSTOCKPRICE"},
    {"A:GETPRICE()", 7, "GETPRICE"},
    {"A:GETPRICE('600000','NEW','X')", 7, "GETPRICE"},
    {"A:GETSTOCKPRICE('600000','close')", 2002, "GETSTOCKPRICE.CLOSE"},
    // The last ")" of the statement closes the arguments.
    {"A:GETPRICE('NEW')+MA(C,5)", 2002, "GETPRICE.5"},
    // The first style grows, so that the reference is read behind the end of what was written.
    {"RGB(1,2,3)+RGB(1,2,4)+GETPRICE", 4000, "invalid string position"},
};
INSTANTIATE_TEST_SUITE_P(Statements, RefusedReference, testing::ValuesIn(refused));

TEST(DataReferences, ASingleDoubleQuoteIsOpen) {
  quor::DataPoolCenter pool;
  quor::CalculateCenter calculator(pool);
  quor::CompileContext context(pool, calculator);
  std::string slot = "A:\"600000$CLOSE";
  std::string error;
  const quor::Status status = quor::resolve_quoted_reference(context, slot, {4, error});
  EXPECT_EQ(status, quor::Status::quote_open);
  EXPECT_EQ(error, "ErrLine.4");
}

TEST(DataReferences, AChangedScriptDoesNotReadTheColumnOfTheOneBefore) {
  TestHost host;
  ASSERT_EQ(host.compile(R"(A:"600000$CLOSE";)").code, 0);
  // A's reference is the second one now and has another column.
  const Report report = host.compile(R"(B:"600000$OPEN";A:"600000$CLOSE";)");
  ASSERT_EQ(report.cross_security, (Keys{"600000|7|20000", "600000|11|20001"}));
  host.feed({{"20000", {1, 2}}, {"20001", {3, 4}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("A"), {3, 4}));
  EXPECT_TRUE(same(host.line("B"), {1, 2}));

  // Without its reference the word is unknown, and free to be declared.
  EXPECT_EQ(host.compile("D:=CROSSSECA;").code, 2);
  EXPECT_EQ(host.compile("CROSSSECA:=1;").code, 0);
}

TEST(DataReferences, AFieldOfTheHostWithTheWordOfAReferenceStays) {
  // Declared fields are known to the whole process, so the word is one that no other test uses.
  TestHost host;
  host.declare_field("CROSSSECHOSTFIELD", 901);
  ASSERT_EQ(host.compile(R"(A:"600000$CLOSE";)").code, 0);
  const Report report = host.compile("B:=CROSSSECHOSTFIELD;");
  ASSERT_EQ(report.code, 0) << report.text;
  EXPECT_EQ(report.fields, std::vector<int64_t>{901});
  host.feed({{"901", {8, 9}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("B"), {8, 9}));
}

TEST(DataReferences, AFieldDeclaredBehindAReferenceIsNotTakenForTheNextReference) {
  // The field moved up in the list when the reference went and kept a hidden name that the next
  // reference got, too.
  TestHost host;
  ASSERT_EQ(host.compile(R"(A:"600000$CLOSE";)").code, 0);
  const std::string late = new_word("LATEHOSTFIELD");
  host.declare_field(late, 902);
  const Report report = host.compile(R"(A:"600000$CLOSE";B:=)" + late + ";");
  ASSERT_EQ(report.code, 0) << report.text;
  host.feed({{"20000", {1, 2}}, {"902", {3, 4}}});
  ASSERT_EQ(host.run(), success);
  EXPECT_TRUE(same(host.line("A"), {1, 2}));
  EXPECT_TRUE(same(host.line("B"), {3, 4}));
}

}  // namespace
}  // namespace quor_test
