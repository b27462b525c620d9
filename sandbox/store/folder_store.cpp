#include "store/folder_store.h"

#include <limits>

#include "store/database.h"

namespace sandbox {
namespace {

struct SeededFolder {
  std::int16_t id;
  std::int16_t parent_id;
  std::string_view name;
  std::string_view rights;
};

// The root may be filled but not deleted.
constexpr SeededFolder kSeededFolders[] = {
    {kRootFolderId, 0, "Root", "RW"},
    {2, kRootFolderId, "Images", "RWD"},
    {3, kRootFolderId, "Video", "RWD"},
    {4, kRootFolderId, "Documents", "RWD"},
};

constexpr std::string_view kNewFolderRights = "RWD";

// Bounds the walk over a tree whose rows a broken store could make cyclic.
constexpr std::int16_t kMaxDepth = 256;

Folder folder_at(const Statement& row) {
  return {static_cast<std::int16_t>(row.integer(0)),
          static_cast<std::int16_t>(row.integer(1)),
          row.text(2),
          row.text(3),
          row.text(4),
          row.text(5),
          0};
}

std::vector<Folder> children(Database& db, std::int64_t account, std::int16_t parent) {
  auto row = db.prepare(
      "SELECT id, parent_id, name, rights, metadata_xml, metadata_source FROM asset_folders "
      "WHERE account_id = ? AND parent_id = ? AND id <> parent_id ORDER BY name, id");
  row.bind(account, std::int64_t{parent});
  std::vector<Folder> found;
  while (row.step()) found.push_back(folder_at(row));
  return found;
}

void append_subtree(Database& db, std::int64_t account, Folder folder, std::vector<Folder>& out) {
  const std::int16_t depth = folder.depth;
  const std::int16_t id = folder.id;
  out.push_back(std::move(folder));
  if (depth >= kMaxDepth) return;
  for (Folder child : children(db, account, id)) {
    child.depth = static_cast<std::int16_t>(depth + 1);
    append_subtree(db, account, std::move(child), out);
  }
}

std::int16_t depth_of(Database& db, std::int64_t account, std::int16_t parent_id) {
  std::int16_t depth = 0;
  for (std::int64_t id = parent_id; id != 0 && depth < kMaxDepth; ++depth) {
    auto row = db.prepare("SELECT parent_id FROM asset_folders WHERE account_id = ? AND id = ?");
    if (!row.bind(account, id).step()) break;
    id = row.integer(0);
  }
  return depth;
}

}  // namespace

void seed_asset_folders(Database& db, std::int64_t account) {
  for (const SeededFolder& folder : kSeededFolders) {
    db.prepare(
          "INSERT OR IGNORE INTO asset_folders (account_id, id, parent_id, name, rights) "
          "VALUES (?, ?, ?, ?, ?)")
        .bind(account, std::int64_t{folder.id}, std::int64_t{folder.parent_id}, folder.name,
              folder.rights)
        .run();
  }
}

std::optional<Folder> find_folder(Database& db, std::int64_t account, std::int32_t id) {
  auto row = db.prepare(
      "SELECT id, parent_id, name, rights, metadata_xml, metadata_source FROM asset_folders "
      "WHERE account_id = ? AND id = ?");
  if (!row.bind(account, std::int64_t{id}).step()) return std::nullopt;
  Folder folder = folder_at(row);
  folder.depth = depth_of(db, account, folder.parent_id);
  return folder;
}

std::optional<std::int16_t> child_folder(Database& db, std::int64_t account, std::int16_t parent,
                                         std::string_view name) {
  auto row = db.prepare(
      "SELECT id FROM asset_folders WHERE account_id = ? AND parent_id = ? AND name = ?");
  if (!row.bind(account, std::int64_t{parent}, name).step()) return std::nullopt;
  return static_cast<std::int16_t>(row.integer(0));
}

std::optional<std::int16_t> add_folder(Database& db, std::int64_t account, std::int16_t parent,
                                       std::string_view name) {
  // The lowest id above 0 that is free.
  auto free = db.prepare(
      "SELECT COALESCE(MIN(f.id + 1), 1) FROM asset_folders f WHERE f.account_id = ?1 AND "
      "NOT EXISTS (SELECT 1 FROM asset_folders g WHERE g.account_id = ?1 AND g.id = f.id + 1)");
  free.bind(account).step();
  const std::int64_t id = free.integer(0);
  if (id > std::numeric_limits<std::int16_t>::max()) return std::nullopt;
  db.prepare(
        "INSERT INTO asset_folders (account_id, id, parent_id, name, rights) "
        "VALUES (?, ?, ?, ?, ?)")
      .bind(account, id, std::int64_t{parent}, name, kNewFolderRights)
      .run();
  return static_cast<std::int16_t>(id);
}

void set_folder_metadata(Database& db, std::int64_t account, std::int16_t id, std::string_view xml,
                         std::string_view source) {
  db.prepare(
        "UPDATE asset_folders SET metadata_xml = ?, metadata_source = ? "
        "WHERE account_id = ? AND id = ?")
      .bind(xml, source, account, std::int64_t{id})
      .run();
}

std::vector<Folder> folder_subtree(Database& db, std::int64_t account, std::int16_t id) {
  std::vector<Folder> subtree;
  if (auto folder = find_folder(db, account, id)) {
    append_subtree(db, account, std::move(*folder), subtree);
  }
  return subtree;
}

bool folder_has_children(Database& db, std::int64_t account, std::int16_t id) {
  return !children(db, account, id).empty();
}

void remove_descendant_folders(Database& db, std::int64_t account, std::int16_t id) {
  const std::vector<Folder> subtree = folder_subtree(db, account, id);
  // Children follow their parent in the walk, so going backwards removes them first.
  for (auto folder = subtree.rbegin(); folder != subtree.rend(); ++folder) {
    if (folder->id != id) remove_folder(db, account, folder->id);
  }
}

void remove_folder(Database& db, std::int64_t account, std::int16_t id) {
  db.prepare("DELETE FROM asset_folders WHERE account_id = ? AND id = ?")
      .bind(account, std::int64_t{id})
      .run();
}

}  // namespace sandbox
