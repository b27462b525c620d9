#include "sandbox_child.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "crypto/digest.h"
#include "sandbox_fixture.h"

namespace sandbox::testing {

ChildSandbox::ChildSandbox(const std::filesystem::path& data_dir,
                           const std::vector<std::string>& options,
                           const std::filesystem::path& log_file) {
  std::vector<std::string> argv = {TELVANE_SANDBOX_PATH, "--port", "0", "--data",
                                   data_dir.string()};
  argv.insert(argv.end(), options.begin(), options.end());
  std::vector<char*> args;
  for (auto& a : argv) args.push_back(a.data());
  args.push_back(nullptr);

  int fds[2];
  if (pipe(fds) != 0) throw std::runtime_error("pipe failed");
  const int log_fd =
      log_file.empty() ? -1 : open(log_file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  pid_ = fork();
  if (pid_ == 0) {
    dup2(fds[1], STDOUT_FILENO);
    if (log_fd >= 0) dup2(log_fd, STDERR_FILENO);
    execv(args[0], args.data());
    _exit(127);
  }
  close(fds[1]);
  if (log_fd >= 0) close(log_fd);
  std::string out;
  char chunk[256];
  pollfd ready{fds[0], POLLIN, 0};
  while (out.find('\n') == std::string::npos && poll(&ready, 1, 10000) > 0) {
    const ssize_t n = read(fds[0], chunk, sizeof chunk);
    if (n <= 0) break;
    out.append(chunk, static_cast<std::size_t>(n));
  }
  close(fds[0]);
  const auto colon = out.rfind(':');
  if (out.rfind("listening on ", 0) != 0 || colon == std::string::npos) {
    kill_hard();
    throw std::runtime_error("the sandbox did not start: " + out);
  }
  port_ = std::stoi(out.substr(colon + 1));
}

ChildSandbox::~ChildSandbox() {
  if (pid_ > 0) {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
}

void ChildSandbox::kill_hard() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = -1;
}

long ChildSandbox::status_kib(std::string_view field) const {
  std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field)) return std::stol(line.substr(field.size()));
  }
  return -1;
}

RawConnection::RawConnection(int port) : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("cannot connect");
  }
}

RawConnection::~RawConnection() {
  ::close(fd_);
}

bool RawConnection::send(std::string_view bytes) {
  while (!bytes.empty()) {
    pollfd ready{fd_, POLLOUT, 0};
    if (poll(&ready, 1, 2000) <= 0) return false;
    const ssize_t n = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (n <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

namespace {

// Whether `text` holds an answer's headers and the body bytes they announce.
bool whole_answer(const std::string& text) {
  const auto end = text.find("\r\n\r\n");
  const auto length = text.find("\r\nContent-Length: ");
  if (end == std::string::npos || length == std::string::npos || length > end) return false;
  return text.size() - end - 4 >= std::stoul(text.substr(length + 18));
}

}  // namespace

std::string RawConnection::receive(std::chrono::milliseconds wait, std::string text) {
  const auto until = std::chrono::steady_clock::now() + wait;
  while (!whole_answer(text)) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        until - std::chrono::steady_clock::now());
    pollfd ready{fd_, POLLIN, 0};
    if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) break;
    char chunk[4096];
    const ssize_t n = ::recv(fd_, chunk, sizeof chunk, 0);
    if (n <= 0) break;
    text.append(chunk, static_cast<std::size_t>(n));
  }
  return text;
}

SoapSession::SoapSession(int port) : http("127.0.0.1", port) {
  http.set_read_timeout(std::chrono::seconds(10));
  // One connection per session, as the library keeps it: a connection per call would also
  // leave thousands of ports waiting out TIME_WAIT.
  http.set_keep_alive(true);
  http.set_tcp_nodelay(true);
}

bool SoapSession::sign_in() {
  const std::string challenge = call("Login", kLoginNs, "getChallenge").value;
  if (challenge.empty()) return false;
  secret = md5_hex(challenge + md5_hex("demo"));
  token = call("Login", kLoginNs, "userLogin",
               arg("challenge", "string", challenge) +
                   arg("response", "string", md5_hex("0" + secret)) +
                   arg("username", "string", "demo@example.com"))
              .value;
  return !token.empty() &&
         call("Login", kLoginNs, "selectAccount", key() + arg("account_id", "int", "1001")).value ==
             "true";
}

std::string SoapSession::key() {
  const std::string n = std::to_string(counter++);
  return arg("key", "string", token + ":" + n + ":" + md5_hex(n + secret));
}

SoapSession::Result SoapSession::call(std::string_view service, std::string_view ns,
                                      std::string_view operation, std::string_view arguments) {
  const std::string op(operation);
  return post("/services/" + std::string(service),
              "<S:Envelope xmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\" "
              "xmlns:XS=\"http://www.w3.org/2001/XMLSchema\" "
              "xmlns:XI=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:a=\"" +
                  std::string(ns) + "\"><S:Body><a:" + op + ">" + std::string(arguments) +
                  "</a:" + op + "></S:Body></S:Envelope>");
}

SoapSession::Result SoapSession::post(const std::string& path_and_query, const std::string& body) {
  Result result;
  const auto answer = http.Post(path_and_query, body, "text/xml; charset=UTF-8");
  if (!answer) {
    result.body = last_body = "no answer: " + httplib::to_string(answer.error());
    return result;
  }
  result.status = answer->status;
  result.body = last_body = answer->body;
  const auto open = result.body.find("Return ");
  const auto start = open == std::string::npos ? open : result.body.find('>', open);
  const auto end = start == std::string::npos ? start : result.body.find('<', start);
  if (end != std::string::npos) result.value = result.body.substr(start + 1, end - start - 1);
  return result;
}

}  // namespace sandbox::testing
