#pragma once

#include <string_view>

#include "dispatch/service.h"
#include "quotas/quota_settings.h"
#include "store/template_store.h"

namespace sandbox {

// Detail ids of the main service's application faults; the client reads them.
inline constexpr int kDuplicateNameFault = 1;
inline constexpr int kNotFoundFault = 2;

// Refuses, with a "not found" fault, a guid that is not a project of the selected account.
void require_project(const Call& call, std::string_view guid);

// Refuses (QuotaExceeded fault, naming the quota) an operation that would add `adding` to
// the selected account's use beyond a blocking limit.
void require_quota(const Call& call, QuotaKind kind, double adding);

// Where a template the user may use lives; refuses any other guid with a "not found" fault.
TemplatePlace require_usable_template(const Call& call, std::string_view guid);

}  // namespace sandbox
