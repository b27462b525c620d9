#include "http/guarded_server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace sandbox {
namespace {

using Clock = std::chrono::steady_clock;

// Waits at most this long at a time, so that a stopping server is noticed soon.
constexpr std::chrono::milliseconds kSlice{100};
// After an answer that leaves a body unread: how long, and how much, is still read.
constexpr std::chrono::milliseconds kLingerTime{2000};
constexpr std::size_t kLingerBytes = 64 * 1024 * 1024;
// httplib reads a chunk-size line a byte at a time into a buffer that grows to fit: a body
// read a byte at a time for longer than this is not chunks but an endless line.
constexpr std::size_t kMaxByteReads = 64 * 1024;

thread_local bool close_requested = false;

int poll_for(int fd, short events, std::chrono::milliseconds wait) {
  pollfd entry{fd, events, 0};
  int ready;
  do {
    ready = ::poll(&entry, 1, static_cast<int>(std::max<std::int64_t>(0, wait.count())));
  } while (ready < 0 && errno == EINTR);
  return ready;
}

void describe_address(const sockaddr_storage& address, std::string& ip, int& port) {
  char text[INET6_ADDRSTRLEN] = "";
  if (address.ss_family == AF_INET) {
    const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
    inet_ntop(AF_INET, &v4.sin_addr, text, sizeof text);
    port = ntohs(v4.sin_port);
  } else if (address.ss_family == AF_INET6) {
    const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
    inet_ntop(AF_INET6, &v6.sin6_addr, text, sizeof text);
    port = ntohs(v6.sin6_port);
  }
  ip = text;
}

// One connection's bytes. Reads are buffered (httplib reads headers a byte at a time) and
// bounded: while a request's headers arrive, by the header deadline and byte budget (the
// headers end at the first blank line); afterwards, by the silence limit.
class GuardedStream final : public httplib::Stream {
 public:
  GuardedStream(int fd, const ConnectionLimits& limits, const std::atomic<socket_t>& listener)
      : fd_(fd), limits_(limits), listener_(listener) {}

  // Waits for the next request to begin; false when none comes in time or the server stops.
  bool await_request() {
    const auto until = Clock::now() + limits_.idle;
    while (begin_ == end_) {
      if (listener_ == INVALID_SOCKET || Clock::now() >= until) return false;
      const int ready = poll_for(fd_, POLLIN, std::min(kSlice, remaining(until)));
      if (ready < 0) return false;
      if (ready > 0 && !receive()) return false;
    }
    in_headers_ = true;
    byte_reads_ = 0;
    header_deadline_ = Clock::now() + limits_.header_time;
    header_bytes_ = 0;
    tail_ = 0;
    return true;
  }

  bool is_readable() const override {
    return begin_ != end_ || poll_for(fd_, POLLIN, limits_.silence) > 0;
  }
  bool is_writable() const override { return poll_for(fd_, POLLOUT, limits_.silence) > 0; }

  ssize_t read(char* ptr, size_t size) override {
    if (begin_ == end_ && !refill()) {
      broken_ = true;
      return -1;
    }
    std::size_t n = std::min(size, end_ - begin_);
    if (in_headers_ && (n = take_header_bytes(n)) == 0) {
      broken_ = true;
      return -1;
    }
    byte_reads_ = size == 1 ? byte_reads_ + 1 : 0;
    if (!in_headers_ && byte_reads_ > kMaxByteReads) {
      broken_ = true;
      return -1;
    }
    std::memcpy(ptr, buffer_.data() + begin_, n);
    begin_ += n;
    return static_cast<ssize_t>(n);
  }

  ssize_t write(const char* ptr, size_t size) override {
    for (;;) {
      const ssize_t sent = ::send(fd_, ptr, size, MSG_NOSIGNAL);
      if (sent >= 0) return sent;
      if (errno == EINTR) continue;
      if ((errno != EAGAIN && errno != EWOULDBLOCK) || !is_writable()) return -1;
    }
  }

  void get_remote_ip_and_port(std::string& ip, int& port) const override {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getpeername(fd_, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
      describe_address(address, ip, port);
    }
  }
  void get_local_ip_and_port(std::string& ip, int& port) const override {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
      describe_address(address, ip, port);
    }
  }
  socket_t socket() const override { return fd_; }
  // Whether a read failed or passed a limit: the connection cannot carry another request.
  bool broken() const { return broken_; }

