#include "soap/xml_names.h"

#include <string>

#include "soap/namespaces.h"

namespace sandbox {
namespace {

std::string_view prefix_of(std::string_view qualified) {
  const auto colon = qualified.find(':');
  return colon == std::string_view::npos ? std::string_view{} : qualified.substr(0, colon);
}

}  // namespace

std::string_view local_name(std::string_view qualified) {
  const auto colon = qualified.find(':');
  return colon == std::string_view::npos ? qualified : qualified.substr(colon + 1);
}

std::optional<std::string_view> resolve_prefix(pugi::xml_node node, std::string_view prefix) {
  if (prefix == "xml") return kXmlNs;
  const std::string declaration = prefix.empty() ? "xmlns" : "xmlns:" + std::string(prefix);
  for (; node; node = node.parent()) {
    if (node.type() != pugi::node_element) continue;
    if (const pugi::xml_attribute attribute = node.attribute(declaration.c_str())) {
      return std::string_view(attribute.value());
    }
  }
  if (prefix.empty()) return std::string_view{};
  return std::nullopt;
}

std::optional<QualifiedName> element_name(pugi::xml_node element) {
  return resolve_qname_value(element, element.name());
}

std::optional<QualifiedName> resolve_qname_value(pugi::xml_node node, std::string_view value) {
  const auto ns = resolve_prefix(node, prefix_of(value));
  if (!ns) return std::nullopt;
  return QualifiedName{*ns, local_name(value)};
}

pugi::xml_attribute find_attribute(pugi::xml_node element, std::string_view ns,
                                   std::string_view local) {
  for (pugi::xml_attribute attribute : element.attributes()) {
    const std::string_view name = attribute.name();
    const std::string_view prefix = prefix_of(name);
    // Unprefixed attributes are in no namespace; xmlns ones are declarations.
    if (prefix.empty() || prefix == "xmlns" || local_name(name) != local) continue;
    if (resolve_prefix(element, prefix) == ns) return attribute;
  }
  return {};
}

}  // namespace sandbox
