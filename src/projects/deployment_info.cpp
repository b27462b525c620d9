#include "projects/deployment_info.h"

namespace brenmoor::projects {

void readDeploymentInfo(const service::Fields& answer, DeploymentInfo& info) {
  const auto in = answer.reading(service::Fields::Missing::Fails);
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

}  // namespace brenmoor::projects
