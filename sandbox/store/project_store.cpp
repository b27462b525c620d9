#include "store/project_store.h"

#include <string>

#include "store/database.h"
#include "store/deployment_store.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

// ?1 is the account; `condition` may use ?2.
std::vector<Fields> query_projects(Database& db, std::string_view condition, std::int64_t account,
                                   std::string_view second) {
  auto row = db.prepare(
      "SELECT p.created_at, u.email, p.deployment_def_id, p.deployment_path, "
      "p.description, p.event_end, p.event_start, p.guid, p.linked_project_guid, "
      "COALESCE(l.name, ''), p.modified_at, p.name, p.notes, p.type, "
      "EXISTS (SELECT 1 FROM templates t JOIN deployments d ON d.template_guid = t.guid "
      "        WHERE t.project_guid = p.guid) "
      "FROM projects p JOIN users u ON u.id = p.creator_id "
      "LEFT JOIN projects l ON l.guid = p.linked_project_guid AND l.account_id = p.account_id "
      "WHERE p.account_id = ?1 AND " +
      std::string(condition) + " ORDER BY p.name");
  row.bind(account, second);
  std::vector<Fields> projects;
  while (row.step()) {
    projects.push_back({{"created", time_at(row, 0)},
                        {"creator", row.text(1)},
                        {"deploymentDefID", int32_at(row, 2)},
                        {"deploymentPath", row.text(3)},
                        {"description", row.text(4)},
                        {"eventEnd", time_or_nil_at(row, 5)},
                        {"eventStart", time_or_nil_at(row, 6)},
                        {"guid", row.text(7)},
                        {"linkedProjectGuid", row.text(8)},
                        {"linkedProjectName", row.text(9)},
                        {"modified", time_at(row, 10)},
                        {"name", row.text(11)},
                        {"notes", row.text(12)},
                        {"typeID", row.text(13)},
                        {"hasDeployedTemplate", flag_at(row, 14)}});
  }
  return projects;
}

}  // namespace

std::vector<Fields> project_records(Database& db, std::int64_t account,
                                    std::optional<std::string_view> type) {
  if (!type) return query_projects(db, "?2 = ''", account, "");
  return query_projects(db, "p.type = ?2", account, *type);
}

std::optional<Fields> project_record(Database& db, std::int64_t account, std::string_view guid) {
  std::vector<Fields> found = query_projects(db, "p.guid = ?2", account, guid);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

bool project_in_account(Database& db, std::int64_t account, std::string_view guid) {
  auto row = db.prepare("SELECT 1 FROM projects WHERE account_id = ? AND guid = ?");
  return row.bind(account, guid).step();
}

bool project_has_deployment(Database& db, std::string_view guid, std::string_view type) {
  auto row = db.prepare(
      "SELECT 1 FROM templates t JOIN deployments d ON d.template_guid = t.guid "
      "WHERE t.project_guid = ?1 AND (?2 = '' OR t.type = ?2)");
  return row.bind(guid, type).step();
}

int template_count(Database& db, std::string_view guid) {
  auto row = db.prepare("SELECT COUNT(*) FROM templates WHERE project_guid = ?");
  row.bind(guid).step();
  return static_cast<int>(row.integer(0));
}

void touch_project(Database& db, std::string_view guid) {
  db.prepare("UPDATE projects SET modified_at = ? WHERE guid = ?").bind(now_ms(), guid).run();
}

bool remove_project_templates(Database& db, std::string_view guid, bool undeploy) {
  Transaction transaction(db);
  if (!db.prepare("SELECT 1 FROM projects WHERE guid = ?").bind(guid).step()) return false;
  if (undeploy) undeploy_project(db, guid);
  db.prepare("DELETE FROM templates WHERE project_guid = ?").bind(guid).run();
  touch_project(db, guid);
  transaction.commit();
  return true;
}

}  // namespace sandbox
