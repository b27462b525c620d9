#include "store/theme_store.h"

#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

std::vector<Fields> theme_template_records(Database& db, std::string_view theme_guid) {
  auto row = db.prepare(
      "SELECT template_guid, required FROM theme_templates WHERE theme_guid = ? "
      "ORDER BY position");
  row.bind(theme_guid);
  std::vector<Fields> templates;
  while (row.step()) {
    templates.push_back({{"templateGuid", row.text(0)}, {"required", flag_at(row, 1)}});
  }
  return templates;
}

// `condition` takes `argument` as ?1.
std::vector<Fields> query_themes(Database& db, std::string_view condition,
                                 std::string_view argument) {
  auto row = db.prepare(
      "SELECT created_at, modified_at, name, description, guid, width, height, sm_icon_url, "
      "lg_icon_url FROM themes WHERE " +
      std::string(condition) + " ORDER BY name, guid");
  row.bind(argument);
  std::vector<Fields> themes;
  while (row.step()) {
    themes.push_back({{"created", time_at(row, 0)},
                      {"modified", time_at(row, 1)},
                      {"name", row.text(2)},
                      {"description", row.text(3)},
                      {"guid", row.text(4)},
                      {"width", int32_at(row, 5)},
                      {"height", int32_at(row, 6)},
                      {"smIconUrl", row.text(7)},
                      {"lgIconUrl", row.text(8)},
                      {"themeTemplateList",
                       RecordArray{"ThemeTemplate", theme_template_records(db, row.text(4))}}});
  }
  return themes;
}

}  // namespace

std::vector<Fields> theme_records(Database& db, std::string_view type) {
  return query_themes(db, "?1 = '' OR type = ?1", type);
}

std::optional<Fields> theme_record(Database& db, std::string_view guid) {
  std::vector<Fields> found = query_themes(db, "guid = ?1", guid);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::optional<std::vector<ThemeTemplate>> theme_templates(Database& db, std::string_view guid) {
  if (!db.prepare("SELECT 1 FROM themes WHERE guid = ?").bind(guid).step()) return std::nullopt;
  auto row = db.prepare(
      "SELECT t.guid, t.name FROM theme_templates tt JOIN templates t ON t.guid = "
      "tt.template_guid WHERE tt.theme_guid = ? ORDER BY tt.position");
  row.bind(guid);
  std::vector<ThemeTemplate> templates;
  while (row.step()) templates.push_back({row.text(0), row.text(1)});
  return templates;
}

}  // namespace sandbox
