#include <algorithm>
#include <chrono>

#include "crypto/random.h"
#include "services/accounts_operations.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "store/database.h"
#include "store/quota_store.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

constexpr std::chrono::milliseconds kOrderPeriod = std::chrono::days(365);

std::string display_name(QuotaKind kind) {
  std::string name(quota_type(kind));
  name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

void get_quota_list(Call& call) {
  const std::string exclude = call.args.string("excludeProjectGuid");
  const std::int64_t account = call.account();
  std::vector<Fields> quotas;
  for (const QuotaKind kind : kQuotaKinds) {
    const QuotaSetting& setting = call.server.quotas[kind];
    quotas.push_back({{"guid", std::to_string(account) + "-" + std::string(quota_type(kind))},
                      {"name", display_name(kind)},
                      {"type", std::string(quota_type(kind))},
                      {"failAction", std::string(setting.block ? "block" : "warn")},
                      {"limit", setting.limit},
                      {"used", quota_used(call.db, kind, account, exclude)},
                      {"units", std::string(quota_units(kind))},
                      {"defaultLimit", setting.default_limit}});
  }
  call.reply.records("Quota", std::move(quotas));
}

// Each order adds a year after the end of the paid period, or from now once it has ended.
void initiate_service_order(Call& call) {
  const std::int64_t account = call.account();
  std::int64_t start = now_ms();
  {
    auto end = call.db.prepare("SELECT MAX(period_end) FROM service_orders WHERE account_id = ?");
    if (end.bind(account).step()) start = std::max(start, end.optional_integer(0).value_or(0));
  }
  const std::string guid = random_guid();
  call.db
      .prepare(
          "INSERT INTO service_orders (guid, account_id, ordered_at, period_start, period_end) "
          "VALUES (?, ?, ?, ?, ?)")
      .bind(guid, account, now_ms(), start, start + kOrderPeriod.count())
      .run();
  call.reply.scalar(guid);
}

// The account's period is the same for every quota type: its start and its end, or no
// dates before the first order.
void get_service_order_period(Call& call) {
  const std::string type = call.args.string("quotaType");
  const std::int64_t account = call.account();
  if (!type.empty() && std::none_of(kQuotaKinds.begin(), kQuotaKinds.end(),
                                    [&](QuotaKind kind) { return quota_type(kind) == type; })) {
    throw ApplicationFault("InvalidArgument", "No quota type '" + clip(type) + "'");
  }
  auto period = call.db.prepare(
      "SELECT MIN(period_start), MAX(period_end) FROM service_orders WHERE account_id = ?");
  period.bind(account).step();
  Dates dates;
  if (period.optional_integer(0)) dates = {time_at(period, 0), time_at(period, 1)};
  call.reply.dates(std::move(dates));
}

void are_deployments_disabled(Call& call) {
  call.reply.scalar(call.server.deployments_disabled.contains(call.account()));
}

constexpr Operation kOperations[] = {
    {"getQuotaList_Array", Access::keyed, get_quota_list, "excludeProjectGuid -> Quota[]"},
    {"initiateServiceOrder", Access::keyed, initiate_service_order, "-> string"},
    {"getServiceOrderPeriod", Access::keyed, get_service_order_period, "quotaType -> dateTime[]"},
    {"areDeploymentsDisabled", Access::keyed, are_deployments_disabled, "-> boolean"},
};

}  // namespace

std::span<const Operation> quota_operations() {
  return kOperations;
}

}  // namespace sandbox
