#pragma once

#include <cstdint>
#include <string>

#include "brenmoor/date.h"
#include "brenmoor/field.h"

namespace brenmoor {

// A project: the container in which templates are copied, filled and deployed.
struct ProjectInfo {
  FlaggedField<Date> created;
  FlaggedField<std::string> creator;
  Field<int32_t> deploymentDefID;
  FlaggedField<std::string> deploymentPath;
  FlaggedField<std::string> description;
  FlaggedField<Date> eventEnd;
  FlaggedField<Date> eventStart;
  FlaggedField<std::string> guid;
  FlaggedField<std::string> linkedProjectGuid;
  FlaggedField<std::string> linkedProjectName;
  FlaggedField<Date> modified;
  FlaggedField<std::string> name;
  FlaggedField<std::string> notes;
  // Never filled from an answer: it is there for callers that keep the type themselves.
  FlaggedField<std::string> typeID;
  Field<bool> hasDeployedTemplate;
};

}  // namespace brenmoor
