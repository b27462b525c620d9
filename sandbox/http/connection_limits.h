#pragma once

#include <chrono>
#include <cstddef>

namespace sandbox {

// How long and how much one connection may take before the sandbox gives up on it.
struct ConnectionLimits {
  // The request line and headers must arrive whole within this time and size, so that a
  // client dripping them holds a worker only so long.
  std::chrono::milliseconds header_time{10000};
  std::size_t header_bytes = 64 * 1024;
  // The longest silence while a body is read or an answer written.
  std::chrono::milliseconds silence{10000};
  // How long an idle keep-alive connection is kept; also bounds how long stop() waits.
  std::chrono::milliseconds idle{2000};
  std::size_t requests_per_connection = 1000;
  // Workers serve one connection each; more connections wait for a free one.
  std::size_t workers = 64;
};

}  // namespace sandbox
