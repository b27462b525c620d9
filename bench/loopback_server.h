#pragma once
// The smallest HTTP server a call or upload benchmark needs: on 127.0.0.1 only, one connection at
// a time, every request answered with the same 200, kept alive unless it was HTTP/1.0. Bodies are
// dropped as they arrive and nothing is recorded, so it serves any number of iterations and any
// body size in fixed memory.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace brenmoor::bench {

class LoopbackServer {
 public:
  // Answers every request with `body` as text/xml; throws std::system_error.
  explicit LoopbackServer(const std::string& body);
  ~LoopbackServer();  // cuts the connection in progress short and joins
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  std::string baseUrl() const;  // "http://127.0.0.1:PORT"
  uint64_t requestsServed() const { return served_.load(); }
  uint64_t connectionsAccepted() const { return accepted_.load(); }

 private:
  void acceptConnections();
  void serve(int fd);

  int listener_ = -1;
  uint16_t port_ = 0;
  std::string response_;
  std::atomic<bool> stopping_{false};
  std::atomic<uint64_t> served_{0};
  std::atomic<uint64_t> accepted_{0};
  std::mutex mutex_;
  int connection_ = -1;  // the one being served, for the destructor to cut
  std::thread thread_;
};

}  // namespace brenmoor::bench
