// Authenticated calls per second against the Telvane sandbox, many clients at once:
//
//   brenmoor_sandbox_load TARGET [CLIENTS=8] [SECONDS=5]
//
// TARGET is a running sandbox's base URL (http://127.0.0.1:PORT) or the path of the
// telvane-sandbox program, which is then started on a fresh data folder for the run.
// Each client signs in as the demo user (its own session) and then sends keyed
// getUserAccounts calls back to back on one keep-alive connection; the figures are calls/s
// and the p50/p99 of one call. Plain sockets and a prepared envelope keep the client's own
// cost small, since client and sandbox share the machine's cores.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/evp.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

std::string md5Hex(const std::string& text) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  EVP_Digest(text.data(), text.size(), digest, &size, EVP_md5(), nullptr);
  static const char* digits = "0123456789abcdef";
  std::string hex;
  for (unsigned int i = 0; i < size; ++i) {
    hex += digits[digest[i] >> 4];
    hex += digits[digest[i] & 15];
  }
  return hex;
}

std::string envelope(const std::string& ns, const std::string& operation,
                     const std::string& arguments) {
  return "<S:Envelope xmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\" "
         "xmlns:XS=\"http://www.w3.org/2001/XMLSchema\" "
         "xmlns:XI=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:a=\"" +
         ns + "\"><S:Body><a:" + operation + ">" + arguments + "</a:" + operation +
         "></S:Body></S:Envelope>";
}

std::string stringArg(const std::string& name, const std::string& text) {
  return "<" + name + " XI:type=\"XS:string\">" + text + "</" + name + ">";
}

// The text of the first element named `name` in `xml`.
std::string elementText(const std::string& xml, const std::string& name) {
  const auto open = xml.find("<" + name);
  const auto start = open == std::string::npos ? open : xml.find('>', open);
  const auto end = start == std::string::npos ? start : xml.find('<', start);
  return end == std::string::npos ? std::string() : xml.substr(start + 1, end - start - 1);
}

// One keep-alive HTTP/1.1 connection; reconnects when the server closes it.
class Connection {
 public:
  explicit Connection(int port) : port_(port) {}
  ~Connection() { disconnect(); }

  int connections = 0;  // how many times it connected

  // The answer's status and body; throws when the exchange fails.
  std::pair<int, std::string> post(const std::string& path, const std::string& body) {
    if (fd_ < 0) connect();
    const std::string request = "POST " + path +
                                " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: text/xml; "
                                "charset=UTF-8\r\nSOAPAction: \"\"\r\nContent-Length: " +
                                std::to_string(body.size()) + "\r\n\r\n" + body;
    for (std::size_t sent = 0; sent < request.size();) {
      const ssize_t n = ::send(fd_, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
      if (n <= 0) throw std::runtime_error("send failed");
      sent += static_cast<std::size_t>(n);
    }
    std::size_t headerEnd;
    while ((headerEnd = buffer_.find("\r\n\r\n")) == std::string::npos) fill();
    const std::string head = buffer_.substr(0, headerEnd);
    const int status = std::atoi(head.c_str() + head.find(' ') + 1);
    const auto lengthAt = head.find("Content-Length: ");
    if (lengthAt == std::string::npos) throw std::runtime_error("answer without a length");
    const std::size_t length = std::strtoull(head.c_str() + lengthAt + 16, nullptr, 10);
    while (buffer_.size() < headerEnd + 4 + length) fill();
    std::string answer = buffer_.substr(headerEnd + 4, length);
    buffer_.erase(0, headerEnd + 4 + length);
    if (head.find("Connection: close") != std::string::npos) disconnect();
    return {status, answer};
  }

 private:
  void connect() {
    fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port_));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("cannot connect");
    }
    const int on = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ++connections;
  }
  void disconnect() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    buffer_.clear();
  }
  void fill() {
    char chunk[16384];
    const ssize_t n = ::recv(fd_, chunk, sizeof chunk, 0);
    if (n <= 0) throw std::runtime_error("connection closed mid-answer");
    buffer_.append(chunk, static_cast<std::size_t>(n));
  }

  int port_;
  int fd_ = -1;
  std::string buffer_;
};

struct ClientResult {
  std::vector<double> micros;  // one per successful call
  long failures = 0;
  int connections = 0;
  std::string problem;
};

