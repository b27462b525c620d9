#pragma once

#include <string>
#include <string_view>

namespace sandbox {

// Appends text as XML character data or attribute content.
void append_escaped(std::string& out, std::string_view text);

}  // namespace sandbox
