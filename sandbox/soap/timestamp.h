#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

using Timestamp = std::chrono::sys_time<std::chrono::milliseconds>;

Timestamp current_time();

// "yyyy-mm-ddThh:mm:ss.fffZ", always UTC.
std::string format_date_time(Timestamp time);

// Reads "yyyy-mm-ddThh:mm:ss[.f...][Z]"; nothing when the text is not such a date.
std::optional<Timestamp> parse_date_time(std::string_view text);

}  // namespace sandbox
