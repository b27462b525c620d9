#include "store/report_store.h"

#include <algorithm>

#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

// Each takes ?1 the template, ?2 and ?3 the range.
constexpr std::string_view kHitsInRange =
    "FROM page_hits h WHERE h.template_guid = ?1 AND h.hit_at BETWEEN ?2 AND ?3 ";
constexpr std::string_view kParticipants =
    "SELECT viewer_guid FROM poll_responses WHERE template_guid = ?1 AND responded_at BETWEEN "
    "?2 AND ?3 UNION SELECT viewer_guid FROM survey_responses WHERE template_guid = ?1 AND "
    "responded_at BETWEEN ?2 AND ?3 UNION SELECT viewer_guid FROM qa_items WHERE "
    "template_guid = ?1 AND question_at BETWEEN ?2 AND ?3";
// Takes ?4 the project.
constexpr std::string_view kRegistered =
    "SELECT v.viewer_guid FROM viewer_registrations v JOIN registrants r ON r.guid = "
    "v.registrant_guid WHERE v.project_guid = ?4";

std::int64_t count(Database& db, const std::string& sql, const ReportPage& page,
                   const TimeRange& range) {
  auto row = db.prepare(sql);
  row.bind(page.template_guid, range.from, range.to).step();
  return row.integer(0);
}

std::int64_t count_with_project(Database& db, const std::string& sql, const ReportPage& page,
                                const TimeRange& range) {
  auto row = db.prepare(sql);
  row.bind(page.template_guid, range.from, range.to, page.project_guid).step();
  return row.integer(0);
}

Value client_details(const Statement& row, int first) {
  return Record{"ClientDetails",
                {{"bandwidth", 0},
                 {"browserType", row.text(first)},
                 {"browserVersion", int32_at(row, first + 1)},
                 {"country", row.text(first + 2)},
                 {"firstAccessed", time_at(row, first + 3)},
                 {"guid", row.text(first + 4)},
                 {"hasCookies", flag_at(row, first + 5)},
                 {"hasFlash", false},
                 {"hasJava", false},
                 {"hasReal", false},
                 {"hasWM", false},
                 {"ipAddress", row.text(first + 6)},
                 {"jsVersionMajor", 0},
                 {"jsVersionMinor", 0},
                 {"language", row.text(first + 7)},
                 {"operatingSystem", row.text(first + 8)},
                 {"screenDepth", 0},
                 {"screenHeight", 0},
                 {"screenWidth", 0}}};
}

}  // namespace

std::optional<ReportPage> report_page(Database& db, std::int64_t account,
                                      std::string_view page_guid) {
  auto row = db.prepare(
      "SELECT t.guid, t.project_guid, COALESCE(d.duration, 0) FROM templates t "
      "JOIN projects p ON p.guid = t.project_guid "
      "LEFT JOIN deployments d ON d.template_guid = t.guid "
      "WHERE p.account_id = ?1 AND ?2 <> '' AND (t.guid = ?2 OR d.deployment_guid = ?2)");
  if (!row.bind(account, page_guid).step()) return std::nullopt;
  return ReportPage{row.text(0), row.text(1), row.integer(2)};
}

std::int64_t total_hits(Database& db, const ReportPage& page, const TimeRange& range) {
  return count(db, "SELECT COUNT(*) " + std::string(kHitsInRange), page, range);
}

std::int64_t total_view_seconds(Database& db, const ReportPage& page, const TimeRange& range) {
  return count(db, "SELECT COALESCE(SUM(h.time_spent), 0) " + std::string(kHitsInRange), page,
               range);
}

double limited_view_seconds(Database& db, const ReportPage& page, const TimeRange& range,
                            bool closed_only) {
  auto row = db.prepare("SELECT h.hit_at, h.closed_at, h.time_spent " + std::string(kHitsInRange));
  row.bind(page.template_guid, range.from, range.to);
  const std::int64_t open_until = std::min(range.to, now_ms());
  double total = 0;
  while (row.step()) {
    std::int64_t seconds = row.integer(2);
    if (!row.optional_integer(1)) {
      seconds = closed_only ? 0 : std::max<std::int64_t>(0, open_until - row.integer(0)) / 1000;
    }
    if (page.duration > 0) seconds = std::min(seconds, page.duration);
    total += static_cast<double>(seconds);
  }
  return total;
}

double account_view_seconds(Database& db, std::int64_t account, const TimeRange& range,
                            std::string_view project_type, std::string_view template_type) {
  auto row = db.prepare(
      "SELECT t.guid, t.project_guid, COALESCE(d.duration, 0) FROM templates t "
      "JOIN projects p ON p.guid = t.project_guid "
      "LEFT JOIN deployments d ON d.template_guid = t.guid "
      "WHERE p.account_id = ?1 AND (?2 = '' OR p.type = ?2) AND (?3 = '' OR t.type = ?3)");
  row.bind(account, project_type, template_type);
  double total = 0;
  while (row.step()) {
    total += limited_view_seconds(db, {row.text(0), row.text(1), row.integer(2)}, range, true);
  }
  return total;
}

