#include "service/endpoints.h"

#include "soap/namespaces.h"

namespace brenmoor::service {

std::string serviceUrlForCode(std::string_view base, std::string_view code) {
  soap::Service service;
  if (code == "M") {
    service = soap::Service::Main;
  } else if (code == "A") {
    service = soap::Service::Assets;
  } else if (code == "C") {
    service = soap::Service::Accounts;
  } else {
    return {};
  }
  return std::string(base) + std::string(soap::serviceInfo(service).path);
}

}  // namespace brenmoor::service
