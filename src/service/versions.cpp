// Reaching the server: its version and its simple values.

#include <array>

#include "brenmoor/version.h"
#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

constexpr auto kGetVersionQuickly = Operation<std::string>("getVersion", Service::Main)
                                        .keyless()
                                        .timeout(kPingTimeoutMs)
                                        .reads(asText);
constexpr auto kGetGuid = Operation<std::string>("getGuid", Service::Main).keyless().reads(asText);
constexpr auto kGetFixedUrl =
    Operation<std::string>("getFixedUrl", Service::Main).keyless().reads(asText);
constexpr auto kIsCompatible = Operation<bool>("isCompatible", Service::Login)
                                   .keyless()
                                   .sends("clientCode", "major", "minor", "revision")
                                   .reads(asBool);
// Older servers lack the operation.
constexpr auto kSendClientDebugInfo = Operation<bool>("sendClientDebugInfo", Service::Main)
                                          .sends("debugInfo")
                                          .trueWhenAnswered()
                                          .since("3.2.4.59");

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

bool service::serverIsAtLeast(const State& state, const std::string& v) {
  const std::string& server = state.serverVersion;
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

bool ZylService::Ping(const std::string& baseUrl, bool m_useProxy) {
  SetServiceBaseUrl(baseUrl);
  auto& s = *state_;
  s.useProxy = m_useProxy;
  // Ping reports silently, then leaves alerts on whatever they were before.
  const bool alerts = s.showAlerts;
  s.showAlerts = false;
  auto version = kGetVersionQuickly.run(s);
  if (version.answered()) s.serverVersion = version.value;
  s.showAlerts = version.failed() ? true : alerts;
  return version.answered();
}

std::string ZylService::getGuid() {
  return kGetGuid(*state_);
}

std::string ZylService::getFixedUrl() {
  return kGetFixedUrl(*state_);
}

bool ZylService::validVersion(const std::string& v) const {
  return serverIsAtLeast(*state_, v);
}

bool ZylService::isCompatible() {
  auto& s = *state_;
  auto compatible = kIsCompatible.run(s, std::string("KWRB"), int32_t{kVersionMajor},
                                      int32_t{kVersionMinor}, int32_t{kVersionRevision});
  // A failure to ask keeps the reporter's number; only a refusal or a fault means mismatch.
  if (!compatible.value && !compatible.failed()) {
    s.lastErrID = 5;
    s.lastErrMsg =
        "The version of the Telvane Services Client library that you are using is incompatable "
        "with the Telvane service you are trying to access";
  }
  return compatible.value;
}

void ZylService::sendDebugInfo(const std::string& debugInfo) {
  kSendClientDebugInfo(*state_, debugInfo);
}

}  // namespace brenmoor
