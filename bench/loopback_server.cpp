#include "loopback_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

namespace brenmoor::bench {
namespace {

// Requests are small; anything larger is not one of ours and ends the connection.
constexpr size_t kMaxHeaderBytes = 64 * 1024;
constexpr size_t kMaxBodyBytes = 16 * 1024 * 1024;

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// The Content-Length of a header block, 0 when absent, or -1 when it cannot be read.
long long contentLength(std::string_view headers) {
  constexpr std::string_view kName = "\r\ncontent-length:";
  for (size_t at = headers.find("\r\n"); at != std::string_view::npos;
       at = headers.find("\r\n", at + 2)) {
    if (headers.size() - at < kName.size() ||
        strncasecmp(headers.data() + at, kName.data(), kName.size()) != 0) {
      continue;
    }
    long long n = 0;
    size_t i = at + kName.size();
    while (i < headers.size() && headers[i] == ' ') ++i;
    const size_t digits = i;
    for (; i < headers.size() && headers[i] >= '0' && headers[i] <= '9'; ++i) {
      n = n * 10 + (headers[i] - '0');
      if (n > static_cast<long long>(kMaxBodyBytes)) return -1;
    }
    return i == digits ? -1 : n;
  }
  return 0;
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
  while (!stopping_) {
    const size_t headerEnd = pending.find("\r\n\r\n");
    if (headerEnd != std::string::npos) {
      const long long length = contentLength(std::string_view(pending).substr(0, headerEnd + 2));
      if (length < 0) return;
      const size_t whole = headerEnd + 4 + static_cast<size_t>(length);
      if (pending.size() >= whole) {
        pending.erase(0, whole);
        if (!sendAll(fd, response_)) return;
        ++served_;
        continue;
      }
    } else if (pending.size() > kMaxHeaderBytes) {
      return;
    }
    const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;
    pending.append(buffer, static_cast<size_t>(n));
  }
}

}  // namespace brenmoor::bench
