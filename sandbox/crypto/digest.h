#pragma once

#include <string>
#include <string_view>

namespace sandbox {

// MD5 of the bytes as 32 lowercase hex characters: the form the client hashes with.
std::string md5_hex(std::string_view text);

// Compares two digests in time independent of where they differ.
bool same_digest(std::string_view a, std::string_view b);

}  // namespace sandbox
