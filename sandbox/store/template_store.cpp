#include "store/template_store.h"

#include "crypto/random.h"
#include "store/database.h"
#include "store/deployment_store.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

// The templates `t` that user ?1 may use.
constexpr std::string_view kUsable =
    "(t.project_guid IS NULL OR t.project_guid IN (SELECT p.guid FROM projects p "
    "JOIN account_members m ON m.account_id = p.account_id WHERE m.user_id = ?1))";

// `from` names the templates as `t` and may join more; `condition` takes `args` as ?1, ?2...
template <class... Args>
std::vector<Fields> query_templates(Database& db, bool with_deployment, std::string_view from,
                                    std::string_view condition, const Args&... args) {
  auto row = db.prepare(
      "SELECT t.created_at, t.modified_at, t.description, t.flags, t.folder_name, t.guid, "
      "t.height, t.icon_url, t.live_type, t.name, t.type, t.width, t.metadata_xml FROM " +
      std::string(from) + " WHERE " + std::string(condition) + " ORDER BY t.name, t.guid");
  row.bind(args...);
  std::vector<Fields> templates;
  while (row.step()) {
    Fields fields{{"created", time_at(row, 0)}, {"modified", time_at(row, 1)}};
    if (with_deployment) {
      fields.push_back(
          {"deploymentInfo", Record{"DeploymentInfo", deployment_info(db, row.text(5))}});
    }
    fields.insert(fields.end(), {{"description", row.text(2)},
                                 {"flags", row.text(3)},
                                 {"folderName", row.text(4)},
                                 {"guid", row.text(5)},
                                 {"height", int32_at(row, 6)},
                                 {"iconUrl", row.text(7)},
                                 {"liveType", int32_at(row, 8)},
                                 {"name", row.text(9)},
                                 {"type", row.text(10)},
                                 {"width", int32_at(row, 11)},
                                 {"metadataXML", row.text(12)}});
    templates.push_back(std::move(fields));
  }
  return templates;
}

std::optional<Fields> first_of(std::vector<Fields> records) {
  if (records.empty()) return std::nullopt;
  return std::move(records.front());
}

std::vector<Fields> property_records(Database& db, std::string_view component_guid) {
  auto row = db.prepare(
      "SELECT asset_dependencies, asset_id, manageable, manageid, name, value "
      "FROM component_properties WHERE component_guid = ? ORDER BY position");
  row.bind(component_guid);
  std::vector<Fields> properties;
  while (row.step()) {
    properties.push_back({{"assetDependencies", row.text(0)},
                          {"assetID", row.text(1)},
                          {"manageable", flag_at(row, 2)},
                          {"manageid", row.text(3)},
                          {"name", row.text(4)},
                          {"value", row.text(5)}});
  }
  return properties;
}

}  // namespace

std::optional<TemplatePlace> find_usable_template(Database& db, std::int64_t user,
                                                  std::string_view guid) {
  auto row = db.prepare("SELECT t.name, t.project_guid FROM templates t WHERE " +
                        std::string(kUsable) + " AND t.guid = ?2");
  if (!row.bind(user, guid).step()) return std::nullopt;
  return TemplatePlace{row.text(0), row.optional_text(1)};
}

std::vector<Fields> catalog_template_records(Database& db, std::string_view type) {
  return query_templates(db, false, "templates t",
                         "t.project_guid IS NULL AND (?1 = '' OR t.type = ?1)", type);
}

std::vector<Fields> project_template_records(Database& db, std::string_view project_guid,
                                             bool with_deployment) {
  return query_templates(db, with_deployment, "templates t", "t.project_guid = ?1", project_guid);
}

std::optional<Fields> usable_template_record(Database& db, std::int64_t user,
                                             std::string_view guid) {
  return first_of(query_templates(db, false, "templates t",
                                  std::string(kUsable) + " AND t.guid = ?2", user, guid));
}

