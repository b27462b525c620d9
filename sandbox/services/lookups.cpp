#include "services/lookups.h"

#include "soap/faults.h"
#include "store/project_store.h"
#include "store/quota_store.h"

namespace sandbox {

void require_project(const Call& call, std::string_view guid) {
  if (!project_in_account(call.db, call.account(), guid)) {
    throw ApplicationFault("NoSuchProject", "No project with that guid", kNotFoundFault);
  }
}

void require_quota(const Call& call, QuotaKind kind, double adding) {
  if (auto refusal = quota_refusal(call.db, call.server.quotas, kind, call.account(), adding)) {
    throw ApplicationFault("QuotaExceeded", *refusal);
  }
}

TemplatePlace require_usable_template(const Call& call, std::string_view guid) {
  auto place = find_usable_template(call.db, call.session().user_id, guid);
  if (!place)
    throw ApplicationFault("NoSuchTemplate", "No template with that guid", kNotFoundFault);
  return std::move(*place);
}

}  // namespace sandbox
