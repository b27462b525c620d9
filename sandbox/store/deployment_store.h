#pragma once

#include <string>
#include <string_view>

#include "soap/value.h"

namespace sandbox {

class Database;

// The DeploymentInfo record of a template; one that was never deployed answers deployed
// false, a nil date, zeros and empty strings.
Fields deployment_info(Database& db, std::string_view template_guid);

// The DeploymentStatusInfo record of a deployment: "deployed" at "100", or "unknown" at "0"
// with no version for a guid the store does not know.
Fields deployment_status(Database& db, std::string_view deployment_guid);

struct DeploymentReceipt {
  std::string version_guid;
  std::string deployment_guid;
};

// Publishes a template as a new version: replaces its deployment with one dated now, with
// fresh version and deployment guids, the template's name and size and a link under
// `base_url`. Throws std::invalid_argument when no template has that guid.
DeploymentReceipt deploy_template(Database& db, std::string_view template_guid,
                                  std::string_view base_url);

// Takes down the deployments of the project's templates.
void undeploy_project(Database& db, std::string_view project_guid);

}  // namespace sandbox
