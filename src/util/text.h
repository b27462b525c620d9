#pragma once
// XML escaping, shared by the request envelope and the library's own XML forms.

#include <string>
#include <string_view>

namespace brenmoor::util {

// Appends `text` with & < > and " escaped, and ' too when asked (an existing entity is escaped
// again).
void appendEscaped(std::string& out, std::string_view text, bool apostrophe);

}  // namespace brenmoor::util
