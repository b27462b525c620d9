#include <vector>

#include "services/lookups.h"
#include "services/reports_operations.h"
#include "services/services.h"

namespace sandbox {
namespace {

std::vector<Operation> all_report_operations() {
  std::vector<Operation> operations;
  for (const std::span<const Operation> area : {report_operations(), poll_operations()}) {
    operations.insert(operations.end(), area.begin(), area.end());
  }
  return operations;
}

std::int64_t ms_of(Timestamp time) {
  return time.time_since_epoch().count();
}

}  // namespace

ReportPage require_report_page(const Call& call) {
  auto page = report_page(call.db, call.account(), call.args.string("pageGuid"));
  if (!page) throw ApplicationFault("NoSuchPage", "No page with that guid", kNotFoundFault);
  return std::move(*page);
}

TimeRange report_range(const Call& call) {
  return {ms_of(call.args.date_time("startDate")), ms_of(call.args.date_time("endDate"))};
}

const Service& reports_service() {
  static const std::vector<Operation> operations = all_report_operations();
  static const Service service{"Reports", "/services/Reports", "urn:telvane-reports", operations};
  return service;
}

}  // namespace sandbox
