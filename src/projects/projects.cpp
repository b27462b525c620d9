// Project operations.

#include "brenmoor/zyl_service.h"
#include "projects/duplicate_name.h"
#include "service/call.h"
#include "util/record_reader.h"

namespace brenmoor {

using service::Elements;
using service::Operation;
using soap::Service;
using util::RecordReader;

namespace {

constexpr Operation kCreateProject{"createProject", Service::Main};
constexpr Operation kDeleteProject{"deleteProject", Service::Main};
constexpr Operation kProjectExists{"projectExists", Service::Main};
constexpr Operation kHasDeployedTemplate{"hasDeployedTemplate", Service::Main};
constexpr Operation kGetProjectList{"getProjectList_Array", Service::Main};
constexpr Operation kGetProjectListByType{"getProjectListByType_Array", Service::Main};
constexpr Operation kGetProjectProperties{"getProjectProperties", Service::Main};
constexpr Operation kSetProjectType{"setProjectType", Service::Main};

std::shared_ptr<ProjectInfo> readProjectInfo(const soap::Node& node) {
  auto p = std::make_shared<ProjectInfo>();
  RecordReader in(node, RecordReader::Missing::KeepsDefault, RecordReader::Dates::OnlyTyped);
  in("created", p->created);
  in("creator", p->creator);
  in("deploymentDefID", p->deploymentDefID);
  in("deploymentPath", p->deploymentPath);
  in("description", p->description);
  in("eventEnd", p->eventEnd);
  in("eventStart", p->eventStart);
  in("guid", p->guid);
  in("linkedProjectGuid", p->linkedProjectGuid);
  in("linkedProjectName", p->linkedProjectName);
  in("modified", p->modified);
  in("name", p->name);
  in("notes", p->notes);
  in("hasDeployedTemplate", p->hasDeployedTemplate);
  return p;
}

}  // namespace

std::string ZylService::createProject(const std::string& projectName,
                                      const std::string& projectDesc) {
  return service::call(
      *state_, kCreateProject,
      [&] {
        return Elements{{"name", projectName}, {"description", projectDesc}};
      },
      std::string(), service::returnText, projects::duplicateNameAlert(projectName));
}

bool ZylService::deleteProject(const std::string& projectGuid) {
  // The service is always asked to undeploy too; callers have no say.
  return service::call(
      *state_, kDeleteProject,
      [&] {
        return Elements{{"projectGuid", projectGuid}, {"doUndeploy", true}};
      },
      false, service::trueWhenAnswered);
}

bool ZylService::projectExists(const std::string& projectGuid) {
  return service::call(
      *state_, kProjectExists,
      [&] {
        return Elements{{"projectGuid", projectGuid}};
      },
      false, service::returnBool);
}

bool ZylService::hasDeployedTemplate(const std::string& projectGuid,
                                     const std::string& templateType) {
  return service::call(
      *state_, kHasDeployedTemplate,
      [&] {
        return Elements{{"projectGuid", projectGuid}, {"templateType", templateType}};
      },
      false, service::returnBool);
}

std::shared_ptr<Collection<ProjectInfo>> ZylService::getProjectList(const std::string& typeID) {
  const bool byType = !typeID.empty();
  return service::call(
      *state_, byType ? kGetProjectListByType : kGetProjectList,
      [&] {
        return byType ? Elements{{"type", typeID}} : Elements{};
      },
      std::shared_ptr<Collection<ProjectInfo>>(),
      [](const soap::Answer& a) {
        return util::readList<ProjectInfo>(a.returnNode(), readProjectInfo);
      });
}

std::shared_ptr<ProjectInfo> ZylService::getProjectInfo(const std::string& projectGuid) {
  return service::call(
      *state_, kGetProjectProperties,
      [&] {
        return Elements{{"projectGuid", projectGuid}};
      },
      std::shared_ptr<ProjectInfo>(),
      [](const soap::Answer& a) { return readProjectInfo(a.returnNode()); });
}

bool ZylService::setProjectType(const std::string& projectGuid, const std::string& typeID) {
  return service::call(
      *state_, kSetProjectType,
      [&] {
        return Elements{{"projectGuid", projectGuid}, {"type", typeID}};
      },
      false, service::trueWhenAnswered);
}

}  // namespace brenmoor
