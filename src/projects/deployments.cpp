// Deployment information, environments, definitions, version durations and status.

#include "brenmoor/zyl_service.h"
#include "projects/deployment_info.h"
#include "projects/duplicate_name.h"
#include "service/call.h"
#include "util/record_reader.h"

namespace brenmoor {

using service::Elements;
using service::Operation;
using soap::Service;
using util::RecordReader;

namespace {
constexpr Operation kGetDeploymentInfo{"getDeploymentInfo", Service::Main};
constexpr Operation kSetDeploymentVersionDuration{"setDeploymentVersionDuration", Service::Main};
constexpr Operation kGetDeploymentEnvironmentList{"getDeploymentEnvironmentList_Array",
                                                  Service::Main};
constexpr Operation kSetProjectDeploymentDefinition{"setProjectDeploymentDefinition",
                                                    Service::Main};
constexpr Operation kGetDeploymentStatusList{"getDeploymentStatusList_Array", Service::Main};
}  // namespace

std::shared_ptr<DeploymentInfo> ZylService::getDeploymentInfo(const std::string& templateGuid) {
  return service::fillNew<DeploymentInfo>(
      *state_, kGetDeploymentInfo,
      [&] {
        return Elements{{"templateGuid", templateGuid}};
      },
      projects::readDeploymentInfo,
      // The template guid stands where the alert expects a project name.
      projects::duplicateNameAlert(templateGuid));
}

bool ZylService::setDeploymentVersionDuration(const std::string& versionGuid, int16_t duration) {
  return service::call(
      *state_, kSetDeploymentVersionDuration,
      [&] {
        return Elements{{"versionGuid", versionGuid}, {"duration", int32_t{duration}}};
      },
      false, service::returnBool);
}

std::shared_ptr<Collection<DeploymentEnvironmentInfo>> ZylService::getDeploymentEnvironmentList() {
  return service::call(
      *state_, kGetDeploymentEnvironmentList, service::noElements,
      std::shared_ptr<Collection<DeploymentEnvironmentInfo>>(), [](const soap::Answer& a) {
        return util::readList<DeploymentEnvironmentInfo>(
            a.returnNode(), [](const soap::Node& item) {
              RecordReader in(item, RecordReader::Missing::Fails);
              return std::make_shared<DeploymentEnvironmentInfo>(
                  DeploymentEnvironmentInfo{in.value<std::string>("name"), in.value<int16_t>("id"),
                                            in.value<bool>("mustUsePath")});
            });
      });
}

bool ZylService::setProjectDeploymentDefinition(const std::string& projectGuid,
                                                int16_t deploymentDefID,
                                                const std::string& deploymentPath) {
  return service::call(
      *state_, kSetProjectDeploymentDefinition,
      [&] {
        return Elements{{"projectGuid", projectGuid},
                        {"deploymentDefID", int32_t{deploymentDefID}},
                        {"deploymentPath", deploymentPath}};
      },
      false, service::trueWhenAnswered);
}

std::shared_ptr<Collection<DeploymentStatusInfo>> ZylService::getDeploymentStatusList(
    const std::vector<std::string>& deploymentGuidList) {
  return service::call(
      *state_, kGetDeploymentStatusList,
      [&] {
        return Elements{{"deploymentGuidList", deploymentGuidList}};
      },
      std::shared_ptr<Collection<DeploymentStatusInfo>>(),
      [](const soap::Answer& a) {
        return util::readList<DeploymentStatusInfo>(a.returnNode(), [](const soap::Node& item) {
          RecordReader in(item, RecordReader::Missing::Fails);
          return std::make_shared<DeploymentStatusInfo>(DeploymentStatusInfo{
              in.value<std::string>("versionGuid"), in.value<std::string>("state"),
              in.value<std::string>("progress")});
        });
      });
}

}  // namespace brenmoor
