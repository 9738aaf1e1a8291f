#include "server.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

#include "../options/period.h"

namespace quor_lsp {
namespace {

// Codes of errors of the protocol.
constexpr int parse_error = -32700;
constexpr int invalid_request = -32600;
constexpr int method_not_found = -32601;
constexpr int invalid_params = -32602;
constexpr int internal_error = -32603;
constexpr int not_initialized = -32002;
constexpr int request_failed = -32803;

constexpr int incremental = 2;  ///< changes of texts come as ranges
constexpr int deepest = 64;     ///< levels of a message; deeper ones are left out

Json capabilities(const Client& client) {
  return {
      {"positionEncoding", client.encoding == Encoding::utf8 ? "utf-8" : "utf-16"},
      {"textDocumentSync", {{"openClose", true}, {"change", incremental}}},
      {"completionProvider",
       {{"triggerCharacters", {",", "'", "\"", "$"}}, {"resolveProvider", true}}},
      {"hoverProvider", true},
      {"signatureHelpProvider", {{"triggerCharacters", {"(", ","}}}},
      {"definitionProvider", true},
      {"referencesProvider", true},
      {"documentHighlightProvider", true},
      {"documentSymbolProvider", true},
      {"codeActionProvider", {{"codeActionKinds", {"quickfix"}}}},
      {"colorProvider", true},
      {"documentFormattingProvider", true},
      {"renameProvider", {{"prepareProvider", true}}},
      {"foldingRangeProvider", true},
      {"semanticTokensProvider", {{"legend", semantic_legend()}, {"full", true}}},
  };
}

/// A member of an object, however deep; null where it isn't there.
Json member(const Json& object, std::initializer_list<const char*> path) {
  const Json* at = &object;
  for (const char* const key : path) {
    if (!at->is_object() || !at->contains(key)) return nullptr;
    at = &at->at(key);
  }
  return *at;
}

std::string uri_of(const Json& params) {
  return params.at("textDocument").at("uri").get<std::string>();
}

}  // namespace

const Server::Request Server::requests[] = {
    {"initialize", &Server::initialize},
    {"shutdown", &Server::shutdown},
    {"completionItem/resolve", &Server::resolve},
};

const Server::ScriptRequest Server::script_requests[] = {
    {"textDocument/completion", completions},
    {"textDocument/hover", hover},
    {"textDocument/signatureHelp", signature_help},
    {"textDocument/definition", definition},
    {"textDocument/references", references},
    {"textDocument/documentHighlight", occurrences},
    {"textDocument/prepareRename", prepared_rename},
    {"textDocument/rename", renamed},
    {"textDocument/documentSymbol", symbols},
    {"textDocument/foldingRange", folds},
    {"textDocument/documentColor", colours},
    {"textDocument/colorPresentation", colour_texts},
    {"textDocument/formatting", formatted},
    {"textDocument/codeAction", actions},
    {"textDocument/semanticTokens/full", semantic_tokens},
};

const Server::Notification Server::notifications[] = {
    {"exit", &Server::exit},
    {"textDocument/didOpen", &Server::open},
    {"textDocument/didChange", &Server::change},
    {"textDocument/didClose", &Server::close},
    {"workspace/didChangeConfiguration", &Server::configure},
};

Server::Server(Send send) : send_(std::move(send)) {}

void Server::send(const Json& message) {
  send_(message.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void Server::refuse(const Json& id, const Error& error) {
  send(
      {{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", error.code}, {"message", error.text}}}});
}

void Server::take(std::string_view message) {
  // What is copied and written calls itself for every level; the protocol needs a dozen of them.
  const auto is_shallow = [](int depth, Json::parse_event_t /*event*/, const Json& /*value*/) {
    return depth < deepest;
  };
  const Json json = Json::parse(message, is_shallow, false);
  if (json.is_discarded()) return refuse(nullptr, {parse_error, "the message is no JSON"});
  const bool is_message = json.is_object() && json.contains("method") && json["method"].is_string();
  if (is_message) return take_json(json);
  // An answer to a request that the server never made tells it nothing.
  const bool is_answer = json.is_object() && json.contains("id") &&
                         (json.contains("result") || json.contains("error"));
  if (!is_answer) refuse(nullptr, {invalid_request, "the message has no method"});
}

void Server::take_json(const Json& message) {
  const auto method = message["method"].get<std::string>();
  const Json params = member(message, {"params"});
  if (!message.contains("id")) return notify(method, params);
  const Json& id = message["id"];
  if (id.is_string() || id.is_number_integer()) return answer(id, method, params);
  refuse(nullptr, {invalid_request, "an id is a number or a text"});
}

void Server::answer(const Json& id, const std::string& method, const Json& params) {
  try {
    Json result = result_of(method, params);
    send({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
  } catch (const Error& error) {
    refuse(id, error);
  } catch (const Refusal& refusal) {
    refuse(id, {request_failed, refusal.text});
  } catch (const Json::exception&) {
    refuse(id, {invalid_params, method + " wants other parameters"});
  } catch (const std::exception& error) {
    refuse(id, {internal_error, error.what()});
  }
}

Json Server::result_of(const std::string& method, const Json& params) {
  if (is_shut_down_) throw Error{invalid_request, "the server is shut down"};
  if (!is_initialized_ && method != "initialize")
    throw Error{not_initialized, "the first request is initialize"};
  for (const Request& request : requests) {
    if (method == request.method) return (this->*request.answer)(params);
  }
  for (const ScriptRequest& request : script_requests) {
    if (method != request.method) continue;
    const std::string uri = uri_of(params);
    return request.feature({uri, document(uri), settings_, client_, params});
  }
  throw Error{method_not_found, "there is no request " + method};
}

void Server::notify(const std::string& method, const Json& params) {
  const auto* const found = std::ranges::find_if(
      notifications, [&method](const Notification& row) { return method == row.method; });
  if (found == std::end(notifications)) return;
  const bool is_in_time = is_initialized_ && !is_shut_down_;
  if (!is_in_time && method != "exit") return;
  try {
    (this->*found->take)(params);
  } catch (const Error&) {
    // A notification has no answer: one about a script that isn't open is passed over.
  } catch (const std::exception&) {
    // As is one whose parameters can't be read.
  }
}

void Server::publish() {
  for (auto& [uri, document] : documents_) {
    if (document->is_published) continue;
    document->is_published = true;
    send_findings(uri, *document);
  }
}

void Server::send_findings(const std::string& uri, Document& document) {
  try {
    Json params = {{"uri", uri}, {"diagnostics", diagnostics(document, settings_)}};
    if (document.version().is_number_integer()) params["version"] = document.version();
    send({{"jsonrpc", "2.0"},
          {"method", "textDocument/publishDiagnostics"},
          {"params", std::move(params)}});
  } catch (const std::exception& error) {
    std::cerr << "quor: " << uri << ": " << error.what() << '\n';
  }
}

Json Server::initialize(const Json& params) {
  if (is_initialized_) throw Error{invalid_request, "the server is initialized"};
  is_initialized_ = true;
  const Json encodings = member(params, {"capabilities", "general", "positionEncodings"});
  const bool takes_utf8 =
      encodings.is_array() && std::ranges::find(encodings, Json("utf-8")) != encodings.end();
  client_.encoding = takes_utf8 ? Encoding::utf8 : Encoding::utf16;
  client_.takes_snippets = member(params, {"capabilities", "textDocument", "completion",
                                           "completionItem", "snippetSupport"}) == Json(true);
  take_settings(member(params, {"initializationOptions"}));
  return {{"capabilities", capabilities(client_)},
          {"serverInfo", {{"name", "quor"}, {"version", QUOR_VERSION}}}};
}

Json Server::shutdown(const Json& /*params*/) {
  is_shut_down_ = true;
  return nullptr;
}

Json Server::resolve(const Json& params) { return resolved_completion(params); }

void Server::exit(const Json& /*params*/) { exit_status_ = is_shut_down_ ? 0 : 1; }

Document& Server::document(const std::string& uri) {
  const auto found = documents_.find(uri);
  if (found == documents_.end()) throw Error{invalid_params, "the script isn't open: " + uri};
  return *found->second;
}

void Server::open(const Json& params) {
  const Json& opened = params.at("textDocument");
  documents_.insert_or_assign(
      uri_of(params), std::make_unique<Document>(opened.at("text").get<std::string>(),
                                                 member(opened, {"version"}), client_.encoding));
}

void Server::change(const Json& params) {
  Document& changed = document(uri_of(params));
  for (const Json& change : params.at("contentChanges")) changed.change(change);
  changed.set_version(member(params, {"textDocument", "version"}));
}

void Server::close(const Json& params) {
  const std::string uri = uri_of(params);
  if (documents_.erase(uri) == 0) return;
  send({{"jsonrpc", "2.0"},
        {"method", "textDocument/publishDiagnostics"},
        {"params", {{"uri", uri}, {"diagnostics", Json::array()}}}});
}

void Server::configure(const Json& params) {
  const Json settings = member(params, {"settings"});
  const Json own = settings.contains("quor") ? settings["quor"] : settings;
  // Editors that have nothing to set may say so, which takes nothing back.
  if (!own.contains("parameters") && !own.contains("period")) return;
  take_settings(own);
  for (auto& [uri, document] : documents_) document->forget();
}

void Server::take_settings(const Json& settings) {
  settings_ = {};
  const Json parameters = member(settings, {"parameters"});
  if (parameters.is_object() && !parameters.empty()) {
    Json list = Json::array();
    for (const auto& [name, value] : parameters.items()) {
      if (value.is_number()) list.push_back({{"PARAM_NAME", name}, {"DEFAULT", value}});
    }
    settings_.parameters = list.dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  const Json period = member(settings, {"period"});
  if (!period.is_string()) return;
  const auto code = quor_host::parse_period(period.get<std::string>());
  if (code) settings_.period = static_cast<int32_t>(*code);
}

}  // namespace quor_lsp
