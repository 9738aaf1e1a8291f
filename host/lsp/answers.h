// What the server answers about a script, as the protocol writes it.
#pragma once

#include "document.h"
#include "json.h"

namespace quor_lsp {

/// What the editor can take.
struct Client {
  Encoding encoding = Encoding::utf16;
  bool takes_snippets = false;
};

/// What a request refuses: its text is for the author.
struct Refusal {
  std::string text;
};

/// A script that a request is about.
struct Asked {
  const std::string& uri;
  Document& document;
  const Settings& settings;
  const Client& client;
  const Json& params;

  const quor_advice::Reading& reading() const { return document.reading(settings); }
  size_t offset() const { return document.positions().offset_of(params.at("position")); }
};

/// Each gives the result. They throw Json::exception for parameters of another kind.
Json completions(const Asked& asked);
Json hover(const Asked& asked);
Json signature_help(const Asked& asked);
Json definition(const Asked& asked);
Json references(const Asked& asked);
Json occurrences(const Asked& asked);
Json prepared_rename(const Asked& asked);
Json renamed(const Asked& asked);  ///< throws Refusal for a name that can't be one
Json symbols(const Asked& asked);
Json folds(const Asked& asked);
Json colours(const Asked& asked);
Json colour_texts(const Asked& asked);
Json formatted(const Asked& asked);
Json actions(const Asked& asked);
Json semantic_tokens(const Asked& asked);

/// A completion with its help.
Json resolved_completion(const Json& item);

Json diagnostics(Document& document, const Settings& settings);

/// The names of the kinds and modifiers of semantic tokens.
Json semantic_legend();

}  // namespace quor_lsp
