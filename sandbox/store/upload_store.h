#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

class Database;

// Pages an upload can come through.
inline constexpr std::string_view kBasePage = "base";
inline constexpr std::string_view kFixedPage = "fixed";
inline constexpr std::string_view kUnmanagedPage = "unmanaged";

// A file that an upload page received, named by the key the page answered.
struct Upload {
  std::string key;
  std::int64_t account_id = 0;
  std::string page;
  std::optional<std::string> project_guid;  // unmanaged only
  std::string name;                         // unmanaged: as the client named it
  std::string file_type;                    // unmanaged: as the client typed it
  std::int64_t size = 0;
  std::string path;  // relative to the data folder
  std::optional<std::string> timed_data;
  std::optional<std::string> asset_guid;  // the asset it backs, once registered
};

void insert_upload(Database& db, const Upload& upload);
std::optional<Upload> find_upload(Database& db, std::string_view key);
void claim_upload(Database& db, std::string_view key, std::string_view asset_guid);

// Marks the asset's upload with that timed data removable; false when the asset has none.
bool mark_removable(Database& db, std::string_view asset_guid, std::string_view timed_data);

}  // namespace sandbox
