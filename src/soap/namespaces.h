#pragma once
// The namespace URIs of the SOAP wire format, written once.

#include <string_view>

namespace brenmoor::soap {

inline constexpr std::string_view kEnvelopeNs = "http://schemas.xmlsoap.org/soap/envelope/";
inline constexpr std::string_view kEncodingNs = "http://schemas.xmlsoap.org/soap/encoding/";
inline constexpr std::string_view kSchemaNs = "http://www.w3.org/2001/XMLSchema";
inline constexpr std::string_view kSchemaInstanceNs = "http://www.w3.org/2001/XMLSchema-instance";

}  // namespace brenmoor::soap
