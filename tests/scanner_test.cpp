// The scanner: what a slot holds, where slots begin, and the codes for unfinished sources.
#include "compiler/scanner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quor {
namespace {

struct Scan {
  int32_t code;
  std::vector<std::string> slots;
  std::string error;
};

Scan scan(std::string source) {
  Scan result;
  result.code = error_code(split_statements(source, result.slots, result.error));
  return result;
}

using Slots = std::vector<std::string>;

TEST(Scanner, EncodesSigns) {
  const struct {
    const char* source;
    const char* slot;
  } cases[] = {
      {"A: 1 - 2;", "A:1?2"},
      {"A: -1;", "A:^1"},
      {"A: 3 - -2;", "A:3?^2"},
      {"A: +1;", "A:`1"},
      {"A: (B) - C;", "A:(B)?C"},
      {"A:0-9-A-Z-a-z-1;", "A:0?9?A?Z?a?z?1"},
      {"A: B\t- C;", "A:B^C"},
      {"A:1/*c*/-2;", "A:1^2"},
      {"A:1{c}-2;", "A:1?2"},
      {"'X'-1;", "'X'^1"},
      {"A==1;", "A=1"},
      {"A===1;", "A=1"},
      {"A!=1;", "A!1"},
      {"A=!B;", "A=!B"},
      {"A<=1>=2:=3;", "A<=1>=2:=3"},
      {"a and b OR c;", "a&&b||c"},
      {"A\tAND B;", "AANDB"},
      {"MA 5;", "MA5"},
      {"A\xC2\xA0+1;", "A+1"},
      {"const   N:5;", "const N:5"},
      {"CONSTN:5;", "CONSTN:5"},
      {"'a,b - c';", "'a,b - c'"},
      {"\"x - y\"+1;", "\"x - y\"`1"},
      {"' AND ';", "'&&'"},
      {"A:1*/+2};", "A:1+2"},
      {"均线-1;", "均线?1"},
  };
  for (const auto& [source, slot] : cases) {
    const Scan result = scan(source);
    EXPECT_EQ(result.code, 0) << source;
    EXPECT_EQ(result.slots, Slots{slot}) << source;
  }
}

TEST(Scanner, KeepsOneSlotPerLine) {
  const struct {
    const char* source;
    Slots slots;
  } cases[] = {
      {"A:1;\nB:2;\n", {"A:1", "B:2"}},
      {"A:1;\r\n\r\nB:2;", {"A:1", "", "B:2"}},
      {"A:1;B:2;\nC:3;", {"A:1", "B:2", "C:3"}},
      {"A:1+\n2;\nB:3;", {"A:1+2", "B:3"}},
      {"// note\nA:1;", {"", "A:1"}},
      {"\n\n\n", {"", "", ""}},
      {"{a\nb\nc}A:1;", {"", "", "A:1"}},
      {";;", {"", ""}},
      {"A:1; // end\nB:2;", {"A:1", "B:2"}},
      {"A:1;{end", {"A:1"}},
      {"  \t ", {}},
      {"/*c*/", {}},
      {"", {}},
  };
  for (const auto& [source, slots] : cases) {
    const Scan result = scan(source);
    EXPECT_EQ(result.code, 0) << source;
    EXPECT_EQ(result.slots, slots) << source;
  }
}

TEST(Scanner, RefusesUnfinishedSources) {
  const struct {
    const char* source;
    int32_t code;
    const char* error;
  } cases[] = {
      {"A:1", 14, "ErrLine.0"},
      {"A:1\n", 14, "ErrLine.0"},
      {"A:1 // note\n;", 14, "ErrLine.0"},
      {"A:1;\nB:2", 14, "ErrLine.1"},
      {"A:1;/*c*/", 14, "ErrLine.1"},
      {"{ it's }", 5, "ErrLine.0"},
      {"\"it's\"", 5, "ErrLine.0"},
      {"A:'x;\n", 5, "ErrLine.0"},
  };
  for (const auto& [source, code, error] : cases) {
    const Scan result = scan(source);
    EXPECT_EQ(result.code, code) << source;
    EXPECT_EQ(result.error, error) << source;
  }
}

}  // namespace
}  // namespace quor
