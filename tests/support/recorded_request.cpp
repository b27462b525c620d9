#include "recorded_request.h"

#include "ascii.h"

namespace brenmoor::testing {

std::string RecordedRequest::header(std::string_view name) const {
  for (const auto& [key, value] : headers) {
    if (ascii::equalsIgnoreCase(key, name)) return value;
  }
  return {};
}

}  // namespace brenmoor::testing
