// Project operations.

#include "brenmoor/zyl_service.h"
#include "projects/project_info.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;
using projects::readProjectInfo;

namespace {

using ProjectList = std::shared_ptr<Collection<ProjectInfo>>;

constexpr auto kCreateProject = Operation<std::string>("createProject", Service::Main)
                                    .sends("name", "description")
                                    .reads(asText)
                                    .alerts(FaultAlert::duplicateName(0));
// The service is always asked to undeploy too; callers have no say.
constexpr auto kDeleteProject = Operation<bool>("deleteProject", Service::Main)
                                    .sends("projectGuid", "doUndeploy")
                                    .trueWhenAnswered();
constexpr auto kProjectExists =
    Operation<bool>("projectExists", Service::Main).sends("projectGuid").reads(asBool);
constexpr auto kHasDeployedTemplate = Operation<bool>("hasDeployedTemplate", Service::Main)
                                          .sends("projectGuid", "templateType")
                                          .reads(asBool);
constexpr auto kGetProjectList = Operation<ProjectList>("getProjectList_Array", Service::Main)
                                     .reads(listOf<ProjectInfo, readProjectInfo>);
constexpr auto kGetProjectListByType =
    Operation<ProjectList>("getProjectListByType_Array", Service::Main)
        .sends("type")
        .reads(listOf<ProjectInfo, readProjectInfo>);
constexpr auto kGetProjectProperties =
    Operation<std::shared_ptr<ProjectInfo>>("getProjectProperties", Service::Main)
        .sends("projectGuid")
        .reads(record<ProjectInfo, readProjectInfo>);
constexpr auto kSetProjectType = Operation<bool>("setProjectType", Service::Main)
                                     .sends("projectGuid", "type")
                                     .trueWhenAnswered();

}  // namespace

std::string ZylService::createProject(const std::string& projectName,
                                      const std::string& projectDesc) {
  return kCreateProject(*state_, projectName, projectDesc);
}

bool ZylService::deleteProject(const std::string& projectGuid) {
  return kDeleteProject(*state_, projectGuid, true);
}

bool ZylService::projectExists(const std::string& projectGuid) {
  return kProjectExists(*state_, projectGuid);
}

bool ZylService::hasDeployedTemplate(const std::string& projectGuid,
                                     const std::string& templateType) {
  return kHasDeployedTemplate(*state_, projectGuid, templateType);
}

std::shared_ptr<Collection<ProjectInfo>> ZylService::getProjectList(const std::string& typeID) {
  return typeID.empty() ? kGetProjectList(*state_) : kGetProjectListByType(*state_, typeID);
}

std::shared_ptr<ProjectInfo> ZylService::getProjectInfo(const std::string& projectGuid) {
  return kGetProjectProperties(*state_, projectGuid);
}

bool ZylService::setProjectType(const std::string& projectGuid, const std::string& typeID) {
  return kSetProjectType(*state_, projectGuid, typeID);
}

}  // namespace brenmoor
