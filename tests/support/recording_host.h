#pragma once

#include <string>
#include <vector>

#include "brenmoor/host.h"

namespace brenmoor::testing {

// A host that keeps every message box instead of showing it.
class RecordingHost : public Host {
 public:
  struct Box {
    std::string text;
    std::string title;
  };

  void messageBox(const std::string& text, const std::string& title) override {
    boxes.push_back({text, title});
  }

  std::vector<Box> boxes;
};

}  // namespace brenmoor::testing
