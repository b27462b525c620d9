#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace sandbox {

class Database;

// What a long-running process does: it counts through its items in steps, then makes its
// change in one go at the end.
struct ProcessPlan {
  std::string kind;      // the operation family, e.g. "clearProject"; results are asked per kind
  std::int64_t owner;    // the user who may ask for the result
  std::string activity;  // for the progress message, e.g. "Clearing templates"
  int item_count = 0;    // what the progress message counts
  // The real change, run once under the store lock; answers the process's outcome.
  std::function<bool(Database&)> finish;
};

struct ProcessStatus {
  std::string kind;
  std::int64_t owner = 0;
  bool complete = false;
  std::int16_t percent = 0;
  std::string message;
  bool outcome = false;  // meaningful once complete
};

// Runs processes on one background thread, each in a fixed number of timed steps, so that
// a client polling sees them progress. Stopping abandons unfinished processes and joins the
// thread before the store can go away.
class ProcessRunner {
 public:
  ProcessRunner(Database& db, std::mutex& store_mutex, std::chrono::milliseconds step);
  ~ProcessRunner();
  ProcessRunner(const ProcessRunner&) = delete;
  ProcessRunner& operator=(const ProcessRunner&) = delete;

  // Answers the new process's id. Throws ServerException when too many are running.
  std::string start(ProcessPlan plan);
  std::optional<ProcessStatus> status(std::string_view id) const;
  // Safe to call more than once.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;
  struct Process {
    ProcessPlan plan;
    ProcessStatus status;
    int steps_done = 0;
    Clock::time_point next_step;
  };

  void run();
  // Advances every process that is due; answers those that reached their last step.
  std::vector<std::string> advance_due(Clock::time_point now);
  void finish(const std::string& id, std::unique_lock<std::mutex>& lock);
  void forget_old_processes();

  Database& db_;
  std::mutex& store_mutex_;
  const std::chrono::milliseconds step_;

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  bool stopping_ = false;
  std::map<std::string, Process, std::less<>> processes_;
  std::deque<std::string> finished_order_;  // oldest first, for forgetting
  int running_ = 0;
  std::thread worker_;
};

}  // namespace sandbox
