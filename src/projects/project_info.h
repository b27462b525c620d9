#pragma once

#include "brenmoor/project.h"
#include "service/fields.h"

namespace brenmoor::projects {

// Fills `p` from a project answer. Any field may be missing; dates count only when typed.
void readProjectInfo(const service::Fields& answer, ProjectInfo& p);

}  // namespace brenmoor::projects
