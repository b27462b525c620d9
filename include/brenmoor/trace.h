#pragma once
// A look at the wire: a service object set up with ZylService::setTraceHandler() hands each
// HTTP exchange to the handler once it is over, answered or not. For logging and debugging;
// the texts are exactly what went and came, secrets included, so mask before showing them.

#include <chrono>
#include <functional>
#include <string_view>

namespace brenmoor {

struct Exchange {
  std::string_view method;  // "POST"
  std::string_view url;
  std::string_view soapAction;  // the SOAPAction header's value, without its quotes
  long status = 0;              // the HTTP status; 0 when none arrived
  std::chrono::microseconds elapsed{0};
  std::string_view request;  // the request body
  std::string_view answer;   // the answer body as far as it arrived (decoded from gzip)
  std::string_view failure;  // why the exchange failed; empty when an answer arrived
};

// Called on the thread that made the call, after the exchange and before the answer is read.
using TraceHandler = std::function<void(const Exchange&)>;

}  // namespace brenmoor
