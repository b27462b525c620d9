// The registrants of a project, on the main service.

#include "brenmoor/zyl_service.h"
#include "service/call.h"
#include "users/client_record.h"

namespace brenmoor {

using namespace service;

namespace {

constexpr auto kGetRegistrationList =
    Operation<std::shared_ptr<Collection<Client>>>("getRegistrationList_Array", Service::Main)
        .sends("projectGuid", "maxRecords", "sortBy")
        .reads(listOf<Client, users::readClient>);
constexpr auto kAddRegisteredUser =
    Operation<std::string>("addRegisteredUser", Service::Main)
        .sends("projectGuid", "userGuid", "email", "firstName", "lastName", "password", "customXML",
               "userIP", "userHostName")
        .reads(asText);
constexpr auto kDeleteRegisteredUser = Operation<bool>("deleteRegisteredUser", Service::Main)
                                           .sends("projectGuid", "userGuid", "email")
                                           .reads(asBool);
constexpr auto kUpdatePassword = Operation<bool>("updateRegisteredUserPassword", Service::Main)
                                     .sends("projectGuid", "userGuid", "email", "password")
                                     .reads(asBool);
constexpr auto kUpdateName = Operation<bool>("updateRegisteredUserName", Service::Main)
                                 .sends("projectGuid", "userGuid", "email", "firstName", "lastName")
                                 .reads(asBool);
constexpr auto kUpdateCustomXml = Operation<bool>("updateRegisteredUserCustomXML", Service::Main)
                                      .sends("projectGuid", "userGuid", "email", "customXML")
                                      .reads(asBool);

// A registrant is named by guid or by e-mail. Without either the method says so, whatever the
// alert switch, and sends nothing.
bool identifies(State& state, const char* method, const std::string& userGuid,
                const std::string& email) {
  if (!userGuid.empty() || !email.empty()) return true;
  state.host->messageBox(std::string("Please supply either a userGuid or an email parameter to "
                                     "the Telvane Service Client ") +
                             method + " function",
                         "");
  return false;
}

}  // namespace

std::shared_ptr<Collection<Client>> ZylService::getRegistrationList(const std::string& projectGuid,
                                                                    int16_t maxRecords,
                                                                    const std::string& sortBy) {
  return kGetRegistrationList(*state_, projectGuid, int32_t{maxRecords}, sortBy);
}

std::string ZylService::addRegisteredUser(const std::string& projectGuid,
                                          const std::string& userGuid, const std::string& email,
                                          const std::string& firstName, const std::string& lastName,
                                          const std::string& Password, const std::string& customXML,
                                          const std::string& userIP,
                                          const std::string& userHostName) {
  return kAddRegisteredUser(*state_, projectGuid, userGuid, email, firstName, lastName, Password,
                            customXML, userIP, userHostName);
}

bool ZylService::deleteRegisteredUser(const std::string& projectGuid, const std::string& userGuid,
                                      const std::string& email) {
  return identifies(*state_, "deleteRegisteredUser", userGuid, email) &&
         kDeleteRegisteredUser(*state_, projectGuid, userGuid, email);
}

bool ZylService::updateRegisteredUserPassword(const std::string& projectGuid,
                                              const std::string& userGuid, const std::string& email,
                                              const std::string& Password) {
  return identifies(*state_, "updateRegisteredUserPassword", userGuid, email) &&
         kUpdatePassword(*state_, projectGuid, userGuid, email, Password);
}

bool ZylService::updateRegisteredUserName(const std::string& projectGuid,
                                          const std::string& userGuid, const std::string& email,
                                          const std::string& firstName,
                                          const std::string& lastName) {
  return identifies(*state_, "updateRegisteredUserName", userGuid, email) &&
         kUpdateName(*state_, projectGuid, userGuid, email, firstName, lastName);
}

bool ZylService::updateRegisteredUserCustomXML(const std::string& projectGuid,
                                               const std::string& userGuid,
                                               const std::string& email,
                                               const std::string& customXML) {
  return identifies(*state_, "updateRegisteredUserCustomXML", userGuid, email) &&
         kUpdateCustomXml(*state_, projectGuid, userGuid, email, customXML);
}

}  // namespace brenmoor
