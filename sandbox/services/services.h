#pragma once

#include <vector>

#include "dispatch/service.h"

namespace sandbox {

// One service per source file; each owns its table of operations.
const Service& login_service();
const Service& telvane_service();
const Service& assets_service();
const Service& accounts_service();
const Service& reports_service();

std::vector<const Service*> all_services();

}  // namespace sandbox
