#include "sandbox_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>

namespace brenmoor::testing {
namespace {

// Standard input is /dev/null, so that no child waits for a terminal.
pid_t spawn(const std::vector<std::string>& argv, int stdoutFd, int stderrFd = STDERR_FILENO) {
  std::vector<char*> args;
  for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  pid_t pid = fork();
  if (pid == 0) {
    dup2(stdoutFd, STDOUT_FILENO);
    dup2(stderrFd, STDERR_FILENO);
    const int nothing = open("/dev/null", O_RDONLY);
    if (nothing >= 0) dup2(nothing, STDIN_FILENO);
    execv(args[0], args.data());
    _exit(127);
  }
  return pid;
}

// Reads what the child writes until `done` says it is enough, the pipe closes or time runs out.
template <class Done>
std::string readUntil(int fd, std::chrono::milliseconds limit, Done done) {
  std::string text;
  auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done(text)) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, static_cast<int>(left.count())) <= 0) break;
    char buf[4096];
    ssize_t n = read(fd, buf, sizeof buf);
    if (n <= 0) break;
    text.append(buf, static_cast<size_t>(n));
  }
  return text;
}

}  // namespace

SandboxProcess::SandboxProcess(const std::vector<std::string>& options) {
  std::mt19937_64 random{std::random_device{}()};
  dataDir_ =
      std::filesystem::temp_directory_path() / ("telvane-sandbox-" + std::to_string(random()));
  std::vector<std::string> argv = {BRENMOOR_SANDBOX_PATH, "--port", "0", "--data",
                                   dataDir_.string()};
  argv.insert(argv.end(), options.begin(), options.end());

  int fds[2];
  if (pipe(fds) != 0) throw std::runtime_error("pipe failed");
  pid_ = spawn(argv, fds[1]);
  close(fds[1]);
  const std::string marker = "listening on ";
  std::string out = readUntil(fds[0], std::chrono::seconds(10), [&](const std::string& t) {
    auto at = t.find(marker);
    return at != std::string::npos && t.find('\n', at) != std::string::npos;
  });
  close(fds[0]);
  auto at = out.find(marker);
  if (pid_ < 0 || at == std::string::npos) {
    throw std::runtime_error("the sandbox did not start; it printed: " + out);
  }
  baseUrl_ = out.substr(at + marker.size(), out.find('\n', at) - at - marker.size());
}

SandboxProcess::~SandboxProcess() {
  if (pid_ > 0) {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
  }
  std::error_code ignored;
  std::filesystem::remove_all(dataDir_, ignored);
}

ProgramRun runProgram(const std::vector<std::string>& argv) {
  int fds[2];
  if (pipe(fds) != 0) throw std::runtime_error("pipe failed");
  // A file, not a second pipe: a child that fills one pipe while we read the other would stall.
  std::unique_ptr<FILE, int (*)(FILE*)> err(std::tmpfile(), &std::fclose);
  if (!err) throw std::runtime_error("tmpfile failed");
  pid_t pid = spawn(argv, fds[1], fileno(err.get()));
  close(fds[1]);
  ProgramRun run;
  run.out = readUntil(fds[0], std::chrono::seconds(60), [](const std::string&) { return false; });
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::rewind(err.get());
  char buf[4096];
  for (size_t n; (n = std::fread(buf, 1, sizeof buf, err.get())) > 0;) run.err.append(buf, n);
  return run;
}

}  // namespace brenmoor::testing
