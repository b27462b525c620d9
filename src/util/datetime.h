#pragma once
// XML Schema dateTime on the wire.

#include <string>
#include <string_view>

#include "brenmoor/date.h"

namespace brenmoor::util {

// "yyyy-mm-ddThh:mm:ssZ", with ".fff" before the Z when the milliseconds are not zero.
std::string formatDateTime(const Date& utc);

// Reads yyyy-mm-ddThh:mm:ss[.fff][Z|+hh:mm|-hh:mm] into UTC (no zone: taken as UTC). Throws
// Error::TypeMismatch for any other text.
Date parseDateTime(std::string_view text);

}  // namespace brenmoor::util
