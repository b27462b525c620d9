#pragma once

#include <cstdint>
#include <string>

#include "brenmoor/field.h"

namespace brenmoor {

// One service account open to the signed-in user. getAccounts() fills the id and the name;
// the other properties are the caller's to use.
struct UserAccountInfo {
  Field<bool> SSLDisabled;
  Field<bool> SSLOptional;
  Field<bool> SSLRequired;
  Field<int32_t> accountID;
  FlaggedField<std::string> accountName;
  Field<bool> hasReadTerms;
  Field<bool> trialAccount;
};

}  // namespace brenmoor
