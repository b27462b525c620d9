#pragma once

#include <string>

#include "service/call.h"

namespace brenmoor::projects {

// The fault alert of operations that name a project: a fault whose detail holds <id>1</id>
// means the name is taken; any other fault gets the generic alert.
service::FaultAlert duplicateNameAlert(std::string name);

}  // namespace brenmoor::projects
