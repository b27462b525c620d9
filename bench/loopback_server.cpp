#include "loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <system_error>

namespace brenmoor::bench {
namespace {

// Heads are small; a larger one is not one of ours and ends the connection. Bodies are read and
// dropped as they arrive, so their size costs no memory.
constexpr size_t kMaxHeaderBytes = 64 * 1024;
constexpr long long kMaxBodyBytes = 1LL << 40;

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// The value of a header in a head that starts after its request line's CR LF; `name` in lower
// case with its colon. Empty when absent.
std::string_view headerValue(std::string_view head, std::string_view name) {
  for (size_t at = head.find("\r\n"); at != std::string_view::npos;
       at = head.find("\r\n", at + 2)) {
    const size_t start = at + 2;
    if (head.size() - start < name.size() ||
        strncasecmp(head.data() + start, name.data(), name.size()) != 0) {
      continue;
    }
    size_t i = start + name.size();
    while (i < head.size() && head[i] == ' ') ++i;
    return head.substr(i, head.find("\r\n", i) - i);
  }
  return {};
}

// The Content-Length of a head, 0 when absent, or -1 when it cannot be read.
long long contentLength(std::string_view head) {
  const std::string_view value = headerValue(head, "content-length:");
  if (value.empty()) return 0;
  long long n = 0;
  for (const char c : value) {
    if (c < '0' || c > '9') return -1;
    n = n * 10 + (c - '0');
    if (n > kMaxBodyBytes) return -1;
  }
  return n;
}

bool sendAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

}  // namespace

LoopbackServer::LoopbackServer(const std::string& body)
    : response_("HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\n\r\n" + body) {
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener_ < 0) throwErrno("socket");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener_, 8) != 0 ||
      ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    const int error = errno;
    ::close(listener_);
    errno = error;
    throwErrno("listen on 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread(&LoopbackServer::acceptConnections, this);
}

LoopbackServer::~LoopbackServer() {
  stopping_ = true;
  {
    std::lock_guard lock(mutex_);
    if (connection_ >= 0) ::shutdown(connection_, SHUT_RDWR);
  }
  // Wakes the blocked accept() on Linux.
  ::shutdown(listener_, SHUT_RDWR);
  thread_.join();
  ::close(listener_);
}

std::string LoopbackServer::baseUrl() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

void LoopbackServer::acceptConnections() {
  while (!stopping_) {
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      return;
    }
    {
      std::lock_guard lock(mutex_);
      if (stopping_) {
        ::close(fd);
        return;
      }
      connection_ = fd;
    }
    ++accepted_;
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    serve(fd);
    std::lock_guard lock(mutex_);
    connection_ = -1;
    ::close(fd);
  }
}

void LoopbackServer::serve(int fd) {
  std::string pending;
  char buffer[64 * 1024];
  const auto receive = [&](size_t most) {
    for (;;) {
      const ssize_t n = ::recv(fd, buffer, std::min(most, sizeof buffer), 0);
      if (n < 0 && errno == EINTR) continue;
      return n;
    }
  };
  while (!stopping_) {
    size_t headEnd;
    while ((headEnd = pending.find("\r\n\r\n")) == std::string::npos) {
      const ssize_t n = receive(sizeof buffer);
      if (n <= 0 || pending.size() > kMaxHeaderBytes) return;
      pending.append(buffer, static_cast<size_t>(n));
    }
    const std::string_view head(pending.data(), headEnd + 2);
    const long long length = contentLength(head);
    if (length < 0) return;
    const std::string_view expect = headerValue(head, "expect:");
    if (expect.size() == 12 && strncasecmp(expect.data(), "100-continue", 12) == 0 &&
        !sendAll(fd, "HTTP/1.1 100 Continue\r\n\r\n")) {
      return;
    }
    const bool lastRequest = head.substr(0, head.find("\r\n")).ends_with(" HTTP/1.0");
    auto left = static_cast<size_t>(length);
    const size_t buffered = std::min(left, pending.size() - headEnd - 4);
    left -= buffered;
    pending.erase(0, headEnd + 4 + buffered);
    while (left > 0 && !stopping_) {
      const ssize_t n = receive(left);
      if (n <= 0) return;
      left -= static_cast<size_t>(n);
    }
    if (!sendAll(fd, response_)) return;
    ++served_;
    if (lastRequest) return;  // HTTP/1.0: the connection ends with the answer
  }
}

}  // namespace brenmoor::bench
