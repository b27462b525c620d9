#pragma once
// The five services: where each one answers under the base URL and the namespace URI of its
// operations (also its SOAPAction). Written here once.

#include <string>
#include <string_view>

namespace brenmoor::service {

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

// The endpoint for a one-letter service code, as process-status answers name them: "M" main,
// "A" assets, "C" accounts (case-sensitive); empty for any other code.
std::string serviceUrlForCode(std::string_view base, std::string_view code);

}  // namespace brenmoor::service
