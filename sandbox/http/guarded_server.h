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

 private:
  bool process_and_close_socket(socket_t sock) override;

  ConnectionLimits limits_;
};

}  // namespace sandbox
