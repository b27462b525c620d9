// Clearing and undeploying projects: the blocking form, and the asynchronous form whose
// process the caller polls by its procGuid ("id;code").

#include <optional>

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "util/convert.h"

namespace brenmoor {

using service::Elements;
using service::Key;
using service::Operation;
using soap::Service;

namespace {

constexpr Operation kClearProject{"clearProject", Service::Main, Key::Sent,
                                  service::kLongTimeoutMs};
constexpr Operation kClearProjectAsync{"clearProject_Async", Service::Main};
constexpr Operation kUndeployProjectAsync{"undeployProject_Async", Service::Main};
// The code in a procGuid names the service that runs the process, but these requests always go
// to the main service: its code is fixed here.
constexpr Operation kIsProcessComplete{"isProcessComplete", Service::Main, Key::None,
                                       service::kDefaultTimeout, "M"};
constexpr Operation kGetProcessPercentComplete{"getProcessPercentComplete", Service::Main,
                                               Key::None, service::kDefaultTimeout, "M"};
constexpr Operation kGetProcessMessage{"getProcessMessage", Service::Main, Key::None,
                                       service::kDefaultTimeout, "M"};
constexpr Operation kClearProjectResult{"clearProject_Result", Service::Main, Key::Sent,
                                        service::kDefaultTimeout, "M"};
constexpr Operation kUndeployProjectResult{"undeployProject_Result", Service::Main, Key::Sent,
                                           service::kDefaultTimeout, "M"};

// The process id of a procGuid; nothing for one without ";", which is refused unsent.
std::optional<std::string> processId(const std::string& procGuid) {
  auto separator = procGuid.find(';');
  if (separator == std::string::npos) return std::nullopt;
  return procGuid.substr(0, separator);
}

template <class Result, class Read>
Result callForProcess(ZylService::State& state, const Operation& op, const std::string& procGuid,
                      Result failure, Read read) {
  auto id = processId(procGuid);
  if (!id) return failure;
  return service::call(
      state, op,
      [&] {
        return Elements{{"procGuid", *id}};
      },
      std::move(failure), read);
}

int16_t returnShort(const soap::Answer& a) {
  return util::toInt16(a.returnNode().text());
}

}  // namespace

bool ZylService::clearProject(const std::string& projectGuid, bool undeploy) {
  return service::call(
      *state_, kClearProject,
      [&] {
        return Elements{{"projectGuid", projectGuid}, {"doUndeploy", undeploy}};
      },
      false, service::trueWhenAnswered);
}

std::string ZylService::clearProject_Async(const std::string& projectGuid, bool undeploy) {
  return service::call(
      *state_, kClearProjectAsync,
      [&] {
        return Elements{{"projectGuid", projectGuid}, {"doUndeploy", undeploy}};
      },
      std::string(), service::returnText);
}

std::string ZylService::undeployProject_Async(const std::string& projectGuid) {
  return service::call(
      *state_, kUndeployProjectAsync,
      [&] {
        return Elements{{"projectGuid", projectGuid}};
      },
      std::string(), service::returnText);
}

bool ZylService::isProcessComplete(const std::string& procGuid) {
  return callForProcess(*state_, kIsProcessComplete, procGuid, false, service::returnBool);
}

int16_t ZylService::getProcessPercentComplete(const std::string& procGuid) {
  return callForProcess(*state_, kGetProcessPercentComplete, procGuid, int16_t{0}, returnShort);
}

std::string ZylService::getProcessMessage(const std::string& procGuid) {
  return callForProcess(*state_, kGetProcessMessage, procGuid, std::string(), service::returnText);
}

bool ZylService::clearProject_Result(const std::string& procGuid) {
  return callForProcess(*state_, kClearProjectResult, procGuid, false, service::returnBool);
}

bool ZylService::undeployProject_Result(const std::string& procGuid) {
  return callForProcess(*state_, kUndeployProjectResult, procGuid, false, service::returnBool);
}

}  // namespace brenmoor
