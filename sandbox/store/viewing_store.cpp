#include "store/viewing_store.h"

#include "crypto/random.h"
#include "store/database.h"

namespace sandbox {
namespace {

constexpr std::string_view kPageColumns =
    "SELECT d.deployment_guid, d.template_guid, t.project_guid, d.name, d.link "
    "FROM deployments d JOIN templates t ON t.guid = d.template_guid "
    "WHERE t.project_guid IS NOT NULL AND d.deployed_at IS NOT NULL AND d.deployment_guid <> '' ";

Page page_at(const Statement& row) {
  return {row.text(0), row.text(1), row.text(2), row.text(3), row.text(4)};
}

}  // namespace

std::optional<Page> deployed_page(Database& db, std::string_view deployment_guid) {
  auto row = db.prepare(std::string(kPageColumns) + "AND d.deployment_guid = ?");
  if (!row.bind(deployment_guid).step()) return std::nullopt;
  return page_at(row);
}

std::vector<Page> deployed_pages(Database& db) {
  auto row = db.prepare(std::string(kPageColumns) +
                        "ORDER BY (SELECT created_at FROM projects WHERE guid = t.project_guid), "
                        "d.deployed_at, d.template_guid");
  std::vector<Page> pages;
  while (row.step()) pages.push_back(page_at(row));
  return pages;
}

void note_viewer(Database& db, std::string_view viewer, std::int64_t at) {
  db.prepare("INSERT OR IGNORE INTO viewers (guid, first_seen) VALUES (?, ?)")
      .bind(viewer, at)
      .run();
}

std::string insert_hit(Database& db, const Page& page, std::string_view viewer,
                       const ViewerClient& client, std::int64_t at) {
  const std::string guid = random_hex(16);
  db.prepare(
        "INSERT INTO page_hits (guid, template_guid, deployment_guid, viewer_guid, hit_at, ip, "
        "host_name, browser_type, browser_version, operating_system, language, country, "
        "has_cookies) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .bind(guid, page.template_guid, page.deployment_guid, viewer, at, client.ip, client.host_name,
            client.browser_type, std::int64_t{client.browser_version}, client.operating_system,
            client.language, client.country, std::int64_t{client.has_cookies})
      .run();
  return guid;
}

std::optional<Hit> find_hit(Database& db, std::string_view template_guid,
                            std::string_view hit_guid) {
  auto row = db.prepare(
      "SELECT viewer_guid, hit_at, ip, host_name, browser_type, browser_version, "
      "operating_system, language, country, has_cookies FROM page_hits "
      "WHERE template_guid = ? AND guid = ?");
  if (!row.bind(template_guid, hit_guid).step()) return std::nullopt;
  return Hit{row.text(0),
             row.integer(1),
             {row.text(2), row.text(3), row.text(4), static_cast<std::int32_t>(row.integer(5)),
              row.text(6), row.text(7), row.text(8), row.integer(9) != 0}};
}

void close_hit(Database& db, std::string_view hit_guid, std::int64_t at) {
  db.prepare(
        "UPDATE page_hits SET closed_at = max(?1, hit_at), time_spent = (max(?1, hit_at) - "
        "hit_at) / 1000 WHERE guid = ?2 AND closed_at IS NULL")
      .bind(at, hit_guid)
      .run();
}

std::optional<std::string> viewer_registrant(Database& db, std::string_view viewer,
                                             std::string_view project_guid) {
  auto row = db.prepare(
      "SELECT v.registrant_guid FROM viewer_registrations v JOIN registrants r "
      "ON r.guid = v.registrant_guid WHERE v.viewer_guid = ? AND v.project_guid = ?");
  if (!row.bind(viewer, project_guid).step()) return std::nullopt;
  return row.text(0);
}

void link_registrant(Database& db, std::string_view viewer, std::string_view project_guid,
                     std::string_view registrant_guid, const ViewerClient& client) {
  db.prepare(
        "INSERT OR REPLACE INTO viewer_registrations (viewer_guid, project_guid, "
        "registrant_guid) VALUES (?, ?, ?)")
      .bind(viewer, project_guid, registrant_guid)
      .run();
  db.prepare(
        "INSERT OR REPLACE INTO registrant_details (registrant_id, guid, first_accessed, "
        "browser_type, browser_version, country, has_cookies, ip_address, language, "
        "operating_system) SELECT r.id, v.guid, v.first_seen, ?, ?, ?, ?, ?, ?, ? "
        "FROM registrants r, viewers v WHERE r.guid = ? AND v.guid = ?")
      .bind(client.browser_type, std::int64_t{client.browser_version}, client.country,
            std::int64_t{client.has_cookies}, client.ip, client.language, client.operating_system,
            registrant_guid, viewer)
      .run();
}

}  // namespace sandbox
