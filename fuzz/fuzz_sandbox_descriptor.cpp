// The sandbox's asset descriptor parser: any text is a descriptor or a DescriptorError.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "assets/descriptor.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    (void)sandbox::parse_descriptor(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const sandbox::DescriptorError&) {
  }
  return 0;
}
