#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "recorded_request.h"
#include "reply.h"

namespace brenmoor::testing {

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
