#pragma once
// What the library shows the user goes through a Host, so that a desktop application can use
// its own dialogs, a service can log instead, and tests can record. Calls come on the thread
// that called the library.

#include <string>

namespace brenmoor {

class Host {
 public:
  virtual ~Host() = default;

  // Shows `text` and returns once the user has seen it. An empty title means the host's own
  // default title.
  virtual void messageBox(const std::string& text, const std::string& title) = 0;

  // Lets the host's message loop run; called during long operations.
  virtual void yield() {}
};

// Writes each message box to standard error as one line, "title: text" (the text alone when
// the title is empty), and never blocks. The default host of every ZylService.
class StderrHost : public Host {
 public:
  void messageBox(const std::string& text, const std::string& title) override;
};

}  // namespace brenmoor
