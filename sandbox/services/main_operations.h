#pragma once

#include <span>

#include "dispatch/service.h"

namespace sandbox {

// The main service's operations, one table per area; telvane_service.cpp joins them.
std::span<const Operation> project_operations();
std::span<const Operation> template_operations();
std::span<const Operation> theme_operations();
std::span<const Operation> process_operations();
std::span<const Operation> deployment_operations();
std::span<const Operation> data_record_operations();
std::span<const Operation> mail_operations();
std::span<const Operation> registrant_operations();

}  // namespace sandbox
