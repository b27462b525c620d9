#pragma once
// The terminal: a password prompt without echo, and Ctrl-C that leaves the terminal as it was
// or cancels the work in progress.

#include <string>

namespace brenmoor::cli {

// Makes SIGINT end the program with status 130, restoring the echo if a prompt had turned it
// off.
void exitOnInterrupt();

// While it lives, SIGINT only raises a flag for long work to look at (Ctrl-C then ends that
// work cleanly); the handler of exitOnInterrupt() comes back afterwards.
class InterruptCatcher {
 public:
  InterruptCatcher();
  ~InterruptCatcher();
  InterruptCatcher(const InterruptCatcher&) = delete;
  InterruptCatcher& operator=(const InterruptCatcher&) = delete;
  bool caught() const;
};

// Writes `prompt` to standard error and reads one line from standard input (a terminal)
// without echoing it. False when nothing could be read.
bool readHiddenLine(const std::string& prompt, std::string& line);

}  // namespace brenmoor::cli
