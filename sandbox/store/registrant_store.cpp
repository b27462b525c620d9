#include "store/registrant_store.h"

#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

constexpr std::string_view kSelect =
    "SELECT r.email, r.first_name, r.last_name, r.guid, r.custom_xml, r.user_host_name, "
    "r.user_ip, r.created_at, r.modified_at, r.registered, d.registrant_id, d.first_accessed, "
    "d.bandwidth, d.browser_type, d.browser_version, d.country, d.guid, d.has_cookies, "
    "d.has_flash, d.has_java, d.has_wm, d.has_real, d.ip_address, d.js_version_major, "
    "d.js_version_minor, d.language, d.operating_system, d.screen_depth, d.screen_height, "
    "d.screen_width FROM registrants r LEFT JOIN registrant_details d ON d.registrant_id = r.id "
    "WHERE r.project_guid = ? ";

std::string_view order_by(RegistrantOrder order) {
  switch (order) {
    case RegistrantOrder::created: return "ORDER BY r.id ";
    case RegistrantOrder::email: return "ORDER BY r.email, r.id ";
    case RegistrantOrder::last_name:
      return "ORDER BY r.last_name COLLATE NOCASE, r.first_name COLLATE NOCASE, r.id ";
  }
  return "";
}

Value details_at(const Statement& row) {
  if (!row.optional_integer(10)) return Nil{};
  return Record{"ClientDetails",
                {{"firstAccessed", time_or_nil_at(row, 11)},
                 {"bandwidth", int32_at(row, 12)},
                 {"browserType", row.text(13)},
                 {"browserVersion", int32_at(row, 14)},
                 {"country", row.text(15)},
                 {"guid", row.text(16)},
                 {"hasCookies", flag_at(row, 17)},
                 {"hasFlash", flag_at(row, 18)},
                 {"hasJava", flag_at(row, 19)},
                 {"hasWM", flag_at(row, 20)},
                 {"hasReal", flag_at(row, 21)},
                 {"ipAddress", row.text(22)},
                 {"jsVersionMajor", int32_at(row, 23)},
                 {"jsVersionMinor", int32_at(row, 24)},
                 {"language", row.text(25)},
                 {"operatingSystem", row.text(26)},
                 {"screenDepth", int32_at(row, 27)},
                 {"screenHeight", int32_at(row, 28)},
                 {"screenWidth", int32_at(row, 29)}}};
}

}  // namespace

void insert_registrant(Database& db, const NewRegistrant& registrant) {
  const std::int64_t now = now_ms();
  db.prepare(
        "INSERT INTO registrants (guid, project_guid, email, first_name, last_name, "
        "password_md5, custom_xml, user_ip, user_host_name, registered, created_at, "
        "modified_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .bind(registrant.guid, registrant.project_guid, registrant.email, registrant.first_name,
            registrant.last_name, registrant.password_md5, registrant.custom_xml,
            registrant.user_ip, registrant.user_host_name, std::int64_t{registrant.registered}, now,
            now)
      .run();
}

bool registrant_guid_taken(Database& db, std::string_view guid) {
  return db.prepare("SELECT 1 FROM registrants WHERE guid = ?").bind(guid).step();
}

bool registrant_email_taken(Database& db, std::string_view project, std::string_view email) {
  return db.prepare("SELECT 1 FROM registrants WHERE project_guid = ? AND email = ?")
      .bind(project, email)
      .step();
}

std::vector<Fields> registrant_records(Database& db, std::string_view project,
                                       RegistrantOrder order, std::int32_t limit) {
  auto row = db.prepare(std::string(kSelect) + std::string(order_by(order)) + "LIMIT ?");
  row.bind(project, limit == 0 ? std::int64_t{-1} : std::int64_t{limit});
  std::vector<Fields> records;
  while (row.step()) {
    // The password is never answered, not even as its digest.
    records.push_back({{"email", row.text(0)},
                       {"firstName", row.text(1)},
                       {"lastName", row.text(2)},
                       {"guid", row.text(3)},
                       {"password", std::string()},
                       {"customXML", row.text(4)},
                       {"userHostName", row.text(5)},
                       {"userIP", row.text(6)},
                       {"created", time_at(row, 7)},
                       {"modified", time_at(row, 8)},
                       {"registered", flag_at(row, 9)},
                       {"details", details_at(row)}});
  }
  return records;
}

std::optional<std::int64_t> find_registrant(Database& db, std::string_view project,
                                            std::string_view guid, std::string_view email) {
  auto row = guid.empty()
                 ? db.prepare("SELECT id FROM registrants WHERE project_guid = ? AND email = ?")
                 : db.prepare("SELECT id FROM registrants WHERE project_guid = ? AND guid = ?");
  if (!row.bind(project, guid.empty() ? email : guid).step()) return std::nullopt;
  return row.integer(0);
}

void update_registrant(Database& db, std::int64_t id, std::string_view column,
                       std::string_view value) {
  db.prepare("UPDATE registrants SET " + std::string(column) + " = ?, modified_at = ? WHERE id = ?")
      .bind(value, now_ms(), id)
      .run();
}

void delete_registrant(Database& db, std::int64_t id) {
  db.prepare("DELETE FROM registrants WHERE id = ?").bind(id).run();
}

}  // namespace sandbox
