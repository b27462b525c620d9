#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace sandbox {

// What an account may use of the sandbox, and what happens beyond it.
enum class QuotaKind { projects, storage, deployments };

inline constexpr std::array<QuotaKind, 3> kQuotaKinds = {QuotaKind::projects, QuotaKind::storage,
                                                         QuotaKind::deployments};

struct QuotaSetting {
  double limit = 0;
  bool block = true;          // false: "warn", the operation passes
  bool default_limit = true;  // false once an option set it
};

// One limit per kind, the same for every account.
struct QuotaSettings {
  std::array<QuotaSetting, kQuotaKinds.size()> settings = {
      QuotaSetting{100, true, true}, QuotaSetting{1024.0 * 1024 * 1024, true, true},
      QuotaSetting{1000, true, true}};

  QuotaSetting& operator[](QuotaKind kind) { return settings[static_cast<std::size_t>(kind)]; }
  const QuotaSetting& operator[](QuotaKind kind) const {
    return settings[static_cast<std::size_t>(kind)];
  }
};

// The wire name of a kind ("projects", "storage", "deployments") and its units.
std::string_view quota_type(QuotaKind kind);
std::string_view quota_units(QuotaKind kind);

// Applies "NAME=LIMIT" or "NAME=LIMIT:block|warn"; answers what is wrong with it, or "".
std::string apply_quota_option(QuotaSettings& settings, std::string_view option);

}  // namespace sandbox
