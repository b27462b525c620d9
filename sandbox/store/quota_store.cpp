#include "store/quota_store.h"

#include <cmath>

#include "store/database.h"

namespace sandbox {
namespace {

// Each query takes ?1 the account and ?2 the project to leave out ('' for none).
constexpr std::string_view kProjects =
    "SELECT COUNT(*) FROM projects WHERE account_id = ?1 AND guid <> ?2";

constexpr std::string_view kDeployments =
    "SELECT COUNT(*) FROM deployments d JOIN templates t ON t.guid = d.template_guid "
    "JOIN projects p ON p.guid = t.project_guid "
    "WHERE p.account_id = ?1 AND p.guid <> ?2 AND d.deployed_at IS NOT NULL";

// Managed uploads belong to no project, so leaving a project out never leaves them out.
constexpr std::string_view kUploadBytes =
    "SELECT COALESCE(SUM(size), 0) FROM uploads "
    "WHERE account_id = ?1 AND (project_guid IS NULL OR project_guid <> ?2)";

// A record weighs the bytes of its name and of its entries' texts.
constexpr std::string_view kRecordNameBytes =
    "SELECT COALESCE(SUM(length(CAST(r.name AS BLOB))), 0) FROM data_records r "
    "JOIN projects p ON p.guid = r.project_guid WHERE p.account_id = ?1 AND p.guid <> ?2";
constexpr std::string_view kRecordEntryBytes =
    "SELECT COALESCE(SUM(length(CAST(e.label AS BLOB)) + length(CAST(e.description AS BLOB)) + "
    "length(CAST(e.value AS BLOB)) + length(CAST(e.asset_guid AS BLOB)) + "
    "length(CAST(e.asset_dependencies AS BLOB))), 0) FROM data_record_entries e "
    "JOIN data_records r ON r.id = e.record_id JOIN projects p ON p.guid = r.project_guid "
    "WHERE p.account_id = ?1 AND p.guid <> ?2";

double count_of(Database& db, std::string_view sql, std::int64_t account,
                std::string_view exclude_project) {
  auto row = db.prepare(sql);
  row.bind(account, exclude_project).step();
  return static_cast<double>(row.integer(0));
}

std::string number_text(double value) {
  return std::to_string(static_cast<long long>(std::llround(value)));
}

}  // namespace

double quota_used(Database& db, QuotaKind kind, std::int64_t account,
                  std::string_view exclude_project) {
  switch (kind) {
    case QuotaKind::projects: return count_of(db, kProjects, account, exclude_project);
    case QuotaKind::deployments: return count_of(db, kDeployments, account, exclude_project);
    case QuotaKind::storage:
      return count_of(db, kUploadBytes, account, exclude_project) +
             count_of(db, kRecordNameBytes, account, exclude_project) +
             count_of(db, kRecordEntryBytes, account, exclude_project);
  }
  return 0;
}

std::optional<std::string> quota_refusal(Database& db, const QuotaSettings& settings,
                                         QuotaKind kind, std::int64_t account, double adding) {
  const QuotaSetting& setting = settings[kind];
  if (!setting.block) return std::nullopt;
  const double used = quota_used(db, kind, account);
  if (used + adding <= setting.limit) return std::nullopt;
  return "Quota '" + std::string(quota_type(kind)) + "' reached: " + number_text(used) + " of " +
         number_text(setting.limit) + " " + std::string(quota_units(kind)) + " used";
}

}  // namespace sandbox
