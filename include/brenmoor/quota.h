#pragma once

#include <string>

#include "brenmoor/field.h"

namespace brenmoor {

// One limit on an account's use of the service, what is used of it, and what happens when it
// is reached (`failAction`).
struct Quota {
  FlaggedField<std::string> name;
  FlaggedField<std::string> units;
  FlaggedField<std::string> quotatype;
  FlaggedField<double> limit;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> failAction;
  FlaggedField<double> used;
  Field<bool> defaultLimit;
};

}  // namespace brenmoor
