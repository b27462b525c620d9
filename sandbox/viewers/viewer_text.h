#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sandbox {

// What a viewer sent, made safe to keep and to answer: valid UTF-8 only, no control
// characters (line breaks kept only when `multiline`), at most `max_chars` characters.
std::string viewer_text(std::string_view text, std::size_t max_chars, bool multiline = false);

}  // namespace sandbox
