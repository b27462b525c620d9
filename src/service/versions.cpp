// Reaching the server: its version and its simple values.

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "service/error_reporter.h"

namespace brenmoor {

using service::Key;
using service::Operation;
using soap::Service;

namespace {
constexpr Operation kGetVersionQuickly{"getVersion", Service::Main, Key::None,
                                       service::kPingTimeoutMs};
constexpr Operation kGetGuid{"getGuid", Service::Main, Key::None};
constexpr Operation kGetFixedUrl{"getFixedUrl", Service::Main, Key::None};
}  // namespace

bool ZylService::Ping(const std::string& baseUrl, bool m_useProxy) {
  SetServiceBaseUrl(baseUrl);
  auto& s = *state_;
  s.useProxy = m_useProxy;
  // Ping reports silently, then leaves alerts on whatever they were before.
  const bool alerts = s.showAlerts;
  s.showAlerts = false;
  auto outcome = service::run(s, kGetVersionQuickly, service::noElements,
                              [&](const soap::Answer& a) { s.serverVersion = service::returnText(a); });
  s.showAlerts = outcome == service::Outcome::Failed ? true : alerts;
  return outcome == service::Outcome::Answered;
}

std::string ZylService::getGuid() {
  return service::call(*state_, kGetGuid, service::noElements, std::string(), service::returnText);
}

std::string ZylService::getFixedUrl() {
  return service::call(*state_, kGetFixedUrl, service::noElements, std::string(),
                       service::returnText);
}

}  // namespace brenmoor
