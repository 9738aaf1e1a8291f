// An editor that speaks with the language server, message by message.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/lsp/json.h"
#include "host/lsp/server.h"

namespace quor_test {

using Json = quor_lsp::Json;

/// A script with the place of its cursor, which is written as '|'.
struct Cursor {
  std::string script;
  size_t line = 0;
  size_t character = 0;  ///< in bytes
};
Cursor cursor_in(std::string_view text);

class Editor {
 public:
  /// Has opened a connection in which places count in bytes, and texts may hold places to fill in.
  Editor();
  /// With what it says of itself when it begins.
  explicit Editor(const Json& initialize);

  void send(const std::string& message) { server_.take(message); }
  void notify(const std::string& method, const Json& params);
  /// The whole answer.
  Json ask(const std::string& method, const Json& params);
  /// The result of a request about a script, at a place and with further parameters.
  Json ask_about(const std::string& method, Json params = Json::object(), size_t line = 0,
                 size_t character = 0);

  void open(const std::string& script, const std::string& uri = main_script);
  /// The findings of a script as "1:3-6 error: sentence", places from 0.
  std::vector<std::string> findings(const std::string& uri = main_script);

  /// The messages that nobody has asked for, the oldest first.
  std::deque<Json> messages;
  quor_lsp::Server& server() { return server_; }

  static constexpr auto main_script = "file:///script.quor";

 private:
  quor_lsp::Server server_;
  int64_t last_id_ = 0;
};

/// The script with the edits of one answer, places in bytes.
std::string edited(const std::string& script, const Json& edits);

}  // namespace quor_test
