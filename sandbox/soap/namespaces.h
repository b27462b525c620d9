#pragma once

#include <string_view>

namespace sandbox {

inline constexpr std::string_view kEnvelopeNs = "http://schemas.xmlsoap.org/soap/envelope/";
inline constexpr std::string_view kEncodingNs = "http://schemas.xmlsoap.org/soap/encoding/";
inline constexpr std::string_view kSchemaNs = "http://www.w3.org/2001/XMLSchema";
inline constexpr std::string_view kSchemaInstanceNs = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr std::string_view kXmlNs = "http://www.w3.org/XML/1998/namespace";
// Namespace of the codes of application faults.
inline constexpr std::string_view kFaultCodeNs = "urn:telvane-faults";
// The WSDL's name for an array of strings, which WSDL-driven toolkits write as the xsi:type.
inline constexpr std::string_view kStringArrayType = "ArrayOf_xsd_string";

}  // namespace sandbox
