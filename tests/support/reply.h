#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace brenmoor::testing {

// What the server answers to one request, including ways of misbehaving.
struct Reply {
  enum class Kind {
    Normal,    // a complete response
    Drop,      // close the connection without answering
    Truncate,  // headers with the full Content-Length, half the body, then close
    Raw,       // `body` sent verbatim, then close
  };

  int status = 200;
  std::string reason;  // empty: the usual phrase for `status`
  std::string contentType = "text/xml; charset=utf-8";
  // Extra headers. Naming Content-Type, Content-Length or Transfer-Encoding here replaces the
  // generated one; "Connection: close" closes the connection after this reply.
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;
  std::chrono::milliseconds delay{0};  // silence before anything is sent
  Kind kind = Kind::Normal;

  static Reply xml(std::string body);
  static Reply withStatus(int status, std::string body = {});
  static Reply text(int status, std::string body);
  static Reply drop();
  // Says nothing for `duration`, then closes without answering: the server that never replies.
  static Reply stall(std::chrono::milliseconds duration);
  static Reply truncated(std::string body);
  static Reply raw(std::string bytes);
};

// The usual reason phrase for an HTTP status code, "Unknown" for codes without one.
const char* reasonPhrase(int status);

}  // namespace brenmoor::testing
