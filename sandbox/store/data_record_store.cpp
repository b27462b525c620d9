#include "store/data_record_store.h"

#include <algorithm>
#include <unordered_set>

#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

DataRecord load_data_record(Database& db, std::int64_t id) {
  DataRecord record;
  auto head = db.prepare("SELECT guid, name FROM data_records WHERE id = ?");
  if (head.bind(id).step()) {
    record.guid = head.text(0);
    record.name = head.text(1);
  }

  auto entry = db.prepare(
      "SELECT guid, label, description, type, ext, format, escaped, hidden, has_value, value, "
      "asset_guid, asset_dependencies FROM data_record_entries WHERE record_id = ? "
      "ORDER BY position");
  entry.bind(id);
  while (entry.step()) {
    DataRecordEntry& loaded = record.entries.emplace_back();
    loaded.guid = entry.text(0);
    loaded.label = entry.text(1);
    loaded.description = entry.text(2);
    loaded.type = entry.text(3);
    loaded.ext = entry.text(4);
    loaded.format = entry.text(5);
    loaded.escaped = flag_at(entry, 6);
    loaded.hidden = flag_at(entry, 7);
    if (flag_at(entry, 8))
      loaded.value = DataRecordValue{entry.text(9), entry.text(10), entry.text(11)};
  }

  auto attached = db.prepare(
      "SELECT template_guid FROM data_record_templates WHERE record_id = ? ORDER BY position");
  attached.bind(id);
  while (attached.step()) record.template_guids.push_back(attached.text(0));
  return record;
}

std::unordered_set<std::string> attached_templates(Database& db, std::int64_t id) {
  auto row = db.prepare("SELECT template_guid FROM data_record_templates WHERE record_id = ?");
  row.bind(id);
  std::unordered_set<std::string> templates;
  while (row.step()) templates.insert(row.text(0));
  return templates;
}

}  // namespace

bool project_has_data_record(Database& db, std::string_view project_guid, std::string_view guid) {
  return db.prepare("SELECT 1 FROM data_records WHERE project_guid = ? AND guid = ?")
      .bind(project_guid, guid)
      .step();
}

void save_data_record(Database& db, std::string_view project_guid, const DataRecord& record) {
  Transaction transaction(db);
  db.prepare("DELETE FROM data_records WHERE project_guid = ? AND guid = ?")
      .bind(project_guid, record.guid)
      .run();
  db.prepare("INSERT INTO data_records (guid, project_guid, name) VALUES (?, ?, ?)")
      .bind(record.guid, project_guid, record.name)
      .run();
  auto id_row = db.prepare("SELECT id FROM data_records WHERE project_guid = ? AND guid = ?");
  id_row.bind(project_guid, record.guid).step();
  const std::int64_t id = id_row.integer(0);

  std::int64_t position = 0;
  for (const DataRecordEntry& entry : record.entries) {
    const DataRecordValue value = entry.value.value_or(DataRecordValue{});
    db.prepare(
          "INSERT INTO data_record_entries (record_id, position, guid, label, description, type, "
          "ext, format, escaped, hidden, has_value, value, asset_guid, asset_dependencies) "
          "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .bind(id, position++, entry.guid, entry.label, entry.description, entry.type, entry.ext,
              entry.format, std::int64_t{entry.escaped}, std::int64_t{entry.hidden},
              std::int64_t{entry.value.has_value()}, value.value, value.asset_guid,
              value.asset_dependencies)
        .run();
  }
  position = 0;
  for (const std::string& template_guid : record.template_guids) {
    db.prepare(
          "INSERT INTO data_record_templates (record_id, position, template_guid) "
          "VALUES (?, ?, ?)")
        .bind(id, position++, template_guid)
        .run();
  }
  transaction.commit();
}

std::optional<DataRecord> latest_data_record(Database& db, std::int64_t account,
                                             std::span<const std::string> template_guids) {
  if (template_guids.empty()) return std::nullopt;
  // The candidates hold the first template; the newest that holds all the others wins.
  auto candidate = db.prepare(
      "SELECT DISTINCT r.id FROM data_records r JOIN projects p ON p.guid = r.project_guid "
      "JOIN data_record_templates t ON t.record_id = r.id "
      "WHERE p.account_id = ? AND t.template_guid = ? ORDER BY r.id DESC");
  candidate.bind(account, template_guids.front());
  while (candidate.step()) {
    const std::int64_t id = candidate.integer(0);
    const auto attached = attached_templates(db, id);
    const bool holds_all =
        std::all_of(template_guids.begin(), template_guids.end(),
                    [&](const std::string& guid) { return attached.contains(guid); });
    if (holds_all) return load_data_record(db, id);
  }
  return std::nullopt;
}

bool set_data_record_sync_data(Database& db, std::int64_t account, std::string_view record_guid,
                               std::string_view template_guid, std::string_view xml) {
  constexpr std::string_view kAttachment =
      "WHERE template_guid = ?2 AND record_id IN "
      "(SELECT r.id FROM data_records r JOIN projects p ON p.guid = r.project_guid "
      " WHERE p.account_id = ?1 AND r.guid = ?3)";
  if (!db.prepare("SELECT 1 FROM data_record_templates " + std::string(kAttachment))
           .bind(account, template_guid, record_guid)
           .step()) {
    return false;
  }
  db.prepare("UPDATE data_record_templates SET sync_xml = ?4 " + std::string(kAttachment))
      .bind(account, template_guid, record_guid, xml)
      .run();
  return true;
}

std::vector<std::string> records_attached_to(Database& db, std::int64_t account,
                                             std::string_view template_guid) {
  auto row = db.prepare(
      "SELECT DISTINCT r.guid FROM data_records r JOIN projects p ON p.guid = r.project_guid "
      "JOIN data_record_templates t ON t.record_id = r.id "
      "WHERE p.account_id = ? AND t.template_guid = ?");
  row.bind(account, template_guid);
  std::vector<std::string> guids;
  while (row.step()) guids.push_back(row.text(0));
  return guids;
}

}  // namespace sandbox
