#include "service/catalog.h"

namespace brenmoor::service {

std::string serviceUrlForCode(std::string_view base, std::string_view code) {
  Service service;
  if (code == "M") {
    service = Service::Main;
  } else if (code == "A") {
    service = Service::Assets;
  } else if (code == "C") {
    service = Service::Accounts;
  } else {
    return {};
  }
  return std::string(base) + std::string(serviceInfo(service).path);
}

}  // namespace brenmoor::service
