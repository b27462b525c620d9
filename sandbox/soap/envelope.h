#pragma once

#include <string>
#include <string_view>

namespace sandbox {

// The answer envelope around the given Body entries.
std::string wrap_in_envelope(std::string_view body_entries);

}  // namespace sandbox
