#pragma once
// A report range runs from its start date to its end date; an end that is not given goes on the
// wire as now (the pipeline's reading of an empty optional date).

#include <optional>

#include "brenmoor/date.h"

namespace brenmoor::reports {

// No start: the zero date, so the range is open at its start.
inline Date startOf(const std::optional<Date>& start) {
  return start.value_or(Date());
}

}  // namespace brenmoor::reports
