#pragma once
// Where and how a template is published.

#include <cstdint>
#include <string>

#include "brenmoor/date.h"
#include "brenmoor/field.h"

namespace brenmoor {

// The deployment of one template; only `deployed` is filled when it is not deployed.
struct DeploymentInfo {
  Field<bool> deployed;
  FlaggedField<Date> deploymentDate;  // local time; not set when the service gives none
  FlaggedField<std::string> deploymentGuid;
  Field<int32_t> duration;
  Field<int32_t> height;
  FlaggedField<std::string> link;
  Field<bool> liveEnabled;
  FlaggedField<std::string> loginFlag;
  FlaggedField<std::string> loginUrl;
  FlaggedField<std::string> name;
  FlaggedField<std::string> versionGuid;
  Field<int32_t> width;
  Field<int32_t> size;
};

// A deployment environment a project can be published to.
struct DeploymentEnvironmentInfo {
  std::string name;
  int16_t id = 0;
  bool mustUsePath = false;  // the environment requires a deployment path
};

// The progress of one deployment version.
struct DeploymentStatusInfo {
  std::string versionGuid;
  std::string state;
  std::string progress;
};

}  // namespace brenmoor
