#pragma once

#include <cstddef>
#include <string>

#include "recorded_request.h"

namespace brenmoor::testing {

inline constexpr size_t kMaxRequestBody = 64 * 1024 * 1024;
inline constexpr size_t kMaxRequestHead = 64 * 1024;  // request line, headers and trailers

struct ReadResult {
  enum class Outcome {
    Request,   // `request` holds a complete request
    Closed,    // the peer closed or the socket failed, possibly mid-request
    Rejected,  // the request is malformed or too large: answer `rejection` and close
  };
  Outcome outcome = Outcome::Closed;
  RecordedRequest request;
  bool keepAlive = false;  // the client is willing to send another request on this connection
  int rejection = 0;
};

// Reads HTTP/1.x requests one after another from a connected socket, bodies framed by
// Content-Length or chunked transfer coding. Answers "Expect: 100-continue" itself.
class RequestReader {
 public:
  explicit RequestReader(int fd) : fd_(fd) {}

  ReadResult next();

 private:
  RecordedRequest readHead(bool& keepAlive);
  std::string readBody(const RecordedRequest& head);
  std::string readChunkedBody();
  void readTrailers();
  std::string readHeadLine();
  std::string readLine(size_t limit, int statusWhenLonger);
  void appendExactly(std::string& out, size_t count);
  void acceptExpectation(const RecordedRequest& head);
  bool fill();

  int fd_;
  std::string buffer_;
  size_t position_ = 0;  // first unread byte of buffer_
  size_t headBudget_ = 0;
};

}  // namespace brenmoor::testing
