#pragma once
// The namespace URIs of the wire format, written once.

#include <string_view>

namespace brenmoor::soap {

inline constexpr std::string_view kEnvelopeNs = "http://schemas.xmlsoap.org/soap/envelope/";
inline constexpr std::string_view kEncodingNs = "http://schemas.xmlsoap.org/soap/encoding/";
inline constexpr std::string_view kSchemaNs = "http://www.w3.org/2001/XMLSchema";
inline constexpr std::string_view kSchemaInstanceNs = "http://www.w3.org/2001/XMLSchema-instance";

// The five services; each has its endpoint path and its namespace URI.
enum class Service { Login, Main, Assets, Accounts, Reports };

struct ServiceInfo {
  std::string_view path;          // appended to the base URL
  std::string_view namespaceUri;  // of its operations, and its SOAPAction
};

constexpr ServiceInfo serviceInfo(Service service) {
  switch (service) {
    case Service::Login: return {"/services/Login", "urn:telvane-login"};
    case Service::Main: return {"/services/Telvane", "urn:telvane-main"};
    case Service::Assets: return {"/services/Assets", "urn:telvane-assets"};
    case Service::Accounts: return {"/services/Accounts", "urn:telvane-accounts"};
    case Service::Reports: return {"/services/Reports", "urn:telvane-reports"};
  }
  return {};
}

}  // namespace brenmoor::soap
