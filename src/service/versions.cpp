// Reaching the server: its version and its simple values.

#include <array>

#include "brenmoor/version.h"
#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "util/convert.h"

namespace brenmoor {

using service::Key;
using service::Operation;
using soap::Service;

namespace {
constexpr Operation kGetVersionQuickly{"getVersion", Service::Main, Key::None,
                                       service::kPingTimeoutMs};
constexpr Operation kGetGuid{"getGuid", Service::Main, Key::None};
constexpr Operation kGetFixedUrl{"getFixedUrl", Service::Main, Key::None};
constexpr Operation kIsCompatible{"isCompatible", Service::Login, Key::None};
constexpr Operation kSendClientDebugInfo{"sendClientDebugInfo", Service::Main};

// The four parts of "a.b.c.d" as 16-bit numbers; throws for anything else.
std::array<int16_t, 4> versionParts(const std::string& text) {
  std::array<int16_t, 4> parts{};
  size_t from = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    size_t dot = text.find('.', from);
    if (dot == std::string::npos && i < parts.size() - 1) {
      throw Error(Error::SubscriptOutOfRange, "Subscript out of range");
    }
    parts[i] = util::toInt16(std::string_view(text).substr(from, dot - from));
    from = dot + 1;
  }
  return parts;
}
}  // namespace

bool ZylService::Ping(const std::string& baseUrl, bool m_useProxy) {
  SetServiceBaseUrl(baseUrl);
  auto& s = *state_;
  s.useProxy = m_useProxy;
  // Ping reports silently, then leaves alerts on whatever they were before.
  const bool alerts = s.showAlerts;
  s.showAlerts = false;
  auto outcome =
      service::run(s, kGetVersionQuickly, service::noElements,
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

bool ZylService::validVersion(const std::string& v) const {
  const std::string& server = state_->serverVersion;
  // A 3.2.1.0 server passes every check: it predates version checks.
  if (server == "3.2.1.0") return true;
  try {
    auto mine = versionParts(v);
    auto theirs = versionParts(server);
    for (size_t i = 0; i < 3; ++i) {
      if (mine[i] != theirs[i]) return mine[i] < theirs[i];
    }
    return mine[3] <= theirs[3];
  } catch (const Error&) {
    return false;
  }
}

bool ZylService::isCompatible() {
  auto& s = *state_;
  bool compatible = false;
  auto outcome = service::run(
      s, kIsCompatible,
      [] {
        return service::Elements{{"clientCode", std::string("KWRB")},
                                 {"major", int32_t{kVersionMajor}},
                                 {"minor", int32_t{kVersionMinor}},
                                 {"revision", int32_t{kVersionRevision}}};
      },
      [&](const soap::Answer& a) { compatible = service::returnBool(a); });
  // A failure to ask keeps the reporter's number; only a refusal or a fault means mismatch.
  if (!compatible && outcome != service::Outcome::Failed) {
    s.lastErrID = 5;
    s.lastErrMsg =
        "The version of the Telvane Services Client library that you are using is incompatable "
        "with the Telvane service you are trying to access";
  }
  return compatible;
}

void ZylService::sendDebugInfo(const std::string& debugInfo) {
  // Older servers lack the operation.
  if (!validVersion("3.2.4.59")) return;
  service::run(
      *state_, kSendClientDebugInfo,
      [&] {
        return service::Elements{{"debugInfo", debugInfo}};
      },
      [](const soap::Answer&) {});
}

}  // namespace brenmoor
