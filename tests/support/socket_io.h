#pragma once

#include <cstdint>
#include <string_view>

namespace brenmoor::testing {

// Owns a file descriptor and closes it once.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept;
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd();

  int get() const { return fd_; }
  int release();

 private:
  int fd_ = -1;
};

// A TCP socket bound to 127.0.0.1 on a port the OS picks; throws std::system_error.
UniqueFd bindLoopback(uint16_t port = 0);
uint16_t localPort(int fd);

// Sends everything, never raising SIGPIPE. False when the peer is gone.
bool sendAll(int fd, std::string_view bytes);

// Ends our side, then reads and discards what the peer is still sending, for a bounded time, so
// that closing does not reset the connection before the peer has read our last answer.
void finishWriting(int fd);

}  // namespace brenmoor::testing
