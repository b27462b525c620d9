#include "projects/deployment_info.h"

#include "brenmoor/zyl_service.h"
#include "projects/duplicate_name.h"
#include "service/call.h"
#include "util/record_reader.h"

namespace brenmoor {
namespace projects {

void readDeploymentInfo(const soap::Node& node, DeploymentInfo& info) {
  util::RecordReader in(node, util::RecordReader::Missing::Fails);
  in("deployed", info.deployed);
  if (!info.deployed()) return;
  in("deploymentDate", info.deploymentDate);
  in("height", info.height);
  in("width", info.width);
  in("liveEnabled", info.liveEnabled);
  in("loginFlag", info.loginFlag);
  in("loginUrl", info.loginUrl);
  in("name", info.name);
  in("versionGuid", info.versionGuid);
  in("deploymentGuid", info.deploymentGuid);
  in("link", info.link);
  in("duration", info.duration);
  in("size", info.size);
}

}  // namespace projects

std::shared_ptr<DeploymentInfo> ZylService::getDeploymentInfo(const std::string& templateGuid) {
  static constexpr service::Operation kOperation{"getDeploymentInfo", soap::Service::Main};
  auto info = std::make_shared<DeploymentInfo>();
  auto outcome = service::run(
      *state_, kOperation,
      [&] {
        return service::Elements{{"templateGuid", templateGuid}};
      },
      [&](const soap::Answer& a) { projects::readDeploymentInfo(a.returnNode(), *info); },
      // The template guid stands where the alert expects a project name.
      projects::duplicateNameAlert(templateGuid));
  return outcome == service::Outcome::Failed ? nullptr : info;
}

}  // namespace brenmoor
