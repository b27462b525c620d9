#include "util/xml.h"

#include "brenmoor/error.h"

namespace brenmoor::util {

std::string attributeOrDefault(pugi::xml_node element, const char* name,
                               std::string_view fallback) {
  auto attribute = element.attribute(name);
  return attribute ? attribute.value() : std::string(fallback);
}

std::string nodeTextOrDefault(pugi::xml_node node, std::string_view fallback) {
  if (!node) return std::string(fallback);
  if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) return node.value();
  std::string text;
  for (auto n = node.first_child(); n && n != node;) {
    if (n.type() == pugi::node_pcdata || n.type() == pugi::node_cdata) text += n.value();
    // Depth-first without recursion, so deep documents cannot exhaust the stack.
    if (n.first_child()) {
      n = n.first_child();
      continue;
    }
    while (n != node && !n.next_sibling()) n = n.parent();
    if (n != node) n = n.next_sibling();
  }
  return text;
}

std::string nodeTextOrDefault(const pugi::xpath_node& node, std::string_view fallback) {
  if (node.attribute()) return node.attribute().value();
  return nodeTextOrDefault(node.node(), fallback);
}

pugi::xml_node loadDocumentElement(pugi::xml_document& doc, std::string_view xml) {
  auto parsed = doc.load_buffer(xml.data(), xml.size());
  if (!parsed) {
    throw Error(Error::InvalidArgument,
                std::string("The text is not well-formed XML: ") + parsed.description());
  }
  return doc.document_element();
}

std::string selectText(std::string_view xml, const char* xpath) {
  if (xml.empty()) return {};
  pugi::xml_document doc;
  if (!doc.load_buffer(xml.data(), xml.size())) return {};
  try {
    return nodeTextOrDefault(doc.select_node(xpath), "");
  } catch (const pugi::xpath_exception& e) {
    throw Error(Error::InvalidArgument, std::string("Invalid XPath expression: ") + e.what());
  }
}

}  // namespace brenmoor::util
