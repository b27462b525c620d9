#include "socket_io.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace brenmoor::testing {

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = other.release();
  }
  return *this;
}

UniqueFd::~UniqueFd() {
  if (fd_ >= 0) ::close(fd_);
}

int UniqueFd::release() {
  const int fd = fd_;
  fd_ = -1;
  return fd;
}

namespace {

[[noreturn]] void throwErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

UniqueFd bindLoopback(uint16_t port) {
  UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (fd.get() < 0) throwErrno("socket");
  const int reuse = 1;
  ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throwErrno("bind 127.0.0.1");
  }
  return fd;
}

uint16_t localPort(int fd) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  if (::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throwErrno("getsockname");
  }
  return ntohs(address.sin_port);
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

void finishWriting(int fd) {
  constexpr int kQuietMillis = 500;
  constexpr size_t kMaxDiscardedBytes = 64 * 1024 * 1024;
  ::shutdown(fd, SHUT_WR);
  std::array<char, 16 * 1024> scratch;
  for (size_t discarded = 0; discarded < kMaxDiscardedBytes;) {
    pollfd readable{fd, POLLIN, 0};
    if (::poll(&readable, 1, kQuietMillis) <= 0) return;
    const ssize_t received = ::recv(fd, scratch.data(), scratch.size(), 0);
    if (received <= 0) return;
    discarded += static_cast<size_t>(received);
  }
}

}  // namespace brenmoor::testing
