#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "assets/descriptor.h"
#include "soap/value.h"

namespace sandbox {

class Database;

// The stored file behind each representation of a descriptor, in the same order.
struct RepresentationFile {
  std::string upload_key;
  std::string file_name;
};

void insert_asset(Database& db, std::string_view guid, std::int64_t account,
                  const Descriptor& descriptor, const std::vector<RepresentationFile>& files,
                  std::string_view source_system);

bool asset_in_account(Database& db, std::int64_t account, std::string_view guid);
bool asset_exists(Database& db, std::string_view guid);

enum class SearchField { name_or_description, name, description };
enum class SortKey { name, created, type };

// What getAssets filters by; zeros and empty texts filter nothing.
struct AssetQuery {
  std::int16_t folder_id = 0;  // 0: every folder
  std::int32_t type_id = 0;
  // A representation must match all of these at once.
  std::int32_t file_type_id = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::string extension;  // without the dot
  std::string search_for;
  SearchField search_by = SearchField::name_or_description;
  bool exact = false;  // whole text, else a part of it; case is ignored either way
  SortKey sort = SortKey::name;
};

// Asset list items of the account; URLs of thumbnails and type icons are under `base_url`.
std::vector<Fields> asset_records(Database& db, std::int64_t account, const AssetQuery& query,
                                  std::string_view base_url);

std::int32_t folder_asset_count(Database& db, std::int64_t account, std::int16_t folder);

// Removes the asset with its representations and uploads; answers the stored files to remove
// (relative to the data folder), or nothing when the account has no such asset.
std::optional<std::vector<std::string>> delete_asset(Database& db, std::int64_t account,
                                                     std::string_view guid);

// Removes every asset of the folder; answers the stored files to remove.
std::vector<std::string> delete_folder_assets(Database& db, std::int64_t account,
                                              std::int16_t folder);

// The stored file of the asset's first representation.
std::optional<std::string> first_representation_file(Database& db, std::string_view guid);

}  // namespace sandbox
