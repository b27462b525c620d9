#pragma once

#include <span>

#include "dispatch/service.h"
#include "store/report_store.h"

namespace sandbox {

// The Reports service's operations, one table per area; reports_service.cpp joins them.
// All find their session by the cookie and answer about the selected account's pages.
std::span<const Operation> report_operations();
std::span<const Operation> poll_operations();

// The page "pageGuid" names; refused with a "not found" fault when it is none of the
// account's.
ReportPage require_report_page(const Call& call);

// The "startDate" and "endDate" arguments.
TimeRange report_range(const Call& call);

}  // namespace sandbox
