// Quotas, service orders and account checks, on the Accounts service.

#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

void readQuota(const Fields& in, Quota& q) {
  in("guid", q.guid);
  in("name", q.name);
  in("type", q.quotatype);
  in("failAction", q.failAction);
  in("limit", q.limit);
  in("used", q.used);
  in("units", q.units);
  in("defaultLimit", q.defaultLimit);
}

std::shared_ptr<Collection<Date>> readDates(const Fields& list) {
  auto dates = std::make_shared<Collection<Date>>();
  list.forEachItem([&](const Fields& item) { dates->Add(item.as<Date>()); });
  return dates;
}

template <class Result>
constexpr auto accountsOperation(std::string_view name) {
  return Operation<Result>(name, Service::Accounts);
}

constexpr auto kInitiateServiceOrder =
    accountsOperation<std::string>("initiateServiceOrder").reads(asText);
constexpr auto kGetAccountName = accountsOperation<std::string>("getAccountNameFromKey")
                                     .keyless()
                                     .sends("accountKey")
                                     .reads(asText);
constexpr auto kIsUserAccountValid = accountsOperation<bool>("isUserAccountValid")
                                         .keyless()
                                         .sends("accountKey", "email", "passwordHash")
                                         .reads(asBool);
constexpr auto kChangeUserPassword =
    accountsOperation<bool>("changeUserPassword").sends("passwordHash").reads(asBool);
constexpr auto kAreDeploymentsDisabled =
    accountsOperation<bool>("areDeploymentsDisabled").reads(asBool);
constexpr auto kGetQuotaList =
    accountsOperation<std::shared_ptr<Collection<Quota>>>("getQuotaList_Array")
        .sends("excludeProjectGuid")
        .reads(listOf<Quota, readQuota>);
constexpr auto kGetServiceOrderPeriod =
    accountsOperation<std::shared_ptr<Collection<Date>>>("getServiceOrderPeriod")
        .sends("quotaType")
        .reads(readDates);

}  // namespace

std::string ZylService::initiateServiceOrder() {
  return kInitiateServiceOrder(*state_);
}
std::string ZylService::getAccountName(const std::string& accountKey) {
  return kGetAccountName(*state_, accountKey);
}
bool ZylService::isUserAccountValid(const std::string& accountKey, const std::string& email,
                                    const std::string& Password) {
  auto& md5 = state_->md5;
  return kIsUserAccountValid(*state_, accountKey, email,
                             md5.MD5(md5.MD5(Password) + email + accountKey));
}
bool ZylService::changeUserPassword(const std::string& Password) {
  return kChangeUserPassword(*state_, state_->md5.MD5(Password));
}
bool ZylService::areDeploymentsDisabled() {
  return kAreDeploymentsDisabled(*state_);
}
std::shared_ptr<Collection<Quota>> ZylService::getQuotaList(const std::string& excludeProjectGuid) {
  return kGetQuotaList(*state_, excludeProjectGuid);
}
std::shared_ptr<Collection<Date>> ZylService::getServiceOrderPeriod(const std::string& quotatype) {
  return kGetServiceOrderPeriod(*state_, quotatype);
}

}  // namespace brenmoor
