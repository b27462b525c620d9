#pragma once

#include <algorithm>
#include <string_view>

// HTTP names and tokens are ASCII and compared without regard to case.
namespace brenmoor::testing::ascii {

inline char lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool equalsIgnoreCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return lower(x) == lower(y); });
}

inline std::string_view trim(std::string_view s) {
  const auto first = s.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

// True when a comma-separated header value such as "keep-alive, Close" lists `token`.
inline bool listsToken(std::string_view value, std::string_view token) {
  while (!value.empty()) {
    const auto comma = value.find(',');
    if (equalsIgnoreCase(trim(value.substr(0, comma)), token)) return true;
    if (comma == std::string_view::npos) break;
    value.remove_prefix(comma + 1);
  }
  return false;
}

}  // namespace brenmoor::testing::ascii
