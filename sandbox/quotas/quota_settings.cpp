#include "quotas/quota_settings.h"

#include <charconv>
#include <cmath>

namespace sandbox {

std::string_view quota_type(QuotaKind kind) {
  switch (kind) {
    case QuotaKind::projects: return "projects";
    case QuotaKind::storage: return "storage";
    case QuotaKind::deployments: return "deployments";
  }
  return "";
}

std::string_view quota_units(QuotaKind kind) {
  switch (kind) {
    case QuotaKind::projects: return "projects";
    case QuotaKind::storage: return "bytes";
    case QuotaKind::deployments: return "deployments";
  }
  return "";
}

std::string apply_quota_option(QuotaSettings& settings, std::string_view option) {
  const auto equals = option.find('=');
  if (equals == std::string_view::npos) return "expected NAME=LIMIT[:block|warn]";
  const std::string_view name = option.substr(0, equals);
  std::string_view limit_text = option.substr(equals + 1);
  std::string_view action = "block";
  if (const auto colon = limit_text.find(':'); colon != std::string_view::npos) {
    action = limit_text.substr(colon + 1);
    limit_text = limit_text.substr(0, colon);
  }
  QuotaSetting* setting = nullptr;
  for (const QuotaKind kind : kQuotaKinds) {
    if (quota_type(kind) == name) setting = &settings[kind];
  }
  if (!setting) return "unknown quota '" + std::string(name) + "' (projects, storage, deployments)";
  double limit = 0;
  const auto [end, error] =
      std::from_chars(limit_text.data(), limit_text.data() + limit_text.size(), limit);
  if (error != std::errc() || end != limit_text.data() + limit_text.size() ||
      !std::isfinite(limit) || limit < 0) {
    return "the limit must be a number, 0 or more";
  }
  if (action != "block" && action != "warn") return "the action must be block or warn";
  *setting = QuotaSetting{limit, action == "block", false};
  return "";
}

}  // namespace sandbox
