#include "editor.h"

#include <algorithm>

#include "host/lsp/positions.h"

namespace quor_test {

Cursor cursor_in(std::string_view text) {
  const size_t at = text.find('|');
  Cursor cursor{std::string(text), 0, 0};
  cursor.script.erase(at, 1);
  const std::string_view before = text.substr(0, at);
  cursor.line = static_cast<size_t>(std::ranges::count(before, '\n'));
  cursor.character = at - (before.rfind('\n') + 1);
  return cursor;
}

Editor::Editor()
    : Editor(Json{{"capabilities",
                   {{"general", {{"positionEncodings", {"utf-16", "utf-8"}}}},
                    {"textDocument",
                     {{"completion", {{"completionItem", {{"snippetSupport", true}}}}}}}}}}) {}

Editor::Editor(const Json& initialize)
    : server_([this](const std::string& message) { messages.push_back(Json::parse(message)); }) {
  ask("initialize", initialize);
  notify("initialized", Json::object());
}

void Editor::notify(const std::string& method, const Json& params) {
  send(Json{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}}.dump());
}

Json Editor::ask(const std::string& method, const Json& params) {
  messages.clear();
  send(Json{{"jsonrpc", "2.0"}, {"id", ++last_id_}, {"method", method}, {"params", params}}.dump());
  if (messages.size() != 1 || messages[0].value("id", Json()) != Json(last_id_)) return "no answer";
  Json answer = messages[0];
  messages.clear();
  return answer;
}

Json Editor::ask_about(const std::string& method, Json params, size_t line, size_t character) {
  params["textDocument"] = {{"uri", main_script}};
  params["position"] = {{"line", line}, {"character", character}};
  const Json answer = ask("textDocument/" + method, params);
  return answer.contains("result") ? answer["result"] : answer;
}

void Editor::open(const std::string& script, const std::string& uri) {
  notify(
      "textDocument/didOpen",
      {{"textDocument", {{"uri", uri}, {"languageId", "quor"}, {"version", 1}, {"text", script}}}});
}

std::vector<std::string> Editor::findings(const std::string& uri) {
  messages.clear();
  server_.publish();
  std::vector<std::string> told;
  for (const Json& message : messages) {
    if (message["params"]["uri"] != uri) continue;
    for (const Json& diagnostic : message["params"]["diagnostics"]) {
      const Json& range = diagnostic["range"];
      told.push_back(range["start"]["line"].dump() + ':' + range["start"]["character"].dump() +
                     '-' + range["end"]["character"].dump() +
                     (diagnostic["severity"] == 1 ? " error: " : " warning: ") +
                     diagnostic["message"].get<std::string>());
    }
  }
  return told;
}

std::string edited(const std::string& script, const Json& answer) {
  // From the back, so that places in front stay.
  std::vector<Json> edits(answer.begin(), answer.end());
  std::ranges::sort(edits, [](const Json& a, const Json& b) {
    return std::pair(a["range"]["start"]["line"], a["range"]["start"]["character"]) >
           std::pair(b["range"]["start"]["line"], b["range"]["start"]["character"]);
  });
  std::string text = script;
  for (const Json& edit : edits) {
    const auto starts = quor_lsp::line_starts_of(text);
    const quor_lsp::Positions positions(text, starts, quor_lsp::Encoding::utf8);
    const auto place = positions.place_of(edit["range"]);
    text.replace(place.begin, place.end - place.begin, edit["newText"].get<std::string>());
  }
  return text;
}

}  // namespace quor_test
