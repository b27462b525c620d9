#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string_view>

namespace sandbox {

// Namespace-aware reading on top of pugixml, which sees only prefixed names.
// Requests may use any prefixes, so every check goes through the namespace URI.

struct QualifiedName {
  std::string_view ns;
  std::string_view local;
};

std::string_view local_name(std::string_view qualified);

// The namespace URI bound to `prefix` where `node` stands ("" is the default namespace);
// nothing when the prefix is not declared.
std::optional<std::string_view> resolve_prefix(pugi::xml_node node, std::string_view prefix);

// The element's own namespace; nothing when its prefix is undeclared.
std::optional<QualifiedName> element_name(pugi::xml_node element);

// A QName written as an attribute value (xsi:type="xsd:int"), resolved where `node` stands.
std::optional<QualifiedName> resolve_qname_value(pugi::xml_node node, std::string_view value);

// The attribute {ns}local of `element`, or an empty attribute.
pugi::xml_attribute find_attribute(pugi::xml_node element, std::string_view ns,
                                   std::string_view local);

}  // namespace sandbox
