#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brenmoor::testing {

// One HTTP request exactly as the server received it.
struct RecordedRequest {
  std::string method;
  std::string target;
  std::vector<std::pair<std::string, std::string>> headers;  // in order, as received
  std::string body;                                          // decoded when chunked
  int connection = 0;  // 1-based index of the TCP connection it arrived on

  // First value of the named header, matched case-insensitively; "" when absent.
  std::string header(std::string_view name) const;
};

}  // namespace brenmoor::testing
