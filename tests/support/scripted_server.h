#pragma once

#include <strings.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace brenmoor::testing {

// One HTTP request exactly as the server received it.
struct RecordedRequest {
  std::string method;
  std::string target;
  std::string version;                                       // "HTTP/1.1"
  std::vector<std::pair<std::string, std::string>> headers;  // in order, as received
  std::string body;

  // First value of the named header, matched case-insensitively; "" when absent.
  std::string header(const std::string& name) const {
    for (const auto& [key, value] : headers) {
      if (strcasecmp(key.c_str(), name.c_str()) == 0) return value;
    }
    return {};
  }
};

// What the server answers to one request, including ways of misbehaving.
struct Reply {
  enum class Kind {
    Normal,    // a complete response
    Drop,      // close the connection without answering
    Truncate,  // headers with the full Content-Length, half the body, then close
    Drip,      // headers, then the body one byte at a time, `dripEvery` apart
    Reset,     // headers and half the body, then a TCP reset
    Stall,     // headers and half the body, then silence for `delay`, then close
  };

  int status = 200;
  std::string contentType = "text/xml; charset=utf-8";
  std::string body;
  std::vector<std::string> headers;    // more header lines, such as "Set-Cookie: s=1"
  std::chrono::milliseconds delay{0};  // silence before anything is sent (Stall: mid-body)
  std::chrono::milliseconds dripEvery{0};
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
  // Never silent for long, never done: the server that holds a call by trickling its answer.
  static Reply drip(std::string body, std::chrono::milliseconds every) {
    Reply reply = xml(std::move(body));
    reply.kind = Kind::Drip;
    reply.dripEvery = every;
    return reply;
  }
  static Reply truncated(std::string body) {
    Reply reply = xml(std::move(body));
    reply.kind = Kind::Truncate;
    return reply;
  }
  static Reply resetMidBody(std::string body) {
    Reply reply = xml(std::move(body));
    reply.kind = Kind::Reset;
    return reply;
  }
  static Reply stallMidBody(std::string body, std::chrono::milliseconds silence) {
    Reply reply = xml(std::move(body));
    reply.kind = Kind::Stall;
    reply.delay = silence;
    return reply;
  }
};

// An HTTP/1.1 server on 127.0.0.1 that records every request and answers each with the next
// scripted Reply, misbehaviour included. Serves each connection on its own thread.
class ScriptedServer {
 public:
  // Listens on `port`, or on one the OS picks; throws std::system_error.
  explicit ScriptedServer(uint16_t port = 0);
  ~ScriptedServer();  // cuts every connection and delay short, then joins all threads
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  std::string baseUrl() const;  // "http://127.0.0.1:PORT"

  // Replies are used in order, one per request.
  void enqueue(Reply reply);
  // Answers requests once the queue is empty; initially a 500 saying "no scripted reply".
  void setDefault(Reply reply);

  std::vector<RecordedRequest> requests() const;
  RecordedRequest lastRequest() const;  // an empty one before the first request
  int connectionCount() const;          // TCP connections accepted so far

 private:
  void acceptConnections();
  void serve(int fd);
  Reply record(RecordedRequest request);
  bool sendReply(int fd, const Reply& reply, bool keepAlive);
  bool pause(std::chrono::milliseconds duration);  // false once the server is stopping

  int listener_ = -1;
  uint16_t port_ = 0;

  mutable std::mutex mutex_;
  std::condition_variable stopSignal_;
  bool stopping_ = false;
  std::deque<Reply> queue_;
  Reply default_;
  std::vector<RecordedRequest> requests_;
  int connectionCount_ = 0;
  std::set<int> openConnections_;
  std::vector<std::thread> connectionThreads_;
  std::thread acceptThread_;
};

// A loopback port on which nothing listens, for connection-refused tests.
uint16_t closedPort();

}  // namespace brenmoor::testing
