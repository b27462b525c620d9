#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quotas/quota_settings.h"

namespace sandbox {

class Database;

// What the account uses of a quota: projects and deployments counted, storage in bytes of
// uploaded files and data records. A non-empty `exclude_project` leaves out that project's
// own use.
double quota_used(Database& db, QuotaKind kind, std::int64_t account,
                  std::string_view exclude_project = "");

// The refusal text when adding `adding` to what the account uses would pass a blocking
// limit; nothing when the operation may go ahead (a "warn" quota always lets it).
std::optional<std::string> quota_refusal(Database& db, const QuotaSettings& settings,
                                         QuotaKind kind, std::int64_t account, double adding);

}  // namespace sandbox
