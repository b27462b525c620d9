#pragma once

#include <cstdint>
#include <string>

#include "brenmoor/property.h"

namespace brenmoor {

// One service account open to the signed-in user. getAccounts() fills the id and the name;
// the other properties are the caller's to use.
struct UserAccountInfo {
  Property<bool> SSLDisabled;
  Property<bool> SSLOptional;
  Property<bool> SSLRequired;
  Property<int32_t> accountID;
  FlaggedProperty<std::string> accountName;
  Property<bool> hasReadTerms;
  Property<bool> trialAccount;
};

}  // namespace brenmoor
