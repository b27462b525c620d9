#pragma once

#include <strings.h>

#include <string>
#include <utility>
#include <vector>

namespace brenmoor::testing {

// One HTTP request exactly as the server received it.
struct RecordedRequest {
  std::string method;
  std::string target;
  std::vector<std::pair<std::string, std::string>> headers;  // in order, as received
  std::string body;

  // First value of the named header, matched case-insensitively; "" when absent.
  std::string header(const std::string& name) const {
    for (const auto& [key, value] : headers) {
      if (strcasecmp(key.c_str(), name.c_str()) == 0) return value;
    }
    return {};
  }
};

}  // namespace brenmoor::testing
