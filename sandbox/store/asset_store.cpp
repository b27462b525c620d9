#include "store/asset_store.h"

#include "store/asset_types.h"
#include "store/database.h"
#include "store/record_columns.h"
#include "store/upload_store.h"

namespace sandbox {
namespace {

std::string_view order_by(SortKey sort) {
  switch (sort) {
    case SortKey::created: return "a.created_at, a.rowid";
    case SortKey::type: return "a.type_id, a.name COLLATE NOCASE, a.rowid";
    case SortKey::name: break;
  }
  return "a.name COLLATE NOCASE, a.rowid";
}

// The condition on `a` for the search text ?8; an empty text matches every asset.
std::string search_condition(const AssetQuery& query) {
  const std::string name =
      query.exact ? "lower(a.name) = lower(?8)" : "instr(lower(a.name), lower(?8)) > 0";
  const std::string description = query.exact ? "lower(a.description) = lower(?8)"
                                              : "instr(lower(a.description), lower(?8)) > 0";
  std::string matches = name + " OR " + description;
  if (query.search_by == SearchField::name) matches = name;
  if (query.search_by == SearchField::description) matches = description;
  return " AND (?8 = '' OR " + matches + ")";
}

}  // namespace

void insert_asset(Database& db, std::string_view guid, std::int64_t account,
                  const Descriptor& descriptor, const std::vector<RepresentationFile>& files,
                  std::string_view source_system) {
  Transaction transaction(db);
  db.prepare(
        "INSERT INTO assets (guid, account_id, folder_id, type, type_id, name, description, "
        "status, active_date, no_dmp, zoom_parent_guid, source_system, created_at) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, NULLIF(?, ''), ?, ?)")
      .bind(guid, account, std::int64_t{descriptor.folder_id}, descriptor.type,
            std::int64_t{asset_type_id(descriptor.type)}, descriptor.name, descriptor.description,
            descriptor.status, descriptor.active_date, std::int64_t{descriptor.no_dmp},
            descriptor.zoom_parent_guid.value_or(""), source_system, now_ms())
      .run();
  for (std::size_t i = 0; i < descriptor.metadata.size(); ++i) {
    db.prepare("INSERT INTO asset_metadata (asset_guid, position, tag, data) VALUES (?, ?, ?, ?)")
        .bind(guid, static_cast<std::int64_t>(i), descriptor.metadata[i].tag,
              descriptor.metadata[i].data)
        .run();
  }
  for (std::size_t i = 0; i < descriptor.representations.size(); ++i) {
    const DescriptorRepresentation& rep = descriptor.representations[i];
    auto insert = db.prepare(
        "INSERT INTO asset_representations (asset_guid, position, rep_type, file_type, "
        "file_type_id, language, bandwidth, width, height, metadata_tag, metadata_data, "
        "file_name, upload_key) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    insert.bind(guid, static_cast<std::int64_t>(i), rep.rep_type, rep.file_type,
                std::int64_t{file_type_id(rep.file_type)}, rep.language, rep.bandwidth, rep.width,
                rep.height, rep.metadata ? rep.metadata->tag : "",
                rep.metadata ? rep.metadata->data : "", files[i].file_name, files[i].upload_key);
    insert.run();
    claim_upload(db, files[i].upload_key, guid);
  }
  transaction.commit();
}

bool asset_in_account(Database& db, std::int64_t account, std::string_view guid) {
  return db.prepare("SELECT 1 FROM assets WHERE account_id = ? AND guid = ?")
      .bind(account, guid)
      .step();
}

bool asset_exists(Database& db, std::string_view guid) {
  return db.prepare("SELECT 1 FROM assets WHERE guid = ?").bind(guid).step();
}

std::vector<Fields> asset_records(Database& db, std::int64_t account, const AssetQuery& query,
                                  std::string_view base_url) {
  auto row = db.prepare(
      "SELECT a.guid, a.name, a.description, a.created_at, a.type_id, a.type FROM assets a "
      "WHERE a.account_id = ?1 AND (?2 = 0 OR a.folder_id = ?2) AND (?3 = 0 OR a.type_id = ?3) "
      "AND (?4 = 0 AND ?5 = 0 AND ?6 = 0 AND ?7 = '' OR EXISTS (SELECT 1 FROM "
      "asset_representations r WHERE r.asset_guid = a.guid AND (?4 = 0 OR r.file_type_id = ?4) "
      "AND (?5 = 0 OR r.width = ?5) AND (?6 = 0 OR r.height = ?6) AND (?7 = '' OR "
      "lower(substr(r.file_name, -length(?7) - 1)) = '.' || lower(?7))))" +
      search_condition(query) + " ORDER BY " + std::string(order_by(query.sort)));
  row.bind(account, std::int64_t{query.folder_id}, std::int64_t{query.type_id},
           std::int64_t{query.file_type_id}, std::int64_t{query.width}, std::int64_t{query.height},
           query.extension, query.search_for);
  std::vector<Fields> assets;
  while (row.step()) {
    const std::string guid = row.text(0);
    const std::int32_t type_id = int32_at(row, 4);
    assets.push_back({{"guid", guid},
                      {"name", row.text(1)},
                      {"description", row.text(2)},
                      {"thumbnail", std::string(base_url) + "/assets/" + guid + "/thumbnail"},
                      {"created", time_at(row, 3)},
                      {"typeIcon", std::string(base_url) + "/icons/asset-type-" +
                                       std::to_string(type_id) + ".png"},
                      {"typeText", asset_type_text(type_id, row.text(5))}});
  }
  return assets;
}

std::int32_t folder_asset_count(Database& db, std::int64_t account, std::int16_t folder) {
  auto count = db.prepare("SELECT COUNT(*) FROM assets WHERE account_id = ? AND folder_id = ?");
  count.bind(account, std::int64_t{folder}).step();
  return int32_at(count, 0);
}

std::optional<std::vector<std::string>> delete_asset(Database& db, std::int64_t account,
                                                     std::string_view guid) {
  if (!asset_in_account(db, account, guid)) return std::nullopt;
  std::vector<std::string> files;
  {
    auto path = db.prepare("SELECT path FROM uploads WHERE asset_guid = ?");
    path.bind(guid);
    while (path.step()) files.push_back(path.text(0));
  }
  Transaction transaction(db);
  db.prepare("DELETE FROM assets WHERE guid = ?").bind(guid).run();
  db.prepare("DELETE FROM uploads WHERE asset_guid = ?").bind(guid).run();
  transaction.commit();
  return files;
}

std::vector<std::string> delete_folder_assets(Database& db, std::int64_t account,
                                              std::int16_t folder) {
  std::vector<std::string> guids;
  {
    auto row = db.prepare("SELECT guid FROM assets WHERE account_id = ? AND folder_id = ?");
    row.bind(account, std::int64_t{folder});
    while (row.step()) guids.push_back(row.text(0));
  }
  std::vector<std::string> files;
  Transaction transaction(db);
  for (const std::string& guid : guids) {
    auto removed = delete_asset(db, account, guid);
    files.insert(files.end(), removed->begin(), removed->end());
  }
  transaction.commit();
  return files;
}

std::optional<std::string> first_representation_file(Database& db, std::string_view guid) {
  auto row = db.prepare(
      "SELECT u.path FROM asset_representations r JOIN uploads u ON u.key = r.upload_key "
      "WHERE r.asset_guid = ? ORDER BY r.position LIMIT 1");
  if (!row.bind(guid).step()) return std::nullopt;
  return row.text(0);
}

}  // namespace sandbox
