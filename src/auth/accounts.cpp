// The accounts of the signed-in user, and binding the session to one of them.

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "util/convert.h"
#include "util/record_reader.h"

namespace brenmoor {

using service::Operation;
using soap::Service;

namespace {
constexpr Operation kGetUserAccounts{"getUserAccounts", Service::Login};
constexpr Operation kSelectAccount{"selectAccount", Service::Login};
constexpr Operation kSelectAccountByGuid{"selectAccountByGuid", Service::Login};
}  // namespace

std::shared_ptr<Collection<UserAccountInfo>> ZylService::getAccounts() {
  return service::call(*state_, kGetUserAccounts, service::noElements,
                       std::shared_ptr<Collection<UserAccountInfo>>(), [](const soap::Answer& a) {
                         return util::readList<UserAccountInfo>(
                             a.returnNode(), [](const soap::Node& item) {
                               auto account = std::make_shared<UserAccountInfo>();
                               util::RecordReader in(item, util::RecordReader::Missing::Fails);
                               in("accountName", account->accountName);
                               in("accountID", account->accountID);
                               return account;
                             });
                       });
}

bool ZylService::selectAccount(const std::string& accountID) {
  return service::call(
      *state_, kSelectAccount,
      [&] {
        return service::Elements{{"account_id", util::toInt32(accountID)}};
      },
      false, service::returnBool);
}

bool ZylService::selectAccountByGuid(const std::string& accountGuid) {
  return service::call(
      *state_, kSelectAccountByGuid,
      [&] {
        return service::Elements{{"account_guid", accountGuid}};
      },
      false, service::returnBool);
}

}  // namespace brenmoor
