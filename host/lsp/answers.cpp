#include "answers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "advice/call_forms.h"
#include "advice/colours.h"
#include "advice/formatting.h"
#include "advice/highlight.h"
#include "advice/hover.h"
#include "advice/letters.h"
#include "advice/symbols.h"

namespace quor_lsp {
namespace {

using quor_advice::Place;

// Numbers of the protocol.
enum SymbolNumber { symbol_field = 8, symbol_variable = 13, symbol_constant = 14 };
enum SeverityNumber { severity_error = 1, severity_warning = 2 };

Json markdown(const std::string& text) { return {{"kind", "markdown"}, {"value", text}}; }

Json location(const Asked& asked, Place place) {
  return {{"uri", asked.uri}, {"range", asked.document.positions().range_of(place)}};
}

std::string message_of(const quor_advice::Finding& finding) {
  return finding.suggestion.empty() ? finding.sentence
                                    : finding.sentence + "; " + finding.suggestion;
}

Json diagnostic(const quor_advice::Finding& finding, Place place, const Positions& positions) {
  const bool is_error = finding.severity == quor_advice::Severity::error;
  Json json = {{"range", positions.range_of(place)},
               {"severity", is_error ? severity_error : severity_warning},
               {"source", "quor"},
               {"message", message_of(finding)}};
  if (finding.code != 0) json["code"] = finding.code;
  return json;
}

Json edit_of_workspace(const Asked& asked, Json edits) {
  Json changes = Json::object();
  changes[asked.uri] = std::move(edits);
  return {{"changes", std::move(changes)}};
}

bool touches(Place a, Place b) { return a.begin <= b.end && b.begin <= a.end; }

}  // namespace

Json hover(const Asked& asked) {
  const auto hover = quor_advice::hover_at(asked.reading(), asked.offset());
  if (!hover) return nullptr;
  return {{"contents", markdown(hover->markdown)},
          {"range", asked.document.positions().range_of(hover->place)}};
}

Json signature_help(const Asked& asked) {
  const auto hint = quor_advice::call_hint_at(asked.reading(), asked.offset());
  if (!hint) return nullptr;
  Json signatures = Json::array();
  for (const quor_advice::CallForm& form : hint->forms) {
    Json parameters = Json::array();
    for (const Place& place : form.arguments) {
      const std::string_view name = form.text.substr(place.begin, place.end - place.begin);
      parameters.push_back({{"label", {place.begin, place.end}},
                            {"documentation", quor_advice::argument_help(*hint->help, name)}});
    }
    signatures.push_back({{"label", form.text},
                          {"documentation", hint->help->summary},
                          {"parameters", std::move(parameters)}});
  }
  return {{"signatures", std::move(signatures)},
          {"activeSignature", hint->form},
          {"activeParameter", hint->argument}};
}

Json definition(const Asked& asked) {
  const auto name = quor_advice::name_at(asked.reading(), asked.offset());
  if (!name) return nullptr;
  const auto symbols = quor_advice::symbols_of(asked.reading());
  const auto* const symbol = quor_advice::find_symbol(symbols, name->name);
  return symbol == nullptr ? Json(nullptr) : location(asked, symbol->place);
}

Json references(const Asked& asked) {
  Json found = Json::array();
  const auto name = quor_advice::name_at(asked.reading(), asked.offset());
  if (!name) return found;
  const bool with_declaration =
      asked.params.value("context", Json::object()).value("includeDeclaration", true);
  const auto symbols = quor_advice::symbols_of(asked.reading());
  const auto* const symbol = quor_advice::find_symbol(symbols, name->name);
  for (const Place place : quor_advice::places_of(asked.reading(), name->name)) {
    const bool is_declaration = symbol != nullptr && symbol->place.begin == place.begin;
    if (with_declaration || !is_declaration) found.push_back(location(asked, place));
  }
  return found;
}

Json occurrences(const Asked& asked) {
  Json found = Json::array();
  const auto name = quor_advice::name_at(asked.reading(), asked.offset());
  if (!name) return found;
  for (const Place place : quor_advice::places_of(asked.reading(), name->name))
    found.push_back({{"range", asked.document.positions().range_of(place)}});
  return found;
}

Json prepared_rename(const Asked& asked) {
  const auto name = quor_advice::name_at(asked.reading(), asked.offset());
  if (!name) return nullptr;
  const auto symbols = quor_advice::symbols_of(asked.reading());
  if (quor_advice::find_symbol(symbols, name->name) == nullptr) return nullptr;
  return {{"range", asked.document.positions().range_of(name->place)},
          {"placeholder",
           asked.document.text().substr(name->place.begin, name->place.end - name->place.begin)}};
}

Json renamed(const Asked& asked) {
  const auto other = asked.params.at("newName").get<std::string>();
  const auto name = quor_advice::name_at(asked.reading(), asked.offset());
  if (!name) throw Refusal{"there is no name of the script here"};
  const std::string fault = quor_advice::rename_fault(asked.reading(), name->name, other);
  if (!fault.empty()) throw Refusal{fault};
  Json edits = Json::array();
  for (const Place place : quor_advice::places_of(asked.reading(), name->name)) {
    edits.push_back({{"range", asked.document.positions().range_of(place)}, {"newText", other}});
  }
  return edit_of_workspace(asked, std::move(edits));
}

Json symbols(const Asked& asked) {
  constexpr std::array numbers = {symbol_field, symbol_variable, symbol_constant};
  Json found = Json::array();
  const Positions positions = asked.document.positions();
  for (const quor_advice::Symbol& symbol : quor_advice::symbols_of(asked.reading())) {
    const auto& statement = asked.reading().statements[symbol.statement];
    found.push_back({{"name", asked.reading().text(symbol.place)},
                     {"detail", asked.reading().text(statement, statement.expression)},
                     {"kind", numbers.at(static_cast<size_t>(symbol.kind))},
                     {"range", positions.range_of(symbol.whole)},
                     {"selectionRange", positions.range_of(symbol.place)}});
  }
  return found;
}

Json folds(const Asked& asked) {
  Json found = Json::array();
  const Positions positions = asked.document.positions();
  for (const quor_advice::Fold& fold : quor_advice::folds_of(asked.reading())) {
    Json json = {{"startLine", positions.line_of(fold.place.begin)},
                 {"endLine", positions.line_of(fold.place.end - 1)}};
    if (fold.is_comment) json["kind"] = "comment";
    found.push_back(std::move(json));
  }
  return found;
}

Json colours(const Asked& asked) {
  Json found = Json::array();
  const auto part = [](uint32_t code, unsigned shift) { return (code >> shift & 0xFFU) / 255.0; };
  for (const quor_advice::ColourAt& colour : quor_advice::colours_of(asked.reading())) {
    found.push_back({{"range", asked.document.positions().range_of(colour.place)},
                     {"color",
                      {{"red", part(colour.code, 16)},
                       {"green", part(colour.code, 8)},
                       {"blue", part(colour.code, 0)},
                       {"alpha", 1.0}}}});
  }
  return found;
}

Json colour_texts(const Asked& asked) {
  const Json& colour = asked.params.at("color");
  uint32_t code = 0;
  for (const char* const key : {"red", "green", "blue"}) {
    const double share = std::clamp(colour.at(key).get<double>(), 0.0, 1.0);
    code = code << 8U | static_cast<uint32_t>(std::lround(share * 255));
  }
  Json texts = Json::array();
  for (const std::string& text : quor_advice::colour_texts(code)) {
    texts.push_back(
        {{"label", text}, {"textEdit", {{"range", asked.params.at("range")}, {"newText", text}}}});
  }
  return texts;
}

Json formatted(const Asked& asked) {
  const std::string& text = asked.document.text();
  const std::string laid_out = quor_advice::format_script(text).text;
  Json edits = Json::array();
  if (laid_out == text) return edits;
  // Whole lines that are the same at both ends stay, and with them what the editor keeps there.
  const size_t shorter = std::min(text.size(), laid_out.size());
  size_t front = 0;
  while (front < shorter && text[front] == laid_out[front]) ++front;
  front = front == 0 ? 0 : text.rfind('\n', front - 1) + 1;
  size_t back = 0;
  while (back < shorter - front &&
         text[text.size() - back - 1] == laid_out[laid_out.size() - back - 1])
    ++back;
  const size_t line_end = text.find('\n', text.size() - back);
  back = line_end == std::string::npos ? 0 : text.size() - line_end - 1;
  const Place place{front, text.size() - back};
  edits.push_back({{"range", asked.document.positions().range_of(place)},
                   {"newText", laid_out.substr(front, laid_out.size() - back - front)}});
  return edits;
}

Json diagnostics(Document& document, const Settings& settings) {
  Json all = Json::array();
  const Positions positions = document.positions();
  for (const quor_advice::Finding& finding : document.findings(settings)) {
    const Place place = quor_advice::place_of(document.reading(settings), finding);
    all.push_back(diagnostic(finding, place, positions));
  }
  return all;
}

Json actions(const Asked& asked) {
  Json all = Json::array();
  const Positions positions = asked.document.positions();
  const Place range = positions.place_of(asked.params.at("range"));
  for (const quor_advice::Finding& finding : asked.document.findings(asked.settings)) {
    const Place place = quor_advice::place_of(asked.reading(), finding);
    if (!touches(place, range)) continue;
    bool is_first = true;
    for (const quor_advice::Fix& fix : asked.document.fixes(finding, asked.settings)) {
      Json edits = Json::array({{{"range", positions.range_of(fix.place)}, {"newText", fix.text}}});
      Json action = {{"title", fix.title},
                     {"kind", "quickfix"},
                     {"diagnostics", Json::array({diagnostic(finding, place, positions)})},
                     {"edit", edit_of_workspace(asked, std::move(edits))}};
      if (is_first) action["isPreferred"] = true;
      is_first = false;
      all.push_back(std::move(action));
    }
  }
  return all;
}

}  // namespace quor_lsp
