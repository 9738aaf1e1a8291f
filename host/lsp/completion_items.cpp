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
  int number;  ///< of the protocol
};

constexpr std::array<ItemKind, 9> kinds = {{
    {CompletionKind::function, 3},
    {CompletionKind::field, 5},
    {CompletionKind::line, 6},
    {CompletionKind::constant, 21},
    {CompletionKind::style, 20},
    {CompletionKind::colour, 16},
    {CompletionKind::text, 12},
    {CompletionKind::keyword, 15},
    {CompletionKind::form, 23},
}};

Json item_of(const Completion& completion, const Json& range, bool takes_snippet) {
  const ItemKind& kind = kinds.at(static_cast<size_t>(completion.kind));
  Json item = {
      {"label", completion.label},
      {"kind", kind.number},
      {"detail", completion.detail},
      {"sortText", std::to_string(quor_advice::rank_of(kind.kind)) + completion.label},
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
  Json items = Json::array();
  for (const Completion& completion : found.items) {
    // A pattern of a whole statement is of no use as a word.
    if (completion.kind == CompletionKind::keyword && !asked.client.takes_snippets) continue;
    items.push_back(item_of(completion, range, asked.client.takes_snippets));
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
