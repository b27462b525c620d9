// User accounts and e-mail. The two creations work on an object that never signed in, so
// they send no key; they are also the only calls on which a clear password travels.

#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

constexpr auto kCreateUserAccount = Operation<bool>("createUserAccount", Service::Accounts)
                                        .keyless()
                                        .sends("firstName", "lastName", "email", "password")
                                        .reads(asBool);
constexpr auto kCreateUserInAccount =
    Operation<bool>("createUserInAccount", Service::Accounts)
        .keyless()
        .sends("accountKey", "firstName", "lastName", "email", "password", "accountType")
        .reads(asBool);
constexpr auto kSendEmail = Operation<bool>("sendEmail", Service::Main)
                                .sends("to", "subject", "msg")
                                .timeout(kLongTimeoutMs)
                                .reads(asBool);
constexpr auto kTerminateAsync =
    Operation<std::string>("terminateUserAccount_Async", Service::Accounts).reads(asText);
constexpr auto kTerminateResult = Operation<bool>("terminateUserAccount_Result", Service::Accounts)
                                      .sends("procGuid")
                                      .forProcess("C")
                                      .reads(asBool);

}  // namespace

bool ZylService::createUserAccount(const std::string& firstName, const std::string& lastName,
                                   const std::string& email, const std::string& Password) {
  return kCreateUserAccount(*state_, firstName, lastName, email, Password);
}
bool ZylService::createUserInAccount(const std::string& accountKey, const std::string& firstName,
                                     const std::string& lastName, const std::string& email,
                                     const std::string& Password, const std::string& accountType) {
  return kCreateUserInAccount(*state_, accountKey, firstName, lastName, email, Password,
                              accountType);
}
bool ZylService::sendEmail(const std::string& emailTo, const std::string& subject,
                           const std::string& msg) {
  return kSendEmail(*state_, emailTo, subject, msg);
}
std::string ZylService::terminateUserAccount_Async() {
  return kTerminateAsync(*state_);
}
bool ZylService::terminateUserAccount_Result(const std::string& procGuid) {
  return kTerminateResult(*state_, procGuid);
}

}  // namespace brenmoor
