#pragma once

#include <httplib.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox::testing {

// The telvane-sandbox program on a free loopback port, serving `data_dir` (kept when it
// ends, so that another can be started on it). Stopped with SIGTERM at the end of its life.
class ChildSandbox {
 public:
  // `log_file`, when given, receives the program's stderr.
  ChildSandbox(const std::filesystem::path& data_dir, const std::vector<std::string>& options = {},
               const std::filesystem::path& log_file = {});
  ~ChildSandbox();
  ChildSandbox(const ChildSandbox&) = delete;
  ChildSandbox& operator=(const ChildSandbox&) = delete;

  int port() const { return port_; }
  // Ends the process with SIGKILL, as a crash would, and reaps it.
  void kill_hard();
  // The process's resident and peak resident memory, in KiB.
  long rss_kib() const { return status_kib("VmRSS:"); }
  long peak_rss_kib() const { return status_kib("VmHWM:"); }

 private:
  long status_kib(std::string_view field) const;

  pid_t pid_ = -1;
  int port_ = 0;
};

// A plain TCP connection to 127.0.0.1, for requests no HTTP client would send.
class RawConnection {
 public:
  explicit RawConnection(int port);
  ~RawConnection();
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  // False once the peer no longer takes bytes.
  bool send(std::string_view bytes);
  // `text` and what arrives within `wait`, up to the peer's close or a whole answer (headers
  // and the body bytes they announce); an answer may come in pieces, so pass on a part.
  std::string receive(std::chrono::milliseconds wait, std::string text = {});

 private:
  int fd_ = -1;
};

// A signed-in session of the demo user over one keep-alive connection.
class SoapSession {
 public:
  explicit SoapSession(int port);

  // Signs in and selects account 1001; false when the sandbox does not answer so.
  bool sign_in();
  std::string key();
  // POSTs the operation's envelope; status 0 when no answer came.
  struct Result {
    int status = 0;
    std::string body;
    std::string value;  // the text of the wrapper's return element, if any
  };
  Result call(std::string_view service, std::string_view ns, std::string_view operation,
              std::string_view arguments = "");
  Result post(const std::string& path_and_query, const std::string& body);

  httplib::Client http;
  std::string token;
  std::string secret;
  std::int64_t counter = 1;
  std::string last_body;  // of the last call, for failure messages
};

}  // namespace sandbox::testing
