#include "scripted_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <system_error>
#include <utility>

namespace brenmoor::testing {
namespace {

int bindLoopback(uint16_t port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int reuse = 1;
  ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (fd < 0 || ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int error = errno;
    if (fd >= 0) ::close(fd);
    throw std::system_error(error, std::generic_category(), "bind 127.0.0.1");
  }
  return fd;
}

uint16_t localPort(int fd) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

bool fill(int fd, std::string& buffer) {
  char chunk[64 * 1024];
  ssize_t received;
  while ((received = ::recv(fd, chunk, sizeof chunk, 0)) < 0 && errno == EINTR) {
  }
  if (received <= 0) return false;
  buffer.append(chunk, static_cast<size_t>(received));
  return true;
}

bool sendAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

// The next request on the connection; false once the peer has gone. The library frames its
// bodies by Content-Length and sends no "Expect", so nothing else is needed.
bool readRequest(int fd, std::string& buffer, RecordedRequest& request, bool& keepAlive) {
  size_t headEnd;
  while ((headEnd = buffer.find("\r\n\r\n")) == std::string::npos) {
    if (!fill(fd, buffer)) return false;
  }
  std::istringstream head(buffer.substr(0, headEnd));
  std::string line;
  std::getline(head, line);
  std::istringstream(line) >> request.method >> request.target >> request.version;
  while (std::getline(head, line)) {
    if (line.ends_with('\r')) line.pop_back();
    const auto colon = line.find(':');
    const auto value = line.find_first_not_of(' ', colon + 1);
    request.headers.emplace_back(line.substr(0, colon),
                                 value == std::string::npos ? "" : line.substr(value));
  }
  buffer.erase(0, headEnd + 4);
  const std::string length = request.header("Content-Length");
  const size_t size = length.empty() ? 0 : std::stoul(length);
  while (buffer.size() < size) {
    if (!fill(fd, buffer)) return false;
  }
  request.body = buffer.substr(0, size);
  buffer.erase(0, size);
  keepAlive = request.version == "HTTP/1.1" &&
              request.header("Connection").find("close") == std::string::npos;
  return true;
}

}  // namespace

// Whether the connection may carry another request.
bool ScriptedServer::sendReply(int fd, const Reply& reply, bool keepAlive) {
  if (reply.kind == Reply::Kind::Drop) return false;
  std::string head = "HTTP/1.1 " + std::to_string(reply.status) +
                     (reply.status == 200 ? " OK" : " Scripted") +
                     "\r\nContent-Type: " + reply.contentType +
                     "\r\nContent-Length: " + std::to_string(reply.body.size()) +
                     (keepAlive ? "" : "\r\nConnection: close") + "\r\n";
  for (const auto& line : reply.headers) head += line + "\r\n";
  head += "\r\n";
  const bool cut = reply.kind == Reply::Kind::Truncate || reply.kind == Reply::Kind::Reset ||
                   reply.kind == Reply::Kind::Stall;
  if (cut) {
    sendAll(fd, head + reply.body.substr(0, reply.body.size() / 2));
    if (reply.kind == Reply::Kind::Stall) pause(reply.delay);
    if (reply.kind == Reply::Kind::Reset) {
      // Closing with a zero linger time sends RST instead of FIN.
      const linger abort{1, 0};
      ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    }
    return false;
  }
  if (reply.kind == Reply::Kind::Drip) {
    if (!sendAll(fd, head)) return false;
    for (char byte : reply.body) {
      std::this_thread::sleep_for(reply.dripEvery);
      if (!sendAll(fd, std::string_view(&byte, 1))) return false;
    }
    return false;
  }
  return sendAll(fd, head + reply.body) && keepAlive;
}

bool ScriptedServer::pause(std::chrono::milliseconds duration) {
  std::unique_lock lock(mutex_);
  return !stopSignal_.wait_for(lock, duration, [this] { return stopping_; });
}

ScriptedServer::ScriptedServer(uint16_t port)
    : listener_(bindLoopback(port)),
      port_(localPort(listener_)),
      default_(Reply::text(500, "no scripted reply")) {
  if (::listen(listener_, SOMAXCONN) != 0) {
    const int error = errno;
    ::close(listener_);
    throw std::system_error(error, std::generic_category(), "listen");
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
  ::shutdown(listener_, SHUT_RDWR);
  acceptThread_.join();
  // Only the accept thread adds connection threads, so the list is final now.
  for (auto& thread : connectionThreads_) thread.join();
  ::close(listener_);
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
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    std::lock_guard lock(mutex_);
    if (stopping_) {
      if (fd >= 0) ::close(fd);
      return;
    }
    if (fd < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      return;
    }
    ++connectionCount_;
    openConnections_.insert(fd);
    connectionThreads_.emplace_back(&ScriptedServer::serve, this, fd);
  }
}

void ScriptedServer::serve(int fd) {
  std::string buffer;
  for (bool open = true; open;) {
    RecordedRequest request;
    bool keepAlive = false;
    if (!readRequest(fd, buffer, request, keepAlive)) break;
    const Reply reply = record(std::move(request));
    if (reply.kind != Reply::Kind::Stall && !pause(reply.delay)) break;
    open = sendReply(fd, reply, keepAlive);
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

uint16_t closedPort() {
  const int fd = bindLoopback(0);
  const uint16_t port = localPort(fd);
  ::close(fd);
  return port;
}

}  // namespace brenmoor::testing
