#pragma once

#include <httplib.h>

#include "http/connection_limits.h"

namespace sandbox {

// httplib's server with its own connection loop: TCP_NODELAY on every connection (small
// answers must not wait for delayed acknowledgements), ConnectionLimits, and a way for a
// handler to have the connection closed once its answer is out, for a body left unread.
class GuardedServer : public httplib::Server {
 public:
  explicit GuardedServer(const ConnectionLimits& limits);

  // Closes the connection of the request being handled on this thread after `response`,
  // reading (and dropping) for a moment what the client still sends, so that a client
  // that writes its whole body before reading sees the answer rather than a reset.
  static void close_after_answer(httplib::Response& response);

  // Binds as bind_to_port does (any free port for 0); the bound port, or -1. httplib listens
  // with a queue of 5: a dozen clients connecting at once overflow it, and the kernel then
  // answers the rest with SYN cookies or drops, which some see as a reset of their first
  // request. The queue is made as long as the system allows.
  int bind_listener(const std::string& host, int port);

 private:
  bool process_and_close_socket(socket_t sock) override;

  ConnectionLimits limits_;
};

}  // namespace sandbox
