#include "http/request_log.h"

#include <chrono>
#include <cstdio>
#include <optional>

#include "soap/clip.h"

namespace sandbox::request_log {
namespace {

using Clock = std::chrono::steady_clock;

struct PendingLine {
  std::optional<Clock::time_point> started;
  std::string call;  // "Service operation", once a service took the request
  std::string key_note;
};

thread_local PendingLine pending;

// Keeps client-chosen text from breaking the one-line format.
std::string printable(std::string_view text) {
  std::string shown = clip(text);
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  }
  return shown;
}

}  // namespace

void begin() {
  pending = {Clock::now(), {}, {}};
}

void describe(std::string_view service, std::string_view operation, std::string_view key_note) {
  pending.call = std::string(service) + ' ' + (operation.empty() ? "-" : printable(operation));
  pending.key_note = key_note;
}

void finish(std::string_view method, std::string_view path, int status) {
  std::string line =
      pending.call.empty() ? printable(method) + ' ' + printable(path) : pending.call;
  line += ' ' + std::to_string(status);
  if (pending.started) {
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - *pending.started);
    line += ' ' + std::to_string(elapsed.count()) + "ms";
  }
  if (!pending.key_note.empty()) line += ' ' + pending.key_note;
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
  pending = {};
}

}  // namespace sandbox::request_log
