#include "store/theme_data_record.h"

#include <algorithm>
#include <limits>

#include "store/database.h"
#include "store/theme_store.h"

namespace sandbox {
namespace {

std::int16_t to_short(std::int64_t value) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

// The extension of a file name, without its dot; "" when it has none.
std::string extension_of(std::string_view file) {
  const auto dot = file.rfind('.');
  if (dot == std::string_view::npos || file.find('/', dot) != std::string_view::npos) return {};
  return std::string(file.substr(dot + 1));
}

}  // namespace

std::optional<DataRecord> theme_data_record(Database& db, std::string_view theme_guid) {
  const auto members = theme_templates(db, theme_guid);
  if (!members) return std::nullopt;
  DataRecord record;
  auto theme = db.prepare("SELECT name FROM themes WHERE guid = ?");
  if (theme.bind(theme_guid).step()) record.name = theme.text(0);
  for (const ThemeTemplate& member : *members) record.template_guids.push_back(member.guid);

  auto property = db.prepare(
      "SELECT t.name, t.width, t.height, c.label, p.name, p.value, p.asset_id, "
      "p.asset_dependencies, p.manageid "
      "FROM theme_templates tt JOIN templates t ON t.guid = tt.template_guid "
      "JOIN components c ON c.template_guid = t.guid "
      "JOIN component_properties p ON p.component_guid = c.guid "
      "WHERE tt.theme_guid = ? AND p.manageable <> 0 "
      "ORDER BY tt.position, c.position, p.position");
  property.bind(theme_guid);
  while (property.step()) {
    const std::string value = property.text(5);
    const std::string asset = property.text(6);
    const bool is_asset = !asset.empty();
    DataRecordEntry& entry = record.entries.emplace_back();
    entry.guid = property.text(8);
    entry.label = property.text(3) + "." + property.text(4);
    entry.description = property.text(0);
    entry.type = is_asset ? "asset" : "text";
    entry.ext = is_asset ? extension_of(value) : "";
    entry.value = DataRecordValue{value, asset, property.text(7)};
    entry.theme = ThemeEntryExtras{value, is_asset ? "Choose..." : "Edit...",
                                   to_short(property.integer(1)), to_short(property.integer(2))};
  }
  return record;
}

}  // namespace sandbox
