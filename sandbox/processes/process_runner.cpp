#include "processes/process_runner.h"

#include <algorithm>

#include "crypto/random.h"
#include "soap/faults.h"

namespace sandbox {
namespace {

constexpr int kSteps = 10;
// Bounds what a client can make the sandbox hold on to.
constexpr int kMaxRunning = 64;
constexpr std::size_t kMaxRemembered = 1000;

// Names the item being worked on: "Clearing templates 2 of 5".
std::string progress_message(const ProcessPlan& plan, int steps_done) {
  const int item = (plan.item_count * steps_done + kSteps - 1) / kSteps;
  return plan.activity + " " + std::to_string(item) + " of " + std::to_string(plan.item_count);
}

}  // namespace

ProcessRunner::ProcessRunner(Database& db, std::mutex& store_mutex, std::chrono::milliseconds step)
    : db_(db), store_mutex_(store_mutex), step_(step) {
  worker_ = std::thread([this] { run(); });
}

ProcessRunner::~ProcessRunner() {
  stop();
}

std::string ProcessRunner::start(ProcessPlan plan) {
  const std::lock_guard lock(mutex_);
  if (stopping_) throw ServerException("The sandbox is shutting down");
  if (running_ >= kMaxRunning) throw ServerException("Too many processes running; try later");

  Process process{std::move(plan), {}, 0, Clock::now() + step_};
  process.status.kind = process.plan.kind;
  process.status.owner = process.plan.owner;
  process.status.message = progress_message(process.plan, 0);
  std::string id = random_guid();
  processes_.emplace(id, std::move(process));
  ++running_;
  wake_.notify_one();
  return id;
}

std::optional<ProcessStatus> ProcessRunner::status(std::string_view id) const {
  const std::lock_guard lock(mutex_);
  const auto found = processes_.find(id);
  if (found == processes_.end()) return std::nullopt;
  return found->second.status;
}

void ProcessRunner::stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  if (worker_.joinable()) worker_.join();
}

void ProcessRunner::run() {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    for (const std::string& id : advance_due(Clock::now())) {
      finish(id, lock);
      if (stopping_) return;
    }
    std::optional<Clock::time_point> next;
    for (const auto& [id, process] : processes_) {
      if (process.status.complete) continue;
      next = next ? std::min(*next, process.next_step) : process.next_step;
    }
    // A new process or stop() wakes the wait early; the loop then looks again.
    if (next) {
      wake_.wait_until(lock, *next);
    } else {
      wake_.wait(lock);
    }
  }
}

std::vector<std::string> ProcessRunner::advance_due(Clock::time_point now) {
  std::vector<std::string> at_last_step;
  for (auto& [id, process] : processes_) {
    if (process.status.complete || process.next_step > now) continue;
    ++process.steps_done;
    process.next_step += step_;
    // The last step only makes the change; percent reaches 100 together with completion.
    if (process.steps_done == kSteps) {
      at_last_step.push_back(id);
      continue;
    }
    process.status.percent = static_cast<std::int16_t>(process.steps_done * 100 / kSteps);
    process.status.message = progress_message(process.plan, process.steps_done);
  }
  return at_last_step;
}

void ProcessRunner::finish(const std::string& id, std::unique_lock<std::mutex>& lock) {
  const auto work = std::move(processes_.at(id).plan.finish);
  // The store lock is never taken while holding ours: handlers call start() and status()
  // with the store lock held.
  lock.unlock();
  bool outcome = false;
  std::string failure;
  try {
    const std::lock_guard store(store_mutex_);
    outcome = work(db_);
  } catch (const std::exception& error) {
    failure = error.what();
  }
  lock.lock();

  Process& process = processes_.at(id);
  process.status.complete = true;
  process.status.percent = 100;
  process.status.outcome = outcome;
  process.status.message = failure.empty() ? "Complete" : "Failed: " + failure;
  --running_;
  forget_old_processes();
  finished_order_.push_back(id);
}

void ProcessRunner::forget_old_processes() {
  while (finished_order_.size() >= kMaxRemembered) {
    processes_.erase(finished_order_.front());
    finished_order_.pop_front();
  }
}

}  // namespace sandbox
