#include "projects/project_info.h"

namespace brenmoor::projects {

void readProjectInfo(const service::Fields& answer, ProjectInfo& p) {
  auto in =
      answer.reading(service::Fields::Missing::KeepsDefault, service::Fields::Dates::OnlyTyped);
  in("created", p.created);
  in("creator", p.creator);
  in("deploymentDefID", p.deploymentDefID);
  in("deploymentPath", p.deploymentPath);
  in("description", p.description);
  in("eventEnd", p.eventEnd);
  in("eventStart", p.eventStart);
  in("guid", p.guid);
  in("linkedProjectGuid", p.linkedProjectGuid);
  in("linkedProjectName", p.linkedProjectName);
  in("modified", p.modified);
  in("name", p.name);
  in("notes", p.notes);
  in("hasDeployedTemplate", p.hasDeployedTemplate);
}

}  // namespace brenmoor::projects