std::optional<Fields> theme_template_record(Database& db, std::string_view theme_guid,
                                            std::string_view template_guid) {
  return first_of(
      query_templates(db, false, "templates t JOIN theme_templates tt ON tt.template_guid = t.guid",
                      "tt.theme_guid = ?1 AND t.guid = ?2", theme_guid, template_guid));
}

std::vector<Fields> component_records(Database& db, std::string_view template_guid,
                                      std::string_view guid, std::string_view label,
                                      std::string_view class_name) {
  auto row = db.prepare(
      "SELECT class_name, guid, label FROM components WHERE template_guid = ?1 "
      "AND (?2 = '' OR guid = ?2) AND (?3 = '' OR label = ?3) AND (?4 = '' OR class_name = ?4) "
      "ORDER BY position");
  row.bind(template_guid, guid, label, class_name);
  std::vector<Fields> components;
  while (row.step()) {
    components.push_back(
        {{"className", row.text(0)},
         {"guid", row.text(1)},
         {"label", row.text(2)},
         {"properties", RecordArray{"Property", property_records(db, row.text(1))}}});
  }
  return components;
}

bool project_has_template_named(Database& db, std::string_view project_guid,
                                std::string_view name) {
  auto row = db.prepare("SELECT 1 FROM templates WHERE project_guid = ? AND name = ?");
  return row.bind(project_guid, name).step();
}

bool project_has_template(Database& db, std::string_view project_guid, std::string_view guid) {
  auto row = db.prepare("SELECT 1 FROM templates WHERE project_guid = ? AND guid = ?");
  return row.bind(project_guid, guid).step();
}

std::string copy_into_project(Database& db, std::string_view source_guid,
                              std::string_view project_guid, std::string_view name) {
  Transaction transaction(db);
  // The copy takes its own guid as a name until the template it replaces is gone: that one
  // may be the source itself.
  const std::string copy = random_guid();
  db.prepare(
        "INSERT INTO templates (guid, project_guid, name, description, type, flags, "
        "folder_name, icon_url, width, height, live_type, metadata_xml, created_at, modified_at) "
        "SELECT ?1, ?2, ?1, description, type, flags, folder_name, icon_url, width, height, "
        "live_type, metadata_xml, ?3, ?3 FROM templates WHERE guid = ?4")
      .bind(copy, project_guid, now_ms(), source_guid)
      .run();

  std::vector<std::string> components;
  {
    auto row = db.prepare("SELECT guid FROM components WHERE template_guid = ?");
    row.bind(source_guid);
    while (row.step()) components.push_back(row.text(0));
  }
  for (const std::string& component : components) {
    const std::string component_copy = random_guid();
    db.prepare(
          "INSERT INTO components (guid, template_guid, position, class_name, label) "
          "SELECT ?1, ?2, position, class_name, label FROM components WHERE guid = ?3")
        .bind(component_copy, copy, component)
        .run();
    db.prepare(
          "INSERT INTO component_properties (component_guid, position, name, value, "
          "asset_dependencies, asset_id, manageable, manageid) "
          "SELECT ?1, position, name, value, asset_dependencies, asset_id, manageable, manageid "
          "FROM component_properties WHERE component_guid = ?2")
        .bind(component_copy, component)
        .run();
  }

  db.prepare("DELETE FROM templates WHERE project_guid = ? AND name = ?")
      .bind(project_guid, name)
      .run();
  db.prepare("UPDATE templates SET name = ? WHERE guid = ?").bind(name, copy).run();
  transaction.commit();
  return copy;
}

void remove_template(Database& db, std::string_view guid, bool undeploy) {
  Transaction transaction(db);
  if (undeploy) db.prepare("DELETE FROM deployments WHERE template_guid = ?").bind(guid).run();
  db.prepare("DELETE FROM templates WHERE guid = ?").bind(guid).run();
  transaction.commit();
}

}  // namespace sandbox
