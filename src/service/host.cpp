#include "brenmoor/host.h"

#include <iostream>

namespace brenmoor {

void StderrHost::messageBox(const std::string& text, const std::string& title) {
  if (title.empty()) {
    std::cerr << text << '\n';
  } else {
    std::cerr << title << ": " << text << '\n';
  }
}

}  // namespace brenmoor
