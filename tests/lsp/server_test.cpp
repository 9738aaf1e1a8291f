// The language server by its messages: what an author sees in an editor, and what the protocol asks
// of a server whatever comes over the wire.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "advice/formatting.h"
#include "editor.h"
#include "host/lsp/document.h"

namespace quor_test {
namespace {

using Texts = std::vector<std::string>;

TEST(Lsp, tells_findings_of_the_text_as_it_is) {
  Editor editor;
  editor.open("A:EMMA(C,12);\nB:C,BOLD;\n");
  EXPECT_EQ(editor.findings(), (Texts{"0:2-6 error: nothing defines EMMA; did you mean EMA?",
                                      "1:4-8 warning: BOLD is no style item and has no effect; "
                                      "did you mean LINETHICK3?"}));
  EXPECT_EQ(editor.findings(), Texts{}) << "they are sent once";
  EXPECT_TRUE(editor.messages.empty());
  const auto change = [&editor](Json changes, int version) {
    editor.notify("textDocument/didChange",
                  {{"textDocument", {{"uri", Editor::main_script}, {"version", version}}},
                   {"contentChanges", std::move(changes)}});
  };
  const auto range = [](int line, int begin, int end) {
    return Json{{"start", {{"line", line}, {"character", begin}}},
                {"end", {{"line", line}, {"character", end}}}};
  };
  change(Json::array({{{"range", range(0, 3, 4)}, {"text", ""}},
                      {{"range", range(1, 3, 8)}, {"text", ""}}}),
         2);
  EXPECT_EQ(editor.findings(), Texts{});
  ASSERT_EQ(editor.messages.size(), 1U) << "no finding is said, too";
  EXPECT_EQ(editor.messages[0]["params"]["version"], 2);
  change(Json::array({{{"text", "A:MA(C"}}}), 3);
  EXPECT_EQ(editor.findings().size(), 1U);
  editor.notify("textDocument/didClose", {{"textDocument", {{"uri", Editor::main_script}}}});
  ASSERT_EQ(editor.messages.size(), 2U);
  EXPECT_EQ(editor.messages[1]["params"]["diagnostics"], Json::array());
}

TEST(Lsp, knows_what_a_host_would_set) {
  const auto findings_with = [](const Json& options) {
    Editor editor(Json{{"capabilities", Json::object()}, {"initializationOptions", options}});
    editor.open("A:\"MIN$1$CLOSE\";");
    return editor.findings().size();
  };
  EXPECT_EQ(findings_with(nullptr), 0U) << "any bars may be meant";
  EXPECT_EQ(findings_with({{"period", "day"}}), 1U);
  EXPECT_EQ(findings_with({{"period", "no period"}}), 0U);
  Editor editor(Json{{"capabilities", Json::object()},
                     {"initializationOptions", {{"parameters", {{"n", 5}}}}}});
  editor.open("A:MA(C,N);");
  EXPECT_EQ(editor.findings(), Texts{});
  EXPECT_EQ(editor.ask_about("hover", {}, 0, 7)["contents"]["value"],
            "A parameter of the script: 5.");
  editor.notify("workspace/didChangeConfiguration", {{"settings", Json::object()}});
  EXPECT_EQ(editor.ask_about("hover", {}, 0, 7)["contents"]["value"],
            "A parameter of the script: 5.");
  editor.notify("workspace/didChangeConfiguration",
                {{"settings", {{"quor", {{"parameters", Json::object()}}}}}});
  EXPECT_EQ(editor.findings().size(), 1U);
}

/// Both ends count a place in the units that they agreed on.
TEST(Lsp, counts_places_in_either_encoding) {
  const std::string script = "均线😀:C;A:均线😀+QQQQ;";
  const Json takes_both = {{"general", {{"positionEncodings", {"utf-8", "utf-16"}}}}};
  Editor bytes(Json{{"capabilities", takes_both}});
  bytes.open(script);
  EXPECT_EQ(bytes.findings(),
            Texts{"0:26-30 error: nothing defines QQQQ; declare it above, or as a "
                  "constant: CONST QQQQ:number;"});
  Editor units(Json{{"capabilities", Json::object()}});
  units.open(script);
  EXPECT_EQ(units.findings().at(0).substr(0, 8), "0:14-18 ");
  // The cursor in the middle of a character of two units stands in front of it.
  const Json definition = units.ask_about("definition", {}, 0, 12);
  EXPECT_EQ(definition["range"]["end"]["character"], 4);
}

TEST(Lsp, follows_any_change_of_a_text) {
  std::mt19937 random(5);
  const std::string pieces[] = {"a", "\n", "\r\n", "\r", "均", "😀", ";", "\xFF", "long text"};
  for (const auto encoding : {quor_lsp::Encoding::utf8, quor_lsp::Encoding::utf16}) {
    std::string text;
    quor_lsp::Document document("", 1, encoding);
    for (int round = 0; round < 2000; ++round) {
      // The place as the protocol writes it leads back to where it was taken from.
      const size_t first = text.empty() ? 0 : random() % (text.size() + 1);
      const size_t second = std::min(text.size(), first + random() % 5);
      const Json range = document.positions().range_of({first, second});
      const auto place = document.positions().place_of(range);
      ASSERT_LE(place.end, second);
      const std::string& piece = pieces[random() % std::size(pieces)];
      document.change({{"range", range}, {"text", piece}});
      text.replace(place.begin, place.end - place.begin, piece);
      ASSERT_EQ(document.text(), text);
      if (text.size() > 60) text = {}, document.change({{"text", ""}});
    }
  }
}

struct CompletionCase {
  std::string_view script;
  std::string_view offered;  ///< with blanks between them
  std::string_view not_offered;
};

std::set<std::string> words_of(std::string_view text) {
  std::istringstream stream{std::string(text)};
  return {std::istream_iterator<std::string>(stream), {}};
}

TEST(Lsp, completes_what_fits_the_place) {
  const CompletionCase cases[] = {
      {"|", "MA CLOSE CONST line DRAWTEXT", "COLORRED ICO1 NOTICE("},
      {"TOP:=HHV(H,9);A:T|", "TOP MA VOL", "DRAWTEXT COLORRED CONST A"},
      // A line reads those above it; a constant stands for the whole script.
      {"A:|;B:C;CONST N:5;", "N", "B A"},
      {"A:C,|", "COLORRED LINETHICK2 DOT NODRAW COLORSTICK", "MA CLOSE NOTICE"},
      {"C>O,|", "NOTICE BK ICON STICK COLORRED", "MA CLOSE"},
      {"A:C,RGB(1,|", "MA CLOSE", "LINETHICK2"},
      {"PARTLINE(C>O,C,|", "COLORRED CLOSE", "NOTICE"},
      {"DRAWICON(C>O,L,'|')", "ICO1 ICO33", "MA"},
      {"C>O,ICON(1,'|", "ICO1", "MA NEW"},
      {"DRAWLASTBARICON(H,'|')", "ICO1", "MA"},
      {"C>O,WORD(|", "1 0", "MA CLOSE ICO1"},
      {"C>O,SOUND('|", "A J", "K ICO1"},
      {"A:m|(C,5);", "MA", "line CONST"},
      {"A:GETPRICE('600000','|');", "NEW BID1", "MA ICO1"},
      {"A:\"600000$|\";", "CLOSE VOL", "MA"},
      {"A:\"|\";", "DAY$1$", "CLOSE"},
      {"DRAWTEXT(C>O,L,'M|", "", "MA"},
      {"A:C; // M|", "", "MA CLOSE"},
      {"{ M| }", "", "MA CLOSE"},
      {"A:C; { M|", "", "MA CLOSE"},
      {"{ M }|", "MA CLOSE", ""},
      {"A:12|", "", "MA CLOSE"},
  };
  for (const auto& [text, offered, not_offered] : cases) {
    Editor editor;
    const Cursor cursor = cursor_in(text);
    editor.open(cursor.script);
    std::set<std::string> labels;
    const Json answer = editor.ask_about("completion", {}, cursor.line, cursor.character);
    for (const Json& item : answer["items"]) {
      EXPECT_TRUE(labels.insert(item["label"]).second) << item["label"] << " twice in " << text;
    }
    for (const std::string& word : words_of(offered))
      EXPECT_TRUE(labels.contains(word)) << text << word;
    for (const std::string& word : words_of(not_offered))
      EXPECT_FALSE(labels.contains(word)) << text << word;
  }
}

/// What is written when an author takes a word.
std::string taken(Editor& editor, std::string_view text, std::string_view label) {
  const Cursor cursor = cursor_in(text);
  editor.open(cursor.script);
  const Json answer = editor.ask_about("completion", {}, cursor.line, cursor.character);
  for (const Json& item : answer["items"]) {
    if (item["label"] == label) return edited(cursor.script, Json::array({item["textEdit"]}));
  }
  return "not offered";
}

TEST(Lsp, writes_a_word_with_places_to_fill_in) {
  Editor editor;
  EXPECT_EQ(taken(editor, "A:m|", "MA"), "A:MA(${1:X}, ${2:N})");
  EXPECT_EQ(taken(editor, "A:m|(C,5);", "MA"), "A:MA(C,5);");
  EXPECT_EQ(taken(editor, "DRAWT|", "DRAWTEXT"), "DRAWTEXT(${1:COND}, ${2:PRICE}, '${3:TEXT}')");
  EXPECT_EQ(taken(editor, "A:C,c|,DOT;", "COLORRED"), "A:C,COLORRED,DOT;");
  EXPECT_EQ(taken(editor, "A:\"DAY|\";", "DAY$1$"), "A:\"DAY\\$1\\$\";");
  EXPECT_EQ(taken(editor, "A:DA|", "DAY"), "A:DAY");
  Editor plain(Json{{"capabilities", Json::object()}});
  EXPECT_EQ(taken(plain, "A:m|", "MA"), "A:MA");
}

struct HoverCase {
  std::string_view script;
  std::string_view told;  ///< part of it; nothing at all if empty
};

TEST(Lsp, explains_what_is_under_the_pointer) {
  const HoverCase cases[] = {
      {"A:M|A(C,5);", "Mean of the last N bars."},
      {"A:MA(|C,5);", "Bar field C, the same as CLOSE: the prices of the bar"},
      {"CONST N:5;A:MA(C,N|);", "A constant of the script: 5."},
      {"// how far\nX:=C-O;A:|X*2;", "how far"},
      {"X:C-O,COLORRED; // the gap\nA:|X*2;", "a line that is drawn: COLORRED"},
      {"X:=5;A:X|+C;", "It is 5 on every bar."},
      {"A:C,COLOR|RED;", "#CC3030"},
      {"A:C,LINETHICK|2;", "LINETHICK1 to LINETHICK9"},
      {"C>O,NOTIC|E('x');", "COND,NOTICE('NAME')"},
      {"C>O,IC|ON(1,'ICO1');", "a sign at the high"},
      {"C>O,ICON(1,'IC|O3');", "The sign B."},
      {"DRAWICON(C>O,L,|4);", "The sign S."},
      {"DRAWICON(C>O,L,|34);", ""},
      {"C>O,WORD(1,'IC|O3');", ""},
      {"A:C+|5;", ""},
      {"// M|A", ""},
      {"|", ""},
  };
  for (const auto& [text, told] : cases) {
    Editor editor;
    const Cursor cursor = cursor_in(text);
    editor.open(cursor.script);
    const Json answer = editor.ask_about("hover", {}, cursor.line, cursor.character);
    if (told.empty()) {
      EXPECT_TRUE(answer.is_null()) << text << answer;
    } else {
      const auto value = answer["contents"]["value"].get<std::string>();
      EXPECT_NE(value.find(told), std::string::npos) << text << '\n' << value;
    }
  }
}

TEST(Lsp, shows_which_argument_is_written) {
  const auto shown = [](std::string_view text) {
    Editor editor;
    const Cursor cursor = cursor_in(text);
    editor.open(cursor.script);
    const Json help = editor.ask_about("signatureHelp", {}, cursor.line, cursor.character);
    if (help.is_null()) return std::string("none");
    const Json& form = help["signatures"][help["activeSignature"].get<size_t>()];
    const Json& argument = form["parameters"][help["activeParameter"].get<size_t>()];
    const auto begin = argument["label"][0].get<size_t>();
    const auto end = argument["label"][1].get<size_t>();
    return form["label"].get<std::string>() + ' ' +
           form["label"].get<std::string>().substr(begin, end - begin) + ": " +
           argument["documentation"].get<std::string>();
  };
  EXPECT_EQ(shown("A:MA(|"), "MA(X,N) X: the series");
  EXPECT_EQ(shown("A:MA(C,|);B:C;"), "MA(X,N) N: the period");
  EXPECT_EQ(shown("A:MA(REF(C,1),|5);"), "MA(X,N) N: the period");
  EXPECT_EQ(shown("A:MA((C+|O)/2,5);"), "MA(X,N) X: the series");
  EXPECT_EQ(shown("A:LOG(C,|"), "LOG(X,B) B: the base");
  EXPECT_EQ(shown("A:LOG(|C)"), "LOG(X) X: a number above 0");
  EXPECT_EQ(shown("C>O,NOTICE('u|"), "COND,NOTICE('NAME') 'NAME': 1 to 10 characters");
  EXPECT_EQ(shown("C>O,WORD(|1,'up');"),
            "COND,WORD(SIDE,'TEXT') SIDE: 1 at the high, 0 at the low");
  EXPECT_EQ(shown("C>O,ICON(1,|"), "COND,ICON(SIDE,'ICO3') 'ICO3': one of 33 signs");
  EXPECT_EQ(shown("A:MA(C,5)|;"), "none");
  EXPECT_EQ(shown("A:(C+|O);"), "none");
}

TEST(Lsp, leads_between_a_name_and_its_uses) {
  const Cursor cursor = cursor_in("a:=C;\nB:A+a*MA(A|,5); // a\nDRAWTEXT(B>A,L,'A');\n");
  Editor editor;
  editor.open(cursor.script);
  const Json definition = editor.ask_about("definition", {}, cursor.line, cursor.character);
  EXPECT_EQ(definition["range"]["start"], (Json{{"line", 0}, {"character", 0}}));
  const auto count = [&](bool with_declaration) {
    return editor
        .ask_about("references", {{"context", {{"includeDeclaration", with_declaration}}}},
                   cursor.line, cursor.character)
        .size();
  };
  EXPECT_EQ(count(true), 5U);
  EXPECT_EQ(count(false), 4U);
  const Json renamed =
      editor.ask_about("rename", {{"newName", "gap"}}, cursor.line, cursor.character);
  EXPECT_EQ(edited(cursor.script, renamed["changes"][Editor::main_script]),
            "gap:=C;\nB:gap+gap*MA(gap,5); // a\nDRAWTEXT(B>gap,L,'A');\n");
  const auto refusal = [&](const char* name) {
    return editor
        .ask_about("rename", {{"newName", name}}, cursor.line, cursor.character)["error"]["message"]
        .get<std::string>();
  };
  EXPECT_EQ(refusal("ma"), "MA is a word of the language");
  EXPECT_EQ(refusal("close"), "CLOSE is a bar field");
  EXPECT_EQ(refusal("b"), "the script has a B already");
  EXPECT_EQ(refusal("A B"),
            "a name is made of letters, digits and _, and begins with none of the digits");
  EXPECT_EQ(refusal("5A"), refusal(""));
  EXPECT_TRUE(editor.ask_about("prepareRename", {}, 1, 7).is_null()) << "a word of the language";
}

TEST(Lsp, outlines_a_script) {
  Editor editor;
  editor.open("// one\n// two\nCONST N:5;\nmid:=MA(C,\n  N);\nB:mid,COLORRED;\n{ a\n b }\n");
  std::string outline;
  for (const Json& symbol : editor.ask_about("documentSymbol"))
    outline += symbol["name"].get<std::string>() + '=' + symbol["detail"].get<std::string>() + ' ';
  EXPECT_EQ(outline, "N=5 mid=MA(C, N) B=mid ");
  EXPECT_EQ(editor.ask_about("foldingRange"),
            Json::parse(R"([{"startLine":0,"endLine":1,"kind":"comment"},
                            {"startLine":3,"endLine":4},
                            {"startLine":6,"endLine":7,"kind":"comment"}])"));
}

TEST(Lsp, shows_and_writes_colours) {
  Editor editor;
  editor.open("A:C,COLORRED;B:C,RGB(255,0,51);D:C,COLORAUTO;E:C,COLORff8000;F:C,COLORSTICK;");
  std::string shown;
  for (const Json& colour : editor.ask_about("documentColor")) {
    const Json& parts = colour["color"];
    shown += colour["range"]["start"]["character"].dump();
    for (const char* const key : {"red", "green", "blue"})
      shown += ' ' + std::to_string(std::lround(parts[key].get<double>() * 255));
    shown += "; ";
  }
  EXPECT_EQ(shown, "4 204 48 48; 17 255 0 51; 49 255 128 0; ");
  const Json place = {{"start", {{"line", 0}, {"character", 4}}},
                      {"end", {{"line", 0}, {"character", 12}}}};
  const auto texts = [&](double red, double green, double blue) {
    std::string all;
    for (const Json& text : editor.ask_about(
             "colorPresentation",
             {{"color", {{"red", red}, {"green", green}, {"blue", blue}, {"alpha", 1}}},
              {"range", place}}))
      all += text["label"].get<std::string>() + "; ";
    return all;
  };
  EXPECT_EQ(texts(1, 0.5, 0), "COLORFF8000; RGB(255, 128, 0); ");
  EXPECT_EQ(texts(0, 0, 0), "COLORBLACK; COLOR000000; RGB(0, 0, 0); ");
}

TEST(Lsp, shades_words_by_what_they_are) {
  Editor editor;
  editor.open("CONST N:5; { a\nb }\nA:MA(C,N)>1 AND A<>'x',COLORRED;\nA,BK(2);");
  const Json legend = editor.ask("initialize", Json::object());
  EXPECT_EQ(legend["error"]["code"], -32600) << "a second beginning";
  const Json kinds = quor_lsp::semantic_legend()["tokenTypes"];
  const Json data = editor.ask_about("semanticTokens/full")["data"];
  std::string shades;
  size_t line = 0;
  size_t character = 0;
  for (size_t i = 0; i + 4 < data.size(); i += 5) {
    if (data[i] != 0) character = 0;
    line += data[i].get<size_t>();
    character += data[i + 1].get<size_t>();
    shades += std::to_string(line) + ':' + std::to_string(character) + '+' + data[i + 2].dump() +
              ' ' + kinds[data[i + 3].get<size_t>()].get<std::string>() + '/' + data[i + 4].dump() +
              "; ";
  }
  EXPECT_EQ(shades,
            "0:0+5 keyword/0; 0:6+1 variable/3; 0:8+1 number/0; 0:11+3 comment/0; "
            "1:0+3 comment/0; 2:0+1 variable/1; 2:2+2 function/4; 2:5+1 property/4; "
            "2:7+1 variable/2; 2:9+1 operator/0; 2:10+1 number/0; 2:12+3 keyword/0; "
            "2:16+1 variable/0; 2:17+2 operator/0; 2:19+3 string/0; 2:23+8 enumMember/4; "
            "3:0+1 variable/0; 3:2+2 function/4; 3:5+1 number/0; ");
}

TEST(Lsp, formats_what_is_written_otherwise) {
  const std::string scripts[] = {
      "A:C;B:O;\nD : H;\n", "A : C;\nB:O;\nD : H;\n", "A : C;\n", "A:C", "",
      "A:C;\r\nB:O;\r\n",   "A : C;\n\n\n\nB : O;"};
  for (const std::string& script : scripts) {
    Editor editor;
    editor.open(script);
    const Json edits = editor.ask_about("formatting", {{"options", Json::object()}});
    EXPECT_EQ(edited(script, edits), quor_advice::format_script(script).text) << script;
  }
  Editor editor;
  editor.open(scripts[1]);
  const Json edits = editor.ask_about("formatting", {{"options", Json::object()}});
  EXPECT_EQ(edits[0]["range"]["start"]["line"], 1) << "what stays isn't written";
  EXPECT_EQ(edits[0]["range"]["end"]["line"], 2);
}

/// The script after the first quick fix of its first finding.
std::string mended(const std::string& script) {
  Editor editor;
  editor.open(script);
  const Json whole = {{"start", {{"line", 0}, {"character", 0}}},
                      {"end", {{"line", 99}, {"character", 0}}}};
  const Json actions = editor.ask_about("codeAction", {{"range", whole}});
  if (actions.empty()) return "no fix";
  return edited(script, actions[0]["edit"]["changes"][Editor::main_script]);
}

TEST(Lsp, mends_what_it_finds) {
  EXPECT_EQ(mended("A:EMMA(C,12);"), "A:EMA(C,12);");
  EXPECT_EQ(mended("A:C;\nB:MA(C,5)"), "A:C;\nB:MA(C,5);");
  // What the mistake has hidden comes to light afterwards.
  EXPECT_EQ(mended("A:EMMA(C,12),BOLD;"), "A:EMA(C,12),BOLD;");
  EXPECT_EQ(mended("A:MA(5,C);"), "A:MA(C,5);");
  EXPECT_EQ(mended("A:C COLORRED;"), "A:C ,COLORRED;");
  EXPECT_EQ(mended("A:C,1;"), "A:C;");
  EXPECT_EQ(mended("A:'text';"), "no fix");
  EXPECT_EQ(mended("A:MA(C,5)\nB:C;"), "A:MA(C,5);\nB:C;");
  EXPECT_EQ(mended("A:MA(C,5)*X;"), "CONST X : 5;\nA:MA(C,5)*X;");
  EXPECT_EQ(mended("B:C;\r\nA:CROSS(C,MA5);\r\n"), "B:C;\r\nMA5:=MA(C,5);\r\nA:CROSS(C,MA5);\r\n");
}

TEST(Lsp, lives_through_whatever_comes) {
  Editor editor;
  editor.open("A:MA(C,5);\n");
  const std::string broken[] = {"",
                                "{",
                                "null",
                                "[]",
                                "5",
                                "\"text\"",
                                "{\"id\":1}",
                                "\xFF\xFE",
                                "{\"method\":5,\"id\":1}",
                                "{\"method\":\"x\",\"id\":{}}",
                                "[{\"method\":\"shutdown\",\"id\":1}]",
                                std::string(100000, '[')};
  for (const std::string& message : broken) {
    editor.messages.clear();
    editor.send(message);
    ASSERT_EQ(editor.messages.size(), 1U) << message.substr(0, 40);
    EXPECT_TRUE(editor.messages[0].contains("error"));
  }
  const std::string nested = std::string(200000, '[') + std::string(200000, ']');
  for (const char* const method : {"completionItem/resolve", "textDocument/hover", "initialize"}) {
    editor.messages.clear();
    editor.send(R"({"jsonrpc":"2.0","id":0,"method":")" + std::string(method) +
                R"(","params":{"label":)" + nested + "}}");
    ASSERT_EQ(editor.messages.size(), 1U) << method;
    EXPECT_TRUE(editor.messages[0].contains("error")) << method;
  }
  EXPECT_EQ(editor.ask("no/such", nullptr)["error"]["code"], -32601);
  EXPECT_EQ(editor.ask_about("hover", {}, 99999999, 7), nullptr);
  // Any request and notification with parameters of any kind.
  const Json values[] = {nullptr,
                         5,
                         -1,
                         "text",
                         Json::array(),
                         Json::object(),
                         1e300,
                         true,
                         {{"uri", Editor::main_script}},
                         {{"line", -5}, {"character", -5}},
                         {{"start", 1}, {"end", {}}},
                         UINT64_MAX};
  const char* const keys[] = {"textDocument",   "position", "range",    "newName", "color",
                              "contentChanges", "context",  "settings", "label"};
  const char* const methods[] = {"completion",    "hover",         "signatureHelp",
                                 "definition",    "references",    "documentHighlight",
                                 "prepareRename", "rename",        "documentSymbol",
                                 "foldingRange",  "documentColor", "colorPresentation",
                                 "formatting",    "codeAction",    "semanticTokens/full",
                                 "didChange",     "didClose",      "didOpen"};
  std::mt19937 random(3);
  for (const char* const method : methods) {
    for (int round = 0; round < 100; ++round) {
      Json params = Json::object();
      for (const char* const key : keys) {
        if (random() % 2 == 0) params[key] = values[random() % std::size(values)];
      }
      const std::string name = std::string("textDocument/") + method;
      if (std::string_view(method).starts_with("did")) {
        editor.notify(name, params);
      } else {
        const Json answer = editor.ask(name, params);
        ASSERT_TRUE(answer.is_object()) << name << params;
        EXPECT_TRUE(answer.contains("result") != answer.contains("error")) << name << params;
      }
      editor.server().publish();
    }
  }
  editor.open("A:MA(C,5);\n");
  EXPECT_FALSE(editor.ask_about("hover", {}, 0, 3).is_null()) << "it still answers";
}

TEST(Lsp, begins_and_ends_as_the_protocol_says) {
  Json last;
  quor_lsp::Server server([&last](const std::string& message) { last = Json::parse(message); });
  const auto ask = [&](const char* method) {
    server.take(Json{{"jsonrpc", "2.0"}, {"id", "a"}, {"method", method}, {"params", {}}}.dump());
    return last;
  };
  EXPECT_EQ(ask("textDocument/hover")["error"]["code"], -32002);
  EXPECT_TRUE(ask("initialize")["result"]["capabilities"]["hoverProvider"]);
  EXPECT_EQ(last["id"], "a");
  EXPECT_FALSE(server.exit_status().has_value());
  EXPECT_EQ(ask("shutdown")["result"], nullptr);
  EXPECT_EQ(ask("shutdown")["error"]["code"], -32600);
  server.take(R"({"jsonrpc":"2.0","method":"exit"})");
  EXPECT_EQ(server.exit_status(), 0);
  quor_lsp::Server left([](const std::string&) {});
  left.take(R"({"jsonrpc":"2.0","method":"exit"})");
  EXPECT_EQ(left.exit_status(), 1);
}

}  // namespace
}  // namespace quor_test
