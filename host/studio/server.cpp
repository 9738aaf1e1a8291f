#include "server.h"

#include <algorithm>

#include "../errors.h"
#include "patient_http.h"

namespace quor_host {
namespace {

/// A script with what its text, and the one before, may grow by as JSON.
constexpr size_t most_kept = size_t{4} << 20U;
/// So much is read of a body, so that the connection can go on.
constexpr size_t largest_body = size_t{65} << 20U;

constexpr auto content_security =
    "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; worker-src 'self'; style-src "
    "'self'; "
    "img-src 'self' data: blob:; font-src 'self'; connect-src 'self'; base-uri 'none'; "
    "form-action 'none'; "
    "frame-ancestors 'none'";

/// Two servers on one port would share the requests; the library would let them.
void set_socket_options(socket_t socket) {
#ifdef _WIN32
  constexpr int option = SO_EXCLUSIVEADDRUSE;
#else
  constexpr int option = SO_REUSEADDR;
#endif
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, option, reinterpret_cast<const char*>(&yes), sizeof yes);
}

Visitor visitor_of(const httplib::Request& request) {
  return {request.get_header_value("Host"), request.get_header_value("Origin"),
          request.get_header_value("Sec-Fetch-Site"), request.get_header_value("Cookie")};
}

/// Whether a list such as "gzip, deflate;q=0.5" has the word, and not as one that isn't wanted.
bool names_gzip(const std::string& encodings) {
  const size_t at = encodings.find("gzip");
  if (at == std::string::npos) return false;
  const std::string rest = encodings.substr(at + 4, encodings.find(',', at) - at - 4);
  return rest.find("q=0") == std::string::npos || rest.find("q=0.") != std::string::npos;
}

std::string content_type(const httplib::Request& request) {
  std::string type = request.get_header_value("Content-Type");
  type.erase(std::min(type.find(';'), type.size()));
  while (type.ends_with(' ')) type.pop_back();
  std::ranges::transform(type, type.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return type;
}

Request request_of(const httplib::Request& request) {
  Request plain{request.method,
                request.path,
                {},
                content_type(request),
                request.get_header_value("If-None-Match"),
                names_gzip(request.get_header_value("Accept-Encoding")),
                {}};
  for (const auto& [key, value] : request.params) plain.query.emplace(key, value);
  return plain;
}

void give(const Answer& answer, httplib::Response& response) {
  response.status = answer.status;
  for (const auto& [key, value] : answer.headers) {
    response.headers.erase(key);  // one of those that all answers have
    response.set_header(key, value);
  }
  if (!answer.body.empty()) response.set_content(answer.body, answer.type);
}

/// Throws Refusal for one that can't be read or is too large.
std::string body_of(const httplib::ContentReader& reader) {
  std::string body;
  size_t size = 0;
  const bool is_whole = reader([&](const char* data, size_t count) {
    size += count;
    if (size <= most_kept) body.append(data, count);
    return size <= largest_body;
  });
  if (size > most_kept) throw Refusal(413, "the body is too large");
  if (!is_whole) throw Refusal(400, "the body can't be read");
  return body;
}

}  // namespace

struct Server::Http {
  PatientServer server;
};

Server::Server(int port, Service service)
    : http_(std::make_unique<Http>()), service_(std::move(service)) {
  constexpr auto address = "127.0.0.1";
  httplib::Server& server = http_->server;
  server.set_socket_options(set_socket_options);
  server.set_tcp_nodelay(true);
  server.set_payload_max_length(largest_body);
  server.set_keep_alive_max_count(100000);
  server.set_keep_alive_timeout(2);
  server.set_default_headers({{"Content-Security-Policy", content_security},
                              {"X-Content-Type-Options", "nosniff"},
                              {"Referrer-Policy", "no-referrer"},
                              {"Cross-Origin-Resource-Policy", "same-origin"},
                              {"Cache-Control", "no-store"}});
  const bool is_bound = port == 0 ? (port = server.bind_to_any_port(address)) > 0
                                  : server.bind_to_port(address, port);
  if (!is_bound) throw HostError("port " + std::to_string(port) + " is taken; --port sets another");
  port_ = port;
  gate_ = std::make_unique<Gate>(port);

  // What keeps a request out; null if nothing does.
  const auto obstacle = [this](const httplib::Request& request) -> const char* {
    const Visitor visitor = visitor_of(request);
    if (!gate_->is_at_home(visitor, request.method == "GET" && request.path == "/")) {
      return "this request doesn't come from the studio's own page";
    }
    if (gate_->has_cookie(visitor)) return nullptr;
    return "only the browser that has opened the studio's link may come in: open the link that "
           "quor studio printed when it was started last, or start it anew for another one";
  };
  const auto guard = [](httplib::Response& response, const auto& work) {
    try {
      work();
    } catch (const Refusal& refusal) {
      give(error_answer(refusal.status, refusal.what()), response);
    } catch (const HostError& error) {
      give(error_answer(400, error.what()), response);
    } catch (const std::bad_alloc&) {
      give(error_answer(507, "there is no memory for this"), response);
    } catch (const std::exception& error) {
      give(error_answer(500, error.what()), response);
    }
  };
  server.Get("/.*", [=, this](const httplib::Request& request, httplib::Response& response) {
    guard(response, [&] {
      if (request.path == "/" && request.has_param("token") &&
          gate_->is_at_home(visitor_of(request), true) &&
          gate_->take(request.get_param_value("token"))) {
        response.set_header("Set-Cookie", gate_->cookie_header());
        response.set_redirect("/", 303);
        return;
      }
      if (const char* const reason = obstacle(request)) throw Refusal(403, reason);
      give(service_(request_of(request)), response);
    });
  });
  server.Post("/.*", [=, this](const httplib::Request& request, httplib::Response& response,
                               const httplib::ContentReader& reader) {
    guard(response, [&] {
      if (request.is_multipart_form_data()) throw Refusal(415, "no forms are taken here");
      Request plain = request_of(request);
      plain.body = body_of(reader);
      if (const char* const reason = obstacle(request)) throw Refusal(403, reason);
      give(service_(plain), response);
    });
  });
  server.set_error_handler([](const httplib::Request&, httplib::Response& response) {
    if (!response.body.empty()) return;
    give(error_answer(response.status, "the request can't be served"), response);
  });
}

Server::~Server() = default;

void Server::run() { http_->server.listen_after_bind(); }

void Server::stop() { http_->server.stop(); }

}  // namespace quor_host
