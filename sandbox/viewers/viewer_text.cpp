#include "viewers/viewer_text.h"

namespace sandbox {
namespace {

// The length of the valid UTF-8 sequence at the start of `text`, or 0 when it is not one.
std::size_t sequence_length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  std::size_t length = 0;
  if (lead < 0x80) return 1;
  if (lead >= 0xc2 && lead <= 0xdf) length = 2;
  if (lead >= 0xe0 && lead <= 0xef) length = 3;
  if (lead >= 0xf0 && lead <= 0xf4) length = 4;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xc0) != 0x80) return 0;
  }
  const auto second = static_cast<unsigned char>(text[1]);
  // Overlong forms, surrogates and code points past U+10FFFF.
  if (lead == 0xe0 && second < 0xa0) return 0;
  if (lead == 0xed && second > 0x9f) return 0;
  if (lead == 0xf0 && second < 0x90) return 0;
  if (lead == 0xf4 && second > 0x8f) return 0;
  return length;
}

}  // namespace

std::string viewer_text(std::string_view text, std::size_t max_chars, bool multiline) {
  std::string clean;
  std::size_t chars = 0;
  while (!text.empty() && chars < max_chars) {
    const std::size_t length = sequence_length(text);
    if (length == 0) {
      text.remove_prefix(1);
      continue;
    }
    const auto c = static_cast<unsigned char>(text[0]);
    const bool control = length == 1 && (c < 0x20 || c == 0x7f);
    if (!control || (multiline && c == '\n')) {
      clean.append(text.substr(0, length));
      ++chars;
    }
    text.remove_prefix(length);
  }
  return clean;
}

}  // namespace sandbox
