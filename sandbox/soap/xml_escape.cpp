#include "soap/xml_escape.h"

namespace sandbox {

void append_escaped(std::string& out, std::string_view text) {
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\r':
        // A literal CR would be folded into the line end by the reader.
        out += "&#13;";
        break;
      default:
        // Other control characters cannot appear in XML 1.0 at all.
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') {
          out += '?';
        } else {
          out += c;
        }
    }
  }
}

}  // namespace sandbox
