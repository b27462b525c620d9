#pragma once

#include <cstddef>
#include <string>

namespace sandbox {

// `bytes` bytes from the system's cryptographic generator, as lowercase hex.
std::string random_hex(std::size_t bytes);

// A random (version 4) guid: 8-4-4-4-12 lowercase hex.
std::string random_guid();

}  // namespace sandbox
