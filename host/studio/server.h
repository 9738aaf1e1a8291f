// HTTP on the loopback address.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "gate.h"
#include "web.h"

namespace quor_host {

/// Answers a request that the gate has let in. Called from several threads.
using Service = std::function<Answer(const Request&)>;

class Server {
 public:
  /// Takes a port; any that is free for 0. Throws HostError if it is taken.
  Server(int port, Service service);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  int port() const { return port_; }
  const Gate& gate() const { return *gate_; }
  /// Serves until `stop`, which any thread may call, and until the last answer is out.
  void run();
  void stop();

 private:
  struct Http;
  std::unique_ptr<Http> http_;
  int port_;
  std::unique_ptr<Gate> gate_;
  Service service_;
};

}  // namespace quor_host
