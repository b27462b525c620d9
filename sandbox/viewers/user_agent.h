#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sandbox {

// What a User-Agent header says about the viewer's browser.
struct BrowserInfo {
  std::string type;          // e.g. "Chrome", "Firefox", "curl"; "Unknown" when the header is empty
  std::int32_t version = 0;  // the major version
  std::string operating_system;  // e.g. "Linux", "Windows", "macOS"; "Unknown" if not told
};

BrowserInfo parse_user_agent(std::string_view user_agent);

// The viewer's first language of an Accept-Language header, e.g. "en-GB", and the country
// its region names, e.g. "GB"; both empty when the header names none.
struct LanguageInfo {
  std::string language;
  std::string country;
};

LanguageInfo parse_accept_language(std::string_view header);

}  // namespace sandbox
