#pragma once

#include <optional>
#include <string_view>

namespace sandbox {

// The value of the cookie `name` among the "name=value; ..." pairs of a Cookie header.
std::optional<std::string_view> cookie_value(std::string_view header, std::string_view name);

}  // namespace sandbox
