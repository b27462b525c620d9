#pragma once

#include "brenmoor/deployment.h"
#include "service/fields.h"

namespace brenmoor::projects {

// Fills `info` from a deployment answer. Every child it reads must be present; only the date
// may be nil. Nothing but "deployed" is read when that is false.
void readDeploymentInfo(const service::Fields& answer, DeploymentInfo& info);

}  // namespace brenmoor::projects
