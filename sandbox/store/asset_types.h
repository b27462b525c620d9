#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sandbox {

// Descriptors name asset and file types by text; queries filter by number. A text that is a
// number is taken as that id; a known name (any case) as its id; anything else as 0.

std::int32_t asset_type_id(std::string_view type);
std::int32_t file_type_id(std::string_view type);

// The name shown for an asset's type: the known name of its id, else the text it was given.
std::string asset_type_text(std::int32_t id, std::string_view given);

}  // namespace sandbox
