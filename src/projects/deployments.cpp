// Deployment information, environments, definitions, version durations and status.

#include "brenmoor/zyl_service.h"
#include "projects/deployment_info.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

void readEnvironment(const Fields& in, DeploymentEnvironmentInfo& e) {
  e.name = in.value<std::string>("name");
  e.id = in.value<int16_t>("id");
  e.mustUsePath = in.value<bool>("mustUsePath");
}

void readStatus(const Fields& in, DeploymentStatusInfo& s) {
  s.versionGuid = in.value<std::string>("versionGuid");
  s.state = in.value<std::string>("state");
  s.progress = in.value<std::string>("progress");
}

// The template guid stands where the alert expects a project name.
constexpr auto kGetDeploymentInfo =
    Operation<std::shared_ptr<DeploymentInfo>>("getDeploymentInfo", Service::Main)
        .sends("templateGuid")
        .reads(record<DeploymentInfo, projects::readDeploymentInfo>)
        .alerts(FaultAlert::duplicateName(0))
        .emptyAfterFault();
constexpr auto kSetDeploymentVersionDuration =
    Operation<bool>("setDeploymentVersionDuration", Service::Main)
        .sends("versionGuid", "duration")
        .reads(asBool);
constexpr auto kGetDeploymentEnvironmentList =
    Operation<std::shared_ptr<Collection<DeploymentEnvironmentInfo>>>(
        "getDeploymentEnvironmentList_Array", Service::Main)
        .reads(listOf<DeploymentEnvironmentInfo, readEnvironment>);
constexpr auto kSetProjectDeploymentDefinition =
    Operation<bool>("setProjectDeploymentDefinition", Service::Main)
        .sends("projectGuid", "deploymentDefID", "deploymentPath")
        .trueWhenAnswered();
constexpr auto kGetDeploymentStatusList =
    Operation<std::shared_ptr<Collection<DeploymentStatusInfo>>>("getDeploymentStatusList_Array",
                                                                 Service::Main)
        .sends("deploymentGuidList")
        .reads(listOf<DeploymentStatusInfo, readStatus>);

}  // namespace

std::shared_ptr<DeploymentInfo> ZylService::getDeploymentInfo(const std::string& templateGuid) {
  return kGetDeploymentInfo(*state_, templateGuid);
}

bool ZylService::setDeploymentVersionDuration(const std::string& versionGuid, int16_t duration) {
  return kSetDeploymentVersionDuration(*state_, versionGuid, int32_t{duration});
}

std::shared_ptr<Collection<DeploymentEnvironmentInfo>> ZylService::getDeploymentEnvironmentList() {
  return kGetDeploymentEnvironmentList(*state_);
}

bool ZylService::setProjectDeploymentDefinition(const std::string& projectGuid,
                                                int16_t deploymentDefID,
                                                const std::string& deploymentPath) {
  return kSetProjectDeploymentDefinition(*state_, projectGuid, int32_t{deploymentDefID},
                                         deploymentPath);
}

std::shared_ptr<Collection<DeploymentStatusInfo>> ZylService::getDeploymentStatusList(
    const std::vector<std::string>& deploymentGuidList) {
  return kGetDeploymentStatusList(*state_, deploymentGuidList);
}

}  // namespace brenmoor
