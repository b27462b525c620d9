#include "scripted_server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "request_reader.h"
#include "response_writer.h"

namespace brenmoor::testing {

ScriptedServer::ScriptedServer(uint16_t port)
    : listener_(bindLoopback(port)),
      port_(localPort(listener_.get())),
      default_(Reply::text(500, "no scripted reply")) {
  if (::listen(listener_.get(), SOMAXCONN) != 0) {
    throw std::system_error(errno, std::generic_category(), "listen");
  }
  acceptThread_ = std::thread(&ScriptedServer::acceptConnections, this);
}

ScriptedServer::~ScriptedServer() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    for (const int fd : openConnections_) ::shutdown(fd, SHUT_RDWR);
  }
  stopSignal_.notify_all();
  // Wakes the blocked accept() on Linux.
  ::shutdown(listener_.get(), SHUT_RDWR);
  acceptThread_.join();
  // Only the accept thread adds connection threads, so the list is final now.
  for (auto& thread : connectionThreads_) thread.join();
}

std::string ScriptedServer::baseUrl() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

void ScriptedServer::enqueue(Reply reply) {
  std::lock_guard lock(mutex_);
  queue_.push_back(std::move(reply));
}

void ScriptedServer::setDefault(Reply reply) {
  std::lock_guard lock(mutex_);
  default_ = std::move(reply);
}

std::vector<RecordedRequest> ScriptedServer::requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

RecordedRequest ScriptedServer::lastRequest() const {
  std::lock_guard lock(mutex_);
  return requests_.empty() ? RecordedRequest{} : requests_.back();
}

int ScriptedServer::connectionCount() const {
  std::lock_guard lock(mutex_);
  return connectionCount_;
}

void ScriptedServer::acceptConnections() {
  for (;;) {
    const int fd = ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC);
    std::lock_guard lock(mutex_);
    if (stopping_) {
      if (fd >= 0) ::close(fd);
      return;
    }
    if (fd < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      return;
    }
    openConnections_.insert(fd);
    connectionThreads_.emplace_back(&ScriptedServer::serve, this, fd, ++connectionCount_);
  }
}

void ScriptedServer::serve(int fd, int connection) {
  RequestReader reader(fd);
  for (bool open = true; open;) {
    ReadResult read = reader.next();
    if (read.outcome == ReadResult::Outcome::Closed) break;
    if (read.outcome == ReadResult::Outcome::Rejected) {
      sendReply(fd, Reply::text(read.rejection, reasonPhrase(read.rejection)), false);
      finishWriting(fd);
      break;
    }
    read.request.connection = connection;
    const Reply reply = record(std::move(read.request));
    open = waitBeforeReplying(reply.delay) && sendReply(fd, reply, read.keepAlive);
  }
  {
    // Deregistered under the lock so the destructor never shuts down a reused descriptor.
    std::lock_guard lock(mutex_);
    openConnections_.erase(fd);
  }
  ::close(fd);
}

Reply ScriptedServer::record(RecordedRequest request) {
  std::lock_guard lock(mutex_);
  requests_.push_back(std::move(request));
  if (queue_.empty()) return default_;
  Reply next = std::move(queue_.front());
  queue_.pop_front();
  return next;
}

bool ScriptedServer::waitBeforeReplying(std::chrono::milliseconds delay) {
  std::unique_lock lock(mutex_);
  if (delay.count() > 0) stopSignal_.wait_for(lock, delay, [this] { return stopping_; });
  return !stopping_;
}

uint16_t closedPort() {
  return localPort(bindLoopback().get());
}

}  // namespace brenmoor::testing
