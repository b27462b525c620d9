#include "dispatch/request_shape.h"

namespace sandbox {
namespace {

constexpr auto npos = std::string_view::npos;

bool name_end(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '/' || c == '>' || c == '=';
}

// Where the construct that starts at `at` with `open` ends (after `close`), or the end.
std::size_t skip_past(std::string_view xml, std::size_t at, std::string_view open,
                      std::string_view close) {
  const std::size_t end = xml.find(close, at + open.size());
  return end == npos ? xml.size() : end + close.size();
}

// A declaration such as <!DOCTYPE ...>, whose internal subset may hold '>' inside brackets.
std::size_t skip_declaration(std::string_view xml, std::size_t at) {
  int brackets = 0;
  for (std::size_t i = at + 2; i < xml.size(); ++i) {
    if (xml[i] == '[') ++brackets;
    if (xml[i] == ']' && brackets > 0) --brackets;
    if (xml[i] == '>' && brackets == 0) return i + 1;
  }
  return xml.size();
}

}  // namespace

std::optional<std::string> request_shape_problem(std::string_view xml,
                                                 const RequestShapeLimits& limits) {
  const std::string values = std::to_string(limits.value_bytes) + " bytes";
  std::size_t nodes = 0;
  std::size_t depth = 0;
  std::size_t i = 0;
  while (i < xml.size()) {
    const std::size_t open = xml.find('<', i);
    if ((open == npos ? xml.size() : open) - i > limits.value_bytes) {
      return "a text longer than " + values;
    }
    if (open == npos) break;
    const std::string_view rest = xml.substr(open);
    if (rest.starts_with("<!--")) {
      i = skip_past(xml, open, "<!--", "-->");
    } else if (rest.starts_with("<![CDATA[")) {
      i = skip_past(xml, open, "<![CDATA[", "]]>");
      if (i - open > limits.value_bytes) return "a CDATA section longer than " + values;
    } else if (rest.starts_with("<?")) {
      i = skip_past(xml, open, "<?", "?>");
    } else if (rest.starts_with("<!")) {
      i = skip_declaration(xml, open);
    } else if (rest.starts_with("</")) {
      if (depth > 0) --depth;
      i = skip_past(xml, open, "</", ">");
    } else {
      if (++nodes > limits.nodes) {
        return "more than " + std::to_string(limits.nodes) + " elements and attributes";
      }
      std::size_t at = open + 1;
      while (at < xml.size() && !name_end(xml[at])) ++at;
      if (at - open - 1 > limits.name_bytes) {
        return "a name longer than " + std::to_string(limits.name_bytes) + " bytes";
      }
      // The attributes: a quoted value may hold '>' and '/'.
      bool self_closing = false;
      while (at < xml.size() && xml[at] != '>') {
        const char c = xml[at];
        if (c == '"' || c == '\'') {
          const std::size_t close = xml.find(c, at + 1);
          if ((close == npos ? xml.size() : close) - at - 1 > limits.value_bytes) {
            return "an attribute value longer than " + values;
          }
          if (++nodes > limits.nodes) {
            return "more than " + std::to_string(limits.nodes) + " elements and attributes";
          }
          at = close == npos ? xml.size() : close + 1;
          continue;
        }
        self_closing = c == '/';
        ++at;
      }
      if (!self_closing && ++depth > limits.depth) {
        return "elements nested more than " + std::to_string(limits.depth) + " deep";
      }
      i = at + 1;
    }
  }
  return std::nullopt;
}

}  // namespace sandbox