void runClient(int port, Clock::time_point until, ClientResult& result) {
  try {
    Connection connection(port);
    const std::string challenge = elementText(
        connection.post("/services/Login", envelope("urn:telvane-login", "getChallenge", ""))
            .second,
        "getChallengeReturn");
    const std::string secret = md5Hex(challenge + md5Hex("demo"));
    const auto login = connection.post(
        "/services/Login",
        envelope("urn:telvane-login", "userLogin",
                 stringArg("challenge", challenge) + stringArg("response", md5Hex("0" + secret)) +
                     stringArg("username", "demo@example.com")));
    const std::string token = elementText(login.second, "userLoginReturn");
    if (login.first != 200 || token.empty()) throw std::runtime_error("sign-in failed");

    for (long counter = 1; Clock::now() < until; ++counter) {
      const std::string n = std::to_string(counter);
      const std::string body =
          envelope("urn:telvane-login", "getUserAccounts",
                   stringArg("key", token + ":" + n + ":" + md5Hex(n + secret)));
      const auto started = Clock::now();
      const auto answer = connection.post("/services/Login", body);
      const std::chrono::duration<double, std::micro> took = Clock::now() - started;
      if (answer.first == 200 &&
          answer.second.find("getUserAccountsResponse") != std::string::npos) {
        result.micros.push_back(took.count());
      } else {
        ++result.failures;
      }
    }
    result.connections = connection.connections;
  } catch (const std::exception& error) {
    result.problem = error.what();
  }
}

struct StartedSandbox {
  pid_t pid = -1;
  std::filesystem::path data;
  ~StartedSandbox() {
    if (pid > 0) {
      kill(pid, SIGTERM);
      waitpid(pid, nullptr, 0);
    }
    std::error_code ignored;
    if (!data.empty()) std::filesystem::remove_all(data, ignored);
  }
};

// Starts the sandbox program and answers its port.
int startSandbox(const std::string& program, StartedSandbox& started) {
  started.data =
      std::filesystem::temp_directory_path() / ("sandbox-load-" + std::to_string(getpid()));
  int fds[2];
  if (pipe(fds) != 0) throw std::runtime_error("pipe failed");
  started.pid = fork();
  if (started.pid == 0) {
    dup2(fds[1], STDOUT_FILENO);
    execl(program.c_str(), program.c_str(), "--port", "0", "--data", started.data.c_str(),
          static_cast<char*>(nullptr));
    _exit(127);
  }
  close(fds[1]);
  std::string out;
  char chunk[256];
  for (ssize_t n;
       out.find('\n') == std::string::npos && (n = read(fds[0], chunk, sizeof chunk)) > 0;) {
    out.append(chunk, static_cast<std::size_t>(n));
  }
  close(fds[0]);
  const auto colon = out.rfind(':');
  if (out.rfind("listening on ", 0) != 0 || colon == std::string::npos) {
    throw std::runtime_error("the sandbox did not start: " + out);
  }
  return std::atoi(out.c_str() + colon + 1);
}

double percentile(const std::vector<double>& sorted, double share) {
  if (sorted.empty()) return 0;
  return sorted[std::min(sorted.size() - 1, static_cast<std::size_t>(share * sorted.size()))];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s URL|SANDBOX-PROGRAM [CLIENTS=8] [SECONDS=5]\n", argv[0]);
    return 2;
  }
  const std::string target = argv[1];
  const int clients = argc > 2 ? std::atoi(argv[2]) : 8;
  const double seconds = argc > 3 ? std::atof(argv[3]) : 5;
  try {
    StartedSandbox started;
    const int port = target.rfind("http://", 0) == 0
                         ? std::atoi(target.c_str() + target.rfind(':') + 1)
                         : startSandbox(target, started);

    const auto begun = Clock::now();
    const auto until =
        begun + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    std::vector<ClientResult> results(static_cast<std::size_t>(clients));
    std::vector<std::thread> threads;
    for (auto& result : results) threads.emplace_back(runClient, port, until, std::ref(result));
    for (auto& thread : threads) thread.join();
    const std::chrono::duration<double> took = Clock::now() - begun;

    std::vector<double> all;
    long failures = 0;
    int connections = 0;
    for (const auto& result : results) {
      if (!result.problem.empty()) std::fprintf(stderr, "client: %s\n", result.problem.c_str());
      all.insert(all.end(), result.micros.begin(), result.micros.end());
      failures += result.failures;
      connections += result.connections;
    }
    std::sort(all.begin(), all.end());
    std::printf(
        "%d clients, %.1f s: %zu calls, %.0f calls/s, p50 %.2f ms, p99 %.2f ms, max %.2f ms, "
        "%ld failed, %d connections\n",
        clients, took.count(), all.size(), static_cast<double>(all.size()) / took.count(),
        percentile(all, 0.50) / 1000, percentile(all, 0.99) / 1000,
        all.empty() ? 0.0 : all.back() / 1000, failures, connections);
    return failures == 0 && all.size() > 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
