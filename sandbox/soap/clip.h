#pragma once

#include <string>
#include <string_view>

namespace sandbox {

// Shortens text quoted in a message or a log line, so hostile input cannot make them huge.
inline std::string clip(std::string_view text, std::size_t limit = 80) {
  std::string clipped(text.substr(0, limit));
  if (text.size() > limit) clipped += "...";
  return clipped;
}

}  // namespace sandbox
