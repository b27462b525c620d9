#pragma once
// The progress of an upload on standard error. On a terminal: one line redrawn in place, at
// most 10 times a second, with a bar, the percent, the bytes, the rate and the time left.
// Otherwise: a plain line whenever another tenth of the whole has gone, for logs.

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

namespace brenmoor::cli {

class ProgressBar {
 public:
  ProgressBar(uint64_t totalBytes, bool terminal, std::ostream& out);

  // `done` bytes of the whole have gone, the last of them from `file`.
  void update(uint64_t done, const std::string& file);
  // Ends a line drawn on a terminal so that other text may follow; the next update draws anew.
  void breakLine();
  // Draws the last state and ends the line on a terminal.
  void finish();

 private:
  void draw(bool force);
  std::string line() const;

  using Clock = std::chrono::steady_clock;
  uint64_t total_, done_ = 0;
  bool terminal_;
  std::ostream& out_;
  std::string file_;
  Clock::time_point start_ = Clock::now(), lastDrawn_{};
  int lastTenth_ = -1;
  bool drawn_ = false;
};

}  // namespace brenmoor::cli
