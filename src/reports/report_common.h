#pragma once
// What every report operation shares: its service, no key, and the start of its date range.

#include <optional>
#include <string_view>

#include "brenmoor/date.h"
#include "service/call.h"

namespace brenmoor::reports {

// Reports send no key: the session cookie of the sign-in carries the account.
template <class Result>
constexpr auto reportOperation(std::string_view name) {
  return service::Operation<Result>(name, service::Service::Reports).keyless();
}

// A range without a start runs from the zero date; one without an end goes on the wire as now
// (the pipeline's reading of an empty optional date).
inline Date startOf(const std::optional<Date>& start) {
  return start.value_or(Date());
}

}  // namespace brenmoor::reports
