// The upload URL: any text either is refused or becomes a URL that can stand in a request line.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "soap/upload_url.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto url = brenmoor::soap::uploadUrl(text);
  if (!url) return 0;
  if (!url->starts_with("http://") && !url->starts_with("https://")) std::abort();
  // The host is libcurl's to check; no space or control byte gets past it, and the request
  // target after it is all printable ASCII.
  const size_t target = url->find_first_of("/?", url->find("://") + 3);
  for (size_t i = 0; i < url->size(); ++i) {
    const auto c = static_cast<unsigned char>((*url)[i]);
    if (c <= ' ' || c == 0x7F || (i >= target && c > '~')) std::abort();
  }
  // What it gives is a usable URL as it stands.
  if (!brenmoor::soap::uploadUrl(*url)) std::abort();
  return 0;
}
