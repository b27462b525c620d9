#pragma once

#include <chrono>
#include <string>

namespace brenmoor::testing {

// What the server answers to one request, including ways of misbehaving.
struct Reply {
  enum class Kind {
    Normal,    // a complete response
    Drop,      // close the connection without answering
    Truncate,  // headers with the full Content-Length, half the body, then close
  };

  int status = 200;
  std::string contentType = "text/xml; charset=utf-8";
  std::string body;
  std::chrono::milliseconds delay{0};  // silence before anything is sent
  Kind kind = Kind::Normal;

  static Reply xml(std::string body) { return withStatus(200, std::move(body)); }
  static Reply withStatus(int status, std::string body = {}) {
    Reply reply;
    reply.status = status;
    reply.body = std::move(body);
    return reply;
  }
  static Reply text(int status, std::string body) {
    Reply reply = withStatus(status, std::move(body));
    reply.contentType = "text/plain; charset=utf-8";
    return reply;
  }
  static Reply drop() {
    Reply reply;
    reply.kind = Kind::Drop;
    return reply;
  }
  // Says nothing for `duration`, then closes without answering: the server that never replies.
  static Reply stall(std::chrono::milliseconds duration) {
    Reply reply = drop();
    reply.delay = duration;
    return reply;
  }
  static Reply truncated(std::string body) {
    Reply reply = xml(std::move(body));
    reply.kind = Kind::Truncate;
    return reply;
  }
};

}  // namespace brenmoor::testing
