#pragma once

#include <span>

#include "dispatch/service.h"

namespace sandbox {

// The Accounts service's operations, one table per area; accounts_service.cpp joins them.
std::span<const Operation> user_operations();
std::span<const Operation> quota_operations();

}  // namespace sandbox
