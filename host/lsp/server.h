// The language server: messages in, messages out. It knows no streams and no clock.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "answers.h"

namespace quor_lsp {

class Server {
 public:
  using Send = std::function<void(const std::string& message)>;

  explicit Server(Send send);

  /// Any text; what is no message of the protocol is answered with an error, and never ends it.
  void take(std::string_view message);

  /// Sends the findings of scripts that have changed; for when no message waits.
  void publish();

  /// Whether the editor has told it to exit, and with which status.
  std::optional<int> exit_status() const { return exit_status_; }

 private:
  struct Error {
    int code;
    std::string text;
  };
  using Answer = Json (Server::*)(const Json& params);
  struct Request {
    const char* method;
    Answer answer;
  };
  using Feature = Json (*)(const Asked& asked);
  struct ScriptRequest {
    const char* method;
    Feature feature;
  };
  using Take = void (Server::*)(const Json& params);
  struct Notification {
    const char* method;
    Take take;
  };
  static const Request requests[];
  static const ScriptRequest script_requests[];
  static const Notification notifications[];

  void take_json(const Json& message);
  void answer(const Json& id, const std::string& method, const Json& params);
  Json result_of(const std::string& method, const Json& params);
  void notify(const std::string& method, const Json& params);
  void send(const Json& message);
  void send_findings(const std::string& uri, Document& document);
  void refuse(const Json& id, const Error& error);

  Json initialize(const Json& params);
  Json shutdown(const Json& params);
  Json resolve(const Json& params);

  void exit(const Json& params);
  void open(const Json& params);
  void change(const Json& params);
  void close(const Json& params);
  void configure(const Json& params);

  Document& document(const std::string& uri);
  void take_settings(const Json& settings);

  Send send_;
  Client client_;
  Settings settings_;
  std::map<std::string, std::unique_ptr<Document>> documents_;
  bool is_initialized_ = false;
  bool is_shut_down_ = false;
  std::optional<int> exit_status_;
};

}  // namespace quor_lsp
