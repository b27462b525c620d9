// The accounts of the signed-in user, and binding the session to one of them.

#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

void readAccount(const Fields& in, UserAccountInfo& account) {
  in("accountName", account.accountName);
  in("accountID", account.accountID);
}

constexpr auto kGetUserAccounts =
    Operation<std::shared_ptr<Collection<UserAccountInfo>>>("getUserAccounts", Service::Login)
        .reads(listOf<UserAccountInfo, readAccount>);
constexpr auto kSelectAccount =
    Operation<bool>("selectAccount", Service::Login).sends("account_id").reads(asBool);
constexpr auto kSelectAccountByGuid =
    Operation<bool>("selectAccountByGuid", Service::Login).sends("account_guid").reads(asBool);

}  // namespace

std::shared_ptr<Collection<UserAccountInfo>> ZylService::getAccounts() {
  return kGetUserAccounts(*state_);
}

bool ZylService::selectAccount(const std::string& accountID) {
  // Converted inside the call: "abc" is reported and spends no key.
  return kSelectAccount(*state_, [&] { return util::toInt32(accountID); });
}

bool ZylService::selectAccountByGuid(const std::string& accountGuid) {
  return kSelectAccountByGuid(*state_, accountGuid);
}

}  // namespace brenmoor
