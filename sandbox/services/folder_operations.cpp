#include "assets/stored_files.h"
#include "processes/process_runner.h"
#include "services/assets_operations.h"
#include "services/lookups.h"
#include "soap/faults.h"
#include "soap/xml_escape.h"
#include "store/asset_store.h"
#include "store/database.h"
#include "store/folder_store.h"

namespace sandbox {
namespace {

// Bounds what one folder path can create.
constexpr std::size_t kMaxPathSegments = 32;
constexpr std::size_t kMaxNameLength = 255;

// "A/B/C" (or with backslashes) as its names; empty pieces are skipped.
std::vector<std::string> path_names(std::string_view path) {
  std::vector<std::string> names;
  while (!path.empty()) {
    const auto end = path.find_first_of("/\\");
    const std::string_view name = path.substr(0, end);
    if (!name.empty()) {
      if (name.size() > kMaxNameLength || names.size() == kMaxPathSegments) {
        throw ApplicationFault("InvalidName", "Folder names are at most 255 bytes, 32 levels");
      }
      for (char c : name) {
        if (static_cast<unsigned char>(c) < 0x20) {
          throw ApplicationFault("InvalidName", "A folder name may not hold control characters");
        }
      }
      names.emplace_back(name);
    }
    if (end == std::string_view::npos) break;
    path.remove_prefix(end + 1);
  }
  if (names.empty()) throw ApplicationFault("InvalidName", "The folder path names no folder");
  return names;
}

// Creates the path's folders under `parent` as needed; the last one must be new.
std::int16_t create_path(Call& call, std::int16_t parent, std::string_view path) {
  const std::vector<std::string> names = path_names(path);
  const std::int64_t account = call.account();
  Transaction transaction(call.db);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto existing = child_folder(call.db, account, parent, names[i]);
    if (existing && i + 1 < names.size()) {
      parent = *existing;
      continue;
    }
    if (existing) {
      throw ApplicationFault("DuplicateName", "A folder with that name already exists there",
                             kDuplicateNameFault);
    }
    const auto added = add_folder(call.db, account, parent, names[i]);
    if (!added) throw ApplicationFault("NoFolderIds", "The account has no folder id left");
    parent = *added;
  }
  transaction.commit();
  return parent;
}

// Empties the folder: its assets and every folder below it. False if it is gone.
bool clear_folder_contents(Database& db, const std::filesystem::path& data_dir,
                           std::int64_t account, std::int16_t id) {
  const std::vector<Folder> subtree = folder_subtree(db, account, id);
  if (subtree.empty()) return false;
  std::vector<std::string> files;
  Transaction transaction(db);
  for (const Folder& folder : subtree) {
    const std::vector<std::string> removed = delete_folder_assets(db, account, folder.id);
    files.insert(files.end(), removed.begin(), removed.end());
  }
  remove_descendant_folders(db, account, id);
  transaction.commit();
  remove_stored_files(data_dir, files);
  return true;
}

void create_folder(Call& call) {
  const std::string path = call.args.string("folderPath");
  require_folder(call, kRootFolderId);
  call.reply.scalar(create_path(call, kRootFolderId, path));
}

void create_child_folder(Call& call) {
  const std::int32_t parent = call.args.int32("parentID");
  const std::string path = call.args.string("folderPath");
  call.reply.scalar(create_path(call, require_folder(call, parent).id, path));
}

void get_folder_rights(Call& call) {
  call.reply.scalar(require_folder(call, call.args.int32("folderID")).rights);
}

void store_folder_metadata(Call& call) {
  const std::int32_t id = call.args.int32("folderID");
  const std::string xml = call.args.string("metadataXML");
  const std::string source = call.args.string("sourceSystem");
  set_folder_metadata(call.db, call.account(), require_folder(call, id).id, xml, source);
  call.reply.scalar(true);
}

void get_folder_xml(Call& call) {
  const Folder folder = require_folder(call, call.args.int32("folderID"));
  const std::int64_t account = call.account();
  std::string xml = "<FOLDER id=\"" + std::to_string(folder.id) + "\" parentID=\"" +
                    std::to_string(folder.parent_id) + "\" parentCount=\"" +
                    std::to_string(folder.depth) + "\" name=\"";
  append_escaped(xml, folder.name);
  xml += "\" rights=\"" + folder.rights + "\" assetCount=\"" +
         std::to_string(folder_asset_count(call.db, account, folder.id)) + "\" hasChildren=\"" +
         (folder_has_children(call.db, account, folder.id) ? "true" : "false") +
         "\"><METADATA sourceSystem=\"";
  append_escaped(xml, folder.metadata_source);
  xml += "\">";
  append_escaped(xml, folder.metadata_xml);
  xml += "</METADATA></FOLDER>";
  call.reply.scalar(xml);
}

void get_folder_tree(Call& call) {
  const std::int32_t id = call.args.int32("folderID");
  // Folder 0 stands for the whole tree.
  const Folder top = require_folder(call, id == 0 ? kRootFolderId : id);
  std::vector<Fields> nodes;
  for (const Folder& folder : folder_subtree(call.db, call.account(), top.id)) {
    nodes.push_back({{"id", folder.id},
                     {"parentID", folder.parent_id},
                     {"name", folder.name},
                     {"parentCount", folder.depth},
                     {"rights", folder.rights}});
  }
  call.reply.records("FolderNode", std::move(nodes));
}

void delete_folder(Call& call) {
  const Folder folder = require_folder(call, call.args.int32("folderID"));
  const std::int64_t account = call.account();
  if (folder.rights.find('D') == std::string::npos) {
    throw ApplicationFault("NotPermitted", "This folder cannot be deleted");
  }
  if (folder_asset_count(call.db, account, folder.id) > 0 ||
      folder_has_children(call.db, account, folder.id)) {
    throw ApplicationFault("FolderNotEmpty",
                           "The folder is not empty: clear it or delete what it holds first");
  }
  remove_folder(call.db, account, folder.id);
  call.reply.scalar(true);
}

void clear_folder(Call& call) {
  const Folder folder = require_folder(call, call.args.int32("folderID"));
  clear_folder_contents(call.db, call.server.data_dir, call.account(), folder.id);
  call.reply.scalar(true);
}

void clear_folder_async(Call& call) {
  const Folder folder = require_folder(call, call.args.int32("folderID"));
  const std::int64_t account = call.account();
  std::int32_t assets = 0;
  for (const Folder& inside : folder_subtree(call.db, account, folder.id)) {
    assets += folder_asset_count(call.db, account, inside.id);
  }
  const std::filesystem::path data_dir = call.server.data_dir;
  const std::string id =
      call.processes.start({"clearFolder", call.session().user_id, "Clearing assets", assets,
                            [data_dir, account, folder = folder.id](Database& db) {
                              return clear_folder_contents(db, data_dir, account, folder);
                            }});
  // The ";A" names the Assets service; progress is still asked of the main service.
  call.reply.scalar(id + ";A");
}

constexpr Operation kOperations[] = {
    {"createFolder", Access::cookie, create_folder, "folderPath -> short"},
    {"createChildFolder", Access::cookie, create_child_folder, "parentID:int folderPath -> short"},
    {"getFolderRights", Access::cookie, get_folder_rights, "folderID:int -> string"},
    {"setFolderMetadata", Access::cookie, store_folder_metadata,
     "folderID:int metadataXML sourceSystem -> boolean"},
    {"getFolder_XML", Access::cookie, get_folder_xml, "folderID:int -> string"},
    {"getFolderTree", Access::cookie, get_folder_tree, "folderID:int -> FolderNode[]"},
    {"deleteFolder", Access::cookie, delete_folder, "folderID:int -> boolean"},
    {"clearFolder", Access::cookie, clear_folder, "folderID:int -> boolean"},
    {"clearFolder_Async", Access::cookie, clear_folder_async, "folderID:int -> string"},
};

}  // namespace

std::span<const Operation> folder_operations() {
  return kOperations;
}

Folder require_folder(const Call& call, std::int32_t id) {
  auto folder = find_folder(call.db, call.account(), id);
  if (!folder) throw ApplicationFault("NoSuchFolder", "No folder with that id", kNotFoundFault);
  return std::move(*folder);
}

}  // namespace sandbox
