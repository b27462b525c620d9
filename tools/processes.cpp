// Following the service's background processes (clearing, terminating) to their end.

#include <chrono>
#include <iostream>
#include <thread>

#include "commands.h"
#include "exit_codes.h"

namespace brenmoor::cli {

bool followProcess(ZylService& service, Context& context, const std::string& procGuid,
                   const std::string& what) {
  constexpr int kMaxPolls = 600;
  constexpr auto kInterval = std::chrono::milliseconds(200);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
  for (int polls = 0; polls < kMaxPolls && std::chrono::steady_clock::now() < deadline; ++polls) {
    CallWatch watch(service);
    const bool complete = service.isProcessComplete(procGuid);
    if (watch.failed()) {
      context.status = failed(service, "following " + what);
      return false;
    }
    if (complete) return true;
    const int16_t percent = service.getProcessPercentComplete(procGuid);
    const std::string message = service.getProcessMessage(procGuid);
    if (!context.quiet) std::cerr << percent << "% " << message << '\n';
    std::this_thread::sleep_for(kInterval);
  }
  std::cerr << "brenmoor: " << what << " did not finish in time; it goes on in the service\n";
  context.status = kCallFailed;
  return false;
}

}  // namespace brenmoor::cli
