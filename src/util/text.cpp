#include "util/text.h"

#include <algorithm>

namespace brenmoor::util {

void appendEscaped(std::string& out, std::string_view text, bool apostrophe) {
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += apostrophe ? "&apos;" : "'"; break;
      default: out += c;
    }
  }
}

std::string escapeXml(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  appendEscaped(out, text, true);
  return out;
}

std::string& stripControlChars(std::string& text) {
  std::erase_if(
      text, [](char c) { return c == '\r' || c == '\n' || c == '\0' || c == '\f' || c == '\v'; });
  return text;
}

std::string cleanName(std::string text, bool replaceSpaces) {
  static constexpr std::string_view kRemoved = "~`!@#$%^&*()+={}[]|\\:;\"'<>,?/.";
  stripControlChars(text);
  std::erase_if(text, [](char c) { return kRemoved.find(c) != std::string_view::npos; });
  if (replaceSpaces) std::replace(text.begin(), text.end(), ' ', '_');
  return text;
}

}  // namespace brenmoor::util
