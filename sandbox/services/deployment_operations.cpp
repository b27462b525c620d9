#include <algorithm>
#include <unordered_set>

#include "services/lookups.h"
#include "services/main_operations.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "store/data_record_store.h"
#include "store/database.h"
#include "store/deployment_store.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

void get_deployment_info(Call& call) {
  call.reply.record("DeploymentInfo", deployment_info(call.db, call.args.string("templateGuid")));
}

void set_deployment_version_duration(Call& call) {
  const std::string version = call.args.string("versionGuid");
  const std::int32_t duration = call.args.int32("duration");
  if (duration < 0) throw ApplicationFault("InvalidDuration", "A duration cannot be negative");
  const bool exists =
      call.db.prepare("SELECT 1 FROM deployments WHERE version_guid = ? AND version_guid <> ''")
          .bind(version)
          .step();
  if (exists) {
    call.db.prepare("UPDATE deployments SET duration = ? WHERE version_guid = ?")
        .bind(duration, version)
        .run();
  }
  call.reply.scalar(exists);
}

void get_deployment_environment_list(Call& call) {
  auto row =
      call.db.prepare("SELECT id, name, must_use_path FROM deployment_environments ORDER BY id");
  std::vector<Fields> environments;
  while (row.step()) {
    environments.push_back(
        {{"id", int32_at(row, 0)}, {"name", row.text(1)}, {"mustUsePath", flag_at(row, 2)}});
  }
  call.reply.records("DeploymentEnvironmentInfo", std::move(environments));
}

// Environment 0 takes the definition off the project.
void set_project_deployment_definition(Call& call) {
  const std::string project = call.args.string("projectGuid");
  const std::int32_t environment = call.args.int32("deploymentDefID");
  const std::string path = call.args.string("deploymentPath");
  require_project(call, project);
  if (environment != 0) {
    auto row =
        call.db.prepare("SELECT name, must_use_path FROM deployment_environments WHERE id = ?");
    if (!row.bind(environment).step()) {
      throw ApplicationFault("NoSuchEnvironment", "No deployment environment with that id",
                             kNotFoundFault);
    }
    if (flag_at(row, 1) && path.empty()) {
      throw ApplicationFault("PathRequired",
                             "Deployments to " + row.text(0) + " need a deployment path");
    }
  }
  call.db
      .prepare(
          "UPDATE projects SET deployment_def_id = ?, deployment_path = ?, modified_at = ? "
          "WHERE guid = ?")
      .bind(environment, path, now_ms(), project)
      .run();
  call.reply.scalar(true);
}

void get_deployment_status_list(Call& call) {
  std::vector<Fields> statuses;
  for (const std::string& guid : call.args.strings("deploymentGuidList")) {
    statuses.push_back(deployment_status(call.db, guid));
  }
  call.reply.records("DeploymentStatusInfo", std::move(statuses));
}

// Templates that are not deployed yet: a new version of a deployed one adds nothing.
std::int64_t new_deployments(Database& db, const std::vector<std::string>& templates) {
  const std::unordered_set<std::string> distinct(templates.begin(), templates.end());
  return std::count_if(distinct.begin(), distinct.end(), [&](const std::string& guid) {
    return !db.prepare(
                  "SELECT 1 FROM deployments WHERE template_guid = ? AND deployed_at IS NOT NULL")
                .bind(guid)
                .step();
  });
}

// Publishes each template as a new version, provided one of the given records fills it;
// answers the deployment guids in template order. All or nothing.
void deploy(Call& call) {
  const std::vector<std::string> records = call.args.strings("datarecordGuidList");
  const std::vector<std::string> templates = call.args.strings("templateGuidList");
  const std::int64_t account = call.account();
  if (call.server.deployments_disabled.contains(account)) {
    throw ApplicationFault("DeploymentsDisabled", "Deployments are disabled for this account");
  }
  const std::unordered_set<std::string> given(records.begin(), records.end());
  for (const std::string& template_guid : templates) {
    const auto attached = records_attached_to(call.db, account, template_guid);
    if (std::none_of(attached.begin(), attached.end(),
                     [&](const std::string& record) { return given.contains(record); })) {
      throw ApplicationFault(
          "NoSuchDataRecord",
          "None of the given data records is attached to template " + clip(template_guid),
          kNotFoundFault);
    }
  }
  require_quota(call, QuotaKind::deployments,
                static_cast<double>(new_deployments(call.db, templates)));
  Transaction transaction(call.db);
  Strings deployments;
  for (const std::string& template_guid : templates) {
    deployments.push_back(
        deploy_template(call.db, template_guid, call.server.base_url).deployment_guid);
  }
  transaction.commit();
  call.reply.strings(std::move(deployments));
}

constexpr Operation kOperations[] = {
    {"getDeploymentInfo", Access::keyed, get_deployment_info, "templateGuid -> DeploymentInfo"},
    {"setDeploymentVersionDuration", Access::keyed, set_deployment_version_duration,
     "versionGuid duration:int -> boolean"},
    {"getDeploymentEnvironmentList_Array", Access::keyed, get_deployment_environment_list,
     "-> DeploymentEnvironmentInfo[]"},
    {"setProjectDeploymentDefinition", Access::keyed, set_project_deployment_definition,
     "projectGuid deploymentDefID:int deploymentPath -> boolean"},
    {"getDeploymentStatusList_Array", Access::keyed, get_deployment_status_list,
     "deploymentGuidList:string[] -> DeploymentStatusInfo[]"},
    {"deploy", Access::keyed, deploy,
     "datarecordGuidList:string[] templateGuidList:string[] -> string[]"},
};

}  // namespace

std::span<const Operation> deployment_operations() {
  return kOperations;
}

}  // namespace sandbox
