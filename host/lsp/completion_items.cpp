// Completions as the protocol writes them; their help is asked for one by one.
#include <array>
#include <string>

#include "advice/completion.h"
#include "advice/hover.h"
#include "answers.h"

namespace quor_lsp {
namespace {

using quor_advice::Completion;
using quor_advice::CompletionKind;

struct ItemKind {
  CompletionKind kind;
  int number;         ///< of the protocol
  const char* order;  ///< the script's own names come first
};

constexpr std::array<ItemKind, 9> kinds = {{
    {CompletionKind::function, 3, "2"},
    {CompletionKind::field, 5, "1"},
    {CompletionKind::line, 6, "0"},
    {CompletionKind::constant, 21, "0"},
    {CompletionKind::style, 20, "1"},
    {CompletionKind::colour, 16, "0"},
    {CompletionKind::text, 12, "0"},
    {CompletionKind::keyword, 15, "3"},
    {CompletionKind::form, 23, "0"},
}};

Json item_of(const Completion& completion, const Json& range, bool takes_snippet) {
  const ItemKind& kind = kinds.at(static_cast<size_t>(completion.kind));
  Json item = {
      {"label", completion.label},
      {"kind", kind.number},
      {"detail", completion.detail},
      {"sortText", kind.order + completion.label},
      {"textEdit",
       {{"range", range}, {"newText", takes_snippet ? completion.insert : completion.label}}}};
  if (takes_snippet) item["insertTextFormat"] = 2;
  if (!completion.about.empty() && completion.kind != CompletionKind::function)
    item["documentation"] = completion.about;
  return item;
}

}  // namespace

Json completions(const Asked& asked) {
  const auto found = quor_advice::complete(asked.reading(), asked.offset());
  const Json range = asked.document.positions().range_of(found.replaced);
  const std::string& text = asked.document.text();
  // Parentheses that stand there already aren't written again.
  const bool has_call = found.replaced.end < text.size() && text[found.replaced.end] == '(';
  Json items = Json::array();
  for (const Completion& completion : found.items) {
    // A pattern of a whole statement is of no use as a word.
    if (completion.kind == CompletionKind::keyword && !asked.client.takes_snippets) continue;
    items.push_back(item_of(completion, range, asked.client.takes_snippets && !has_call));
  }
  return {{"isIncomplete", false}, {"items", std::move(items)}};
}

Json resolved_completion(const Json& item) {
  Json resolved = item;
  const auto& label = item.at("label").get_ref<const std::string&>();
  if (const auto* const help = quor_advice::find_word_help(label);
      help != nullptr && item.value("kind", 0) == kinds[0].number) {
    resolved["documentation"] = {{"kind", "markdown"},
                                 {"value", quor_advice::help_markdown(*help)}};
  }
  return resolved;
}

}  // namespace quor_lsp
