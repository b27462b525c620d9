#include "util/text.h"

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

}  // namespace brenmoor::util
