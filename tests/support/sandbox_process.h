#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace brenmoor::testing {

// Runs the Telvane sandbox on a free loopback port with a fresh data folder, for the life of
// the object. Throws std::runtime_error when it does not come up within a few seconds.
class SandboxProcess {
 public:
  // `options` are more of the sandbox's command-line options.
  explicit SandboxProcess(const std::vector<std::string>& options = {});
  ~SandboxProcess();
  SandboxProcess(const SandboxProcess&) = delete;
  SandboxProcess& operator=(const SandboxProcess&) = delete;

  const std::string& baseUrl() const { return baseUrl_; }
  const std::filesystem::path& dataDir() const { return dataDir_; }

 private:
  pid_t pid_ = -1;
  std::filesystem::path dataDir_;
  std::string baseUrl_;
};

// Runs a program to completion, standard input empty, and keeps its exit status and output.
struct ProgramRun {
  int status = -1;
  std::string out;
  std::string err;
};
ProgramRun runProgram(const std::vector<std::string>& argv);

}  // namespace brenmoor::testing
