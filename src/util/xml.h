#pragma once
// Reading the library's own XML forms.

#include <pugixml.hpp>

#include <string>
#include <string_view>

namespace brenmoor::util {

// The attribute's value, or `fallback` when the element or the attribute is absent.
std::string attributeOrDefault(pugi::xml_node element, const char* name, std::string_view fallback);

// The text of the node and all its descendants (an attribute's value), or `fallback` when the
// node is absent.
std::string nodeTextOrDefault(pugi::xml_node node, std::string_view fallback);
std::string nodeTextOrDefault(const pugi::xpath_node& node, std::string_view fallback);

// Loads `xml` into `doc` and returns its root element. Throws Error::InvalidArgument when the
// text is not well-formed.
pugi::xml_node loadDocumentElement(pugi::xml_document& doc, std::string_view xml);

// The text of the first node of `xml` that `xpath` selects; empty when the text is empty or
// not well-formed, or nothing matches. Throws Error::InvalidArgument for a bad expression.
std::string selectText(std::string_view xml, const char* xpath);

}  // namespace brenmoor::util
