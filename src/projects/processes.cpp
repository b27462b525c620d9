// Clearing and undeploying projects: the blocking form, and the asynchronous form whose
// process the caller polls by its procGuid ("id;code").

#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

constexpr auto kClearProject = Operation<bool>("clearProject", Service::Main)
                                   .sends("projectGuid", "doUndeploy")
                                   .timeout(kLongTimeoutMs)
                                   .trueWhenAnswered();
constexpr auto kClearProjectAsync = Operation<std::string>("clearProject_Async", Service::Main)
                                        .sends("projectGuid", "doUndeploy")
                                        .reads(asText);
constexpr auto kUndeployProjectAsync =
    Operation<std::string>("undeployProject_Async", Service::Main)
        .sends("projectGuid")
        .reads(asText);
// The code in a procGuid names the service that runs the process, but these requests always go
// to the main service.
constexpr auto kIsProcessComplete = Operation<bool>("isProcessComplete", Service::Main)
                                        .keyless()
                                        .sends("procGuid")
                                        .forProcess()
                                        .reads(asBool);
constexpr auto kGetProcessPercentComplete =
    Operation<int16_t>("getProcessPercentComplete", Service::Main)
        .keyless()
        .sends("procGuid")
        .forProcess()
        .reads(asInt16);
constexpr auto kGetProcessMessage = Operation<std::string>("getProcessMessage", Service::Main)
                                        .keyless()
                                        .sends("procGuid")
                                        .forProcess()
                                        .reads(asText);
constexpr auto kClearProjectResult = Operation<bool>("clearProject_Result", Service::Main)
                                         .sends("procGuid")
                                         .forProcess()
                                         .reads(asBool);
constexpr auto kUndeployProjectResult = Operation<bool>("undeployProject_Result", Service::Main)
                                            .sends("procGuid")
                                            .forProcess()
                                            .reads(asBool);

}  // namespace

bool ZylService::clearProject(const std::string& projectGuid, bool undeploy) {
  return kClearProject(*state_, projectGuid, undeploy);
}

std::string ZylService::clearProject_Async(const std::string& projectGuid, bool undeploy) {
  return kClearProjectAsync(*state_, projectGuid, undeploy);
}

std::string ZylService::undeployProject_Async(const std::string& projectGuid) {
  return kUndeployProjectAsync(*state_, projectGuid);
}

bool ZylService::isProcessComplete(const std::string& procGuid) {
  return kIsProcessComplete(*state_, procGuid);
}

int16_t ZylService::getProcessPercentComplete(const std::string& procGuid) {
  return kGetProcessPercentComplete(*state_, procGuid);
}

std::string ZylService::getProcessMessage(const std::string& procGuid) {
  return kGetProcessMessage(*state_, procGuid);
}

bool ZylService::clearProject_Result(const std::string& procGuid) {
  return kClearProjectResult(*state_, procGuid);
}

bool ZylService::undeployProject_Result(const std::string& procGuid) {
  return kUndeployProjectResult(*state_, procGuid);
}

}  // namespace brenmoor
