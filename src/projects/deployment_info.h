#pragma once

#include "brenmoor/deployment.h"
#include "soap/answer.h"

namespace brenmoor::projects {

// Fills `info` from a deployment answer node. Every child it reads must be present; only the
// date may be nil. Nothing but "deployed" is read when that is false.
void readDeploymentInfo(const soap::Node& node, DeploymentInfo& info);

}  // namespace brenmoor::projects
