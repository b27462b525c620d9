#pragma once

#include <string_view>

namespace sandbox {

// Refuses (InvalidArgument fault) text longer than `limit` bytes or holding control
// characters, which could break the headers and records it ends up in.
void require_plain_text(std::string_view what, std::string_view text, std::size_t limit);

// Refuses (InvalidArgument fault) anything that is not a plausible single e-mail address.
void require_email(std::string_view text);

}  // namespace sandbox