  // Reads and drops what the client still sends, briefly, after our side is shut.
  void linger() {
    const auto until = Clock::now() + kLingerTime;
    for (std::size_t dropped = end_ - begin_; dropped < kLingerBytes;) {
      begin_ = end_ = 0;
      if (Clock::now() >= until || poll_for(fd_, POLLIN, remaining(until)) <= 0 || !receive()) {
        return;
      }
      dropped += end_;
    }
  }

 private:
  static std::chrono::milliseconds remaining(Clock::time_point until) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()) +
           std::chrono::milliseconds(1);
  }

  // Fills the empty buffer, waiting as the phase of the request allows.
  bool refill() {
    if (!in_headers_) return poll_for(fd_, POLLIN, limits_.silence) > 0 && receive();
    while (Clock::now() < header_deadline_ && listener_ != INVALID_SOCKET) {
      const int ready = poll_for(fd_, POLLIN, std::min(kSlice, remaining(header_deadline_)));
      if (ready < 0) return false;
      if (ready > 0) return receive();
    }
    return false;
  }

  bool receive() {
    ssize_t got;
    do {
      got = ::recv(fd_, buffer_.data(), buffer_.size(), 0);
    } while (got < 0 && errno == EINTR);
    if (got <= 0) return false;
    begin_ = 0;
    end_ = static_cast<std::size_t>(got);
    return true;
  }

  // Hands out header bytes up to the blank line that ends them, within the byte budget.
  std::size_t take_header_bytes(std::size_t n) {
    static constexpr char kEnd[] = "\r\n\r\n";
    n = std::min(n, limits_.header_bytes - std::min(limits_.header_bytes, header_bytes_));
    for (std::size_t i = 0; i < n; ++i) {
      const char c = buffer_[begin_ + i];
      tail_ = c == kEnd[tail_] ? tail_ + 1 : (c == '\r' ? 1 : 0);
      if (tail_ == 4) {
        in_headers_ = false;
        byte_reads_ = 0;
        n = i + 1;
        break;
      }
    }
    header_bytes_ += n;
    return n;
  }

  int fd_;
  const ConnectionLimits& limits_;
  const std::atomic<socket_t>& listener_;
  std::array<char, 16 * 1024> buffer_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool in_headers_ = false;
  Clock::time_point header_deadline_;
  std::size_t header_bytes_ = 0;
  std::size_t tail_ = 0;        // how much of "\r\n\r\n" the last header bytes matched
  std::size_t byte_reads_ = 0;  // reads of one byte in a row
  bool broken_ = false;
};

}  // namespace

GuardedServer::GuardedServer(const ConnectionLimits& limits) : limits_(limits) {
  const std::size_t workers = std::max<std::size_t>(1, limits_.workers);
  new_task_queue = [workers] { return new httplib::ThreadPool(workers); };
  // Only for the Keep-Alive header of answers: the loop below applies the limits.
  set_keep_alive_timeout(std::chrono::duration_cast<std::chrono::seconds>(limits_.idle).count());
  set_keep_alive_max_count(limits_.requests_per_connection);
}

void GuardedServer::close_after_answer(httplib::Response& response) {
  response.set_header("Connection", "close");
  close_requested = true;
}

int GuardedServer::bind_listener(const std::string& host, int port) {
  if (port == 0) {
    port = bind_to_any_port(host);
  } else if (!bind_to_port(host, port)) {
    port = -1;
  }
  // listen() again on a listening socket only changes its queue length.
  if (port >= 0 && ::listen(svr_sock_, SOMAXCONN) != 0) return -1;
  return port;
}

bool GuardedServer::process_and_close_socket(socket_t sock) {
  const int on = 1;
  setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  fcntl(sock, F_SETFL, fcntl(sock, F_GETFL, 0) | O_NONBLOCK);

  GuardedStream stream(sock, limits_, svr_sock_);
  bool served = false;
  close_requested = false;
  for (std::size_t count = limits_.requests_per_connection; count > 0 && !close_requested;
       --count) {
    if (!stream.await_request()) break;
    bool connection_closed = false;
    served = process_request(stream, count == 1, connection_closed, nullptr);
    if (!served || connection_closed || stream.broken()) break;
  }
  if (close_requested) {
    ::shutdown(sock, SHUT_WR);
    stream.linger();
  }
  close_requested = false;
  ::shutdown(sock, SHUT_RDWR);
  ::close(sock);
  return served;
}

}  // namespace sandbox
