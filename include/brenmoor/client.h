#pragma once
// Registrants (clients) of a project, and what is known of the machine they viewed from.

#include <cstdint>
#include <memory>
#include <string>

#include "brenmoor/date.h"
#include "brenmoor/field.h"

namespace brenmoor {

struct ClientDetails {
  Field<int32_t> bandwidth;
  FlaggedField<std::string> browserType;
  Field<int32_t> browserVersion;
  FlaggedField<std::string> country;
  FlaggedField<Date> firstAccessed;
  FlaggedField<std::string> guid;
  Field<bool> hasCookies;
  Field<bool> hasFlash;
  Field<bool> hasJava;
  Field<bool> hasReal;
  Field<bool> hasWM;
  FlaggedField<std::string> ipAddress;
  Field<int32_t> jsVersionMajor;
  Field<int32_t> jsVersionMinor;
  FlaggedField<std::string> language;
  FlaggedField<std::string> operatingSystem;
  Field<int32_t> screenDepth;
  Field<int32_t> screenHeight;
  Field<int32_t> screenWidth;
};

// One registrant; `details` is null when the service sent none.
struct Client {
  FlaggedField<Date> created;
  FlaggedField<std::string> customXML;
  FlaggedField<std::shared_ptr<ClientDetails>> details;
  FlaggedField<std::string> email;
  FlaggedField<std::string> firstName;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> lastName;
  FlaggedField<Date> modified;
  FlaggedField<std::string> Password;
  Field<bool> registered;
  FlaggedField<std::string> userHostName;
  FlaggedField<std::string> userIP;
};

}  // namespace brenmoor
