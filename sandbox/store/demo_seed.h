#pragma once

#include <string_view>

namespace sandbox {

class Database;

inline constexpr std::string_view kDemoUserEmail = "demo@example.com";
inline constexpr std::string_view kDemoUserPassword = "demo";

// True when no user exists yet: a fresh database gets the demo data.
bool has_no_users(Database& db);

// Creates (or restores) the demo user, its two accounts with their asset folders and the
// template catalog.
void seed_demo_data(Database& db);

}  // namespace sandbox