std::int64_t viewer_count(Database& db, const ReportPage& page, const TimeRange& range) {
  return count(db, "SELECT COUNT(DISTINCT h.viewer_guid) " + std::string(kHitsInRange), page,
               range);
}

std::int64_t participant_count(Database& db, const ReportPage& page, const TimeRange& range) {
  return count(db, "SELECT COUNT(*) FROM (" + std::string(kParticipants) + ")", page, range);
}

std::int64_t participant_registrant_count(Database& db, const ReportPage& page,
                                          const TimeRange& range) {
  return count_with_project(db,
                            "SELECT COUNT(*) FROM (" + std::string(kParticipants) +
                                ") WHERE viewer_guid IN (" + std::string(kRegistered) + ")",
                            page, range);
}

std::int64_t registrant_count(Database& db, const ReportPage& page) {
  auto row = db.prepare("SELECT COUNT(*) FROM registrants WHERE project_guid = ?");
  row.bind(page.project_guid).step();
  return row.integer(0);
}

std::int64_t unique_viewers(Database& db, const ReportPage& page, const TimeRange& range,
                            std::string_view column, bool equal, std::string_view value) {
  if (column.empty()) return viewer_count(db, page, range);
  // `column` comes from the fixed list of filters, never from the request.
  auto row =
      db.prepare("SELECT COUNT(DISTINCT h.viewer_guid) " + std::string(kHitsInRange) +
                 "AND (CAST(h." + std::string(column) + " AS TEXT) = ?4 COLLATE NOCASE) = ?5");
  row.bind(page.template_guid, range.from, range.to, value, std::int64_t{equal}).step();
  return row.integer(0);
}

std::vector<Fields> page_hit_records(Database& db, const ReportPage& page, const TimeRange& range) {
  auto row = db.prepare("SELECT h.id, h.closed_at, h.hit_at, h.time_spent " +
                        std::string(kHitsInRange) + "ORDER BY h.hit_at, h.id");
  row.bind(page.template_guid, range.from, range.to);
  std::vector<Fields> hits;
  while (row.step()) {
    hits.push_back({{"client", hit_client(db, page.project_guid, row.integer(0))},
                    {"closed", row.optional_integer(1).has_value()},
                    {"pagehitDate", time_at(row, 2)},
                    {"timeSpent", int32_at(row, 3)}});
  }
  return hits;
}

std::vector<Fields> viewer_records(Database& db, const ReportPage& page, const TimeRange& range,
                                   ViewerKind kind) {
  const std::string participated = "h.viewer_guid IN (" + std::string(kParticipants) + ")";
  const std::string registered = "h.viewer_guid IN (" + std::string(kRegistered) + ")";
  auto row = db.prepare("SELECT MAX(h.id), MIN(h.hit_at), MAX(h.hit_at), SUM(h.time_spent), " +
                        participated + ", " + registered + " " + std::string(kHitsInRange) +
                        "GROUP BY h.viewer_guid HAVING " +
                        (kind == ViewerKind::participants ? participated : registered) +
                        " ORDER BY MIN(h.hit_at), MIN(h.id)");
  row.bind(page.template_guid, range.from, range.to, page.project_guid);
  std::vector<Fields> viewers;
  while (row.step()) {
    viewers.push_back({{"client", hit_client(db, page.project_guid, row.integer(0))},
                       {"firstViewed", time_at(row, 1)},
                       {"lastViewed", time_at(row, 2)},
                       {"participated", flag_at(row, 4)},
                       {"registered", flag_at(row, 5)},
                       {"totalTimeOnPage", int32_at(row, 3)}});
  }
  return viewers;
}

Value hit_client(Database& db, std::string_view project_guid, std::int64_t hit_id) {
  auto row = db.prepare(
      "SELECT r.guid, r.created_at, r.custom_xml, r.email, r.first_name, r.last_name, "
      "r.modified_at, r.user_host_name, r.user_ip, v.first_seen, h.hit_at, h.host_name, h.ip, "
      "h.browser_type, h.browser_version, h.country, v.first_seen, v.guid, h.has_cookies, h.ip, "
      "h.language, h.operating_system FROM page_hits h JOIN viewers v ON v.guid = h.viewer_guid "
      "LEFT JOIN viewer_registrations l ON l.viewer_guid = v.guid AND l.project_guid = ?2 "
      "LEFT JOIN registrants r ON r.guid = l.registrant_guid WHERE h.id = ?1");
  if (!row.bind(hit_id, project_guid).step()) return Nil{};
  const bool registered = row.optional_text(0).has_value();
  // A viewer who never registered is answered as a client made of the visit.
  return Record{"Client",
                {{"created", registered ? time_at(row, 1) : time_at(row, 9)},
                 {"customXML", row.text(2)},
                 {"details", client_details(row, 13)},
                 {"email", row.text(3)},
                 {"firstName", row.text(4)},
                 {"guid", registered ? row.text(0) : row.text(17)},
                 {"lastName", row.text(5)},
                 {"modified", registered ? time_at(row, 6) : time_at(row, 10)},
                 {"password", std::string()},
                 {"registered", registered},
                 {"userHostName", registered ? row.text(7) : row.text(11)},
                 {"userIP", registered ? row.text(8) : row.text(12)}}};
}

}  // namespace sandbox
