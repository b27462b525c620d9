#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

class Database;

// Every account's folder tree starts at this id; its parent id is 0.
inline constexpr std::int16_t kRootFolderId = 1;

struct Folder {
  std::int16_t id = 0;
  std::int16_t parent_id = 0;
  std::string name;
  std::string rights;
  std::string metadata_xml;
  std::string metadata_source;
  std::int16_t depth = 0;  // number of ancestors
};

// Creates the account's root and its seeded folders where they are missing.
void seed_asset_folders(Database& db, std::int64_t account);

std::optional<Folder> find_folder(Database& db, std::int64_t account, std::int32_t id);

// The id of the folder's child named `name`, if it has one.
std::optional<std::int16_t> child_folder(Database& db, std::int64_t account, std::int16_t parent,
                                         std::string_view name);

// Adds a folder under `parent`; nothing when the account has no 16-bit id left.
std::optional<std::int16_t> add_folder(Database& db, std::int64_t account, std::int16_t parent,
                                       std::string_view name);

void set_folder_metadata(Database& db, std::int64_t account, std::int16_t id, std::string_view xml,
                         std::string_view source);

// The folder and everything below it, depth first, children by name.
std::vector<Folder> folder_subtree(Database& db, std::int64_t account, std::int16_t id);

bool folder_has_children(Database& db, std::int64_t account, std::int16_t id);

// Removes the folder's descendants (not the folder); their assets must be gone.
void remove_descendant_folders(Database& db, std::int64_t account, std::int16_t id);

void remove_folder(Database& db, std::int64_t account, std::int16_t id);

}  // namespace sandbox
