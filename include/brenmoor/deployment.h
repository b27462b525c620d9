#pragma once
// Where and how a template is published.

#include <cstdint>
#include <string>

#include "brenmoor/date.h"
#include "brenmoor/property.h"

namespace brenmoor {

// The deployment of one template; only `deployed` is filled when it is not deployed.
struct DeploymentInfo {
  Property<bool> deployed;
  FlaggedProperty<Date> deploymentDate;  // local time; not set when the service gives none
  FlaggedProperty<std::string> deploymentGuid;
  Property<int32_t> duration;
  Property<int32_t> height;
  FlaggedProperty<std::string> link;
  Property<bool> liveEnabled;
  FlaggedProperty<std::string> loginFlag;
  FlaggedProperty<std::string> loginUrl;
  FlaggedProperty<std::string> name;
  FlaggedProperty<std::string> versionGuid;
  Property<int32_t> width;
  Property<int32_t> size;
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
