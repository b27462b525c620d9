#include "store/deployment_store.h"

#include <stdexcept>

#include "crypto/random.h"
#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {

Fields deployment_info(Database& db, std::string_view template_guid) {
  auto row = db.prepare(
      "SELECT deployed_at, height, width, live_enabled, login_flag, login_url, name, "
      "version_guid, deployment_guid, link, duration, size "
      "FROM deployments WHERE template_guid = ?");
  if (!row.bind(template_guid).step()) {
    return {{"deployed", false},
            {"deploymentDate", Nil{}},
            {"height", 0},
            {"width", 0},
            {"liveEnabled", false},
            {"loginFlag", ""},
            {"loginUrl", ""},
            {"name", ""},
            {"versionGuid", ""},
            {"deploymentGuid", ""},
            {"link", ""},
            {"duration", 0},
            {"size", 0}};
  }
  return {{"deployed", true},
          {"deploymentDate", time_or_nil_at(row, 0)},
          {"height", int32_at(row, 1)},
          {"width", int32_at(row, 2)},
          {"liveEnabled", flag_at(row, 3)},
          {"loginFlag", row.text(4)},
          {"loginUrl", row.text(5)},
          {"name", row.text(6)},
          {"versionGuid", row.text(7)},
          {"deploymentGuid", row.text(8)},
          {"link", row.text(9)},
          {"duration", int32_at(row, 10)},
          {"size", int32_at(row, 11)}};
}

Fields deployment_status(Database& db, std::string_view deployment_guid) {
  auto row = db.prepare(
      "SELECT version_guid FROM deployments WHERE deployment_guid = ? AND deployment_guid <> ''");
  if (!row.bind(deployment_guid).step()) {
    return {{"versionGuid", ""}, {"state", "unknown"}, {"progress", "0"}};
  }
  return {{"versionGuid", row.text(0)}, {"state", "deployed"}, {"progress", "100"}};
}

DeploymentReceipt deploy_template(Database& db, std::string_view template_guid,
                                  std::string_view base_url) {
  auto source = db.prepare("SELECT name, width, height, live_type FROM templates WHERE guid = ?");
  if (!source.bind(template_guid).step()) {
    throw std::invalid_argument("no template " + std::string(template_guid) + " to deploy");
  }
  DeploymentReceipt receipt{random_guid(), random_guid()};
  db.prepare(
        "INSERT OR REPLACE INTO deployments (template_guid, deployed_at, height, width, "
        "live_enabled, name, version_guid, deployment_guid, link) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .bind(template_guid, now_ms(), source.integer(2), source.integer(1),
            std::int64_t{source.integer(3) != 0}, source.text(0), receipt.version_guid,
            receipt.deployment_guid,
            std::string(base_url) + "/live/" + receipt.deployment_guid + "/")
      .run();
  return receipt;
}

void undeploy_project(Database& db, std::string_view project_guid) {
  db.prepare(
        "DELETE FROM deployments WHERE template_guid IN "
        "(SELECT guid FROM templates WHERE project_guid = ?)")
      .bind(project_guid)
      .run();
}

}  // namespace sandbox
