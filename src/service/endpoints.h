#pragma once

#include <string>
#include <string_view>

namespace brenmoor::service {

// The endpoint for a one-letter service code, as process-status answers name them: "M" main,
// "A" assets, "C" accounts (case-sensitive); empty for any other code.
std::string serviceUrlForCode(std::string_view base, std::string_view code);

}  // namespace brenmoor::service
