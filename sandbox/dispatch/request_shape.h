#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

// What a SOAP request may hold, checked on its text before it is parsed: the parsed tree
// costs many times the text, and handlers walk it.
struct RequestShapeLimits {
  std::size_t nodes = 200000;  // elements and attributes together
  std::size_t depth = 64;
  std::size_t name_bytes = 1024;
  std::size_t value_bytes = 1024 * 1024;  // one text, CDATA section or attribute value
};

// Says which limit `xml` passes, or nothing when it keeps within them. Never fails on
// broken XML: the parser reports that afterwards.
std::optional<std::string> request_shape_problem(std::string_view xml,
                                                 const RequestShapeLimits& limits = {});

}  // namespace sandbox
