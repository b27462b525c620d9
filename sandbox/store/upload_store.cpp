#include "store/upload_store.h"

#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {

void insert_upload(Database& db, const Upload& upload) {
  db.prepare(
        "INSERT INTO uploads (key, account_id, page, project_guid, name, file_type, size, path, "
        "timed_data, received_at) VALUES (?, ?, ?, NULLIF(?, ''), ?, ?, ?, ?, NULLIF(?, ''), ?)")
      .bind(upload.key, upload.account_id, upload.page, upload.project_guid.value_or(""),
            upload.name, upload.file_type, upload.size, upload.path, upload.timed_data.value_or(""),
            now_ms())
      .run();
}

std::optional<Upload> find_upload(Database& db, std::string_view key) {
  auto row = db.prepare(
      "SELECT key, account_id, page, project_guid, name, file_type, size, path, timed_data, "
      "asset_guid FROM uploads WHERE key = ?");
  if (!row.bind(key).step()) return std::nullopt;
  return Upload{row.text(0),          row.integer(1),      row.text(2),    row.optional_text(3),
                row.text(4),          row.text(5),         row.integer(6), row.text(7),
                row.optional_text(8), row.optional_text(9)};
}

void claim_upload(Database& db, std::string_view key, std::string_view asset_guid) {
  db.prepare("UPDATE uploads SET asset_guid = ? WHERE key = ?").bind(asset_guid, key).run();
}

bool mark_removable(Database& db, std::string_view asset_guid, std::string_view timed_data) {
  if (!db.prepare("SELECT 1 FROM uploads WHERE asset_guid = ? AND timed_data = ?")
           .bind(asset_guid, timed_data)
           .step()) {
    return false;
  }
  db.prepare("UPDATE uploads SET removable = 1 WHERE asset_guid = ? AND timed_data = ?")
      .bind(asset_guid, timed_data)
      .run();
  return true;
}

}  // namespace sandbox
