#include <strings.h>
#include <set>

#include "assets/descriptor.h"
#include "assets/stored_files.h"
#include "crypto/random.h"
#include "services/assets_operations.h"
#include "services/lookups.h"
#include "soap/clip.h"
#include "soap/faults.h"
#include "store/asset_store.h"
#include "store/database.h"
#include "store/upload_store.h"

namespace sandbox {
namespace {

constexpr std::string_view kUnmanagedUrlMark = "/unmanaged/";

[[noreturn]] void no_such_asset() {
  throw ApplicationFault("NoSuchAsset", "No asset with that guid", kNotFoundFault);
}

bool same_text(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// The key of the unmanaged upload a URL that the sandbox answered points at.
std::string_view unmanaged_key(std::string_view url) {
  const auto mark = url.find(kUnmanagedUrlMark);
  if (mark == std::string_view::npos) return {};
  const std::string_view rest = url.substr(mark + kUnmanagedUrlMark.size());
  return rest.substr(0, rest.find('/'));
}

// The stored file behind one representation: an upload of this account that backs no asset.
RepresentationFile representation_file(const Call& call, const DescriptorRepresentation& rep,
                                       std::size_t position) {
  const bool managed = rep.location == DescriptorRepresentation::Location::file;
  const std::string_view named = managed ? std::string_view(rep.upload_key) : rep.url;
  const std::string_view key = managed ? named : unmanaged_key(named);
  const auto upload = find_upload(call.db, key);
  if (!upload || upload->account_id != call.account() || upload->asset_guid ||
      managed == (upload->page == kUnmanagedPage)) {
    throw ApplicationFault("NoSuchUpload",
                           "Representation " + std::to_string(position + 1) +
                               " names no unused upload of this account: '" + clip(named) + "'",
                           kNotFoundFault);
  }
  if (managed) return {upload->key, rep.file_name};
  return {upload->key, std::string(named.substr(named.rfind('/') + 1))};
}

void add_asset(Call& call) {
  const std::string xml = call.args.string("xmlData");
  const std::string source_system = call.args.string("sourceSystem");
  Descriptor descriptor;
  try {
    descriptor = parse_descriptor(xml);
  } catch (const DescriptorError& error) {
    throw ApplicationFault("InvalidDescriptor", error.what());
  }
  require_folder(call, descriptor.folder_id);
  if (descriptor.zoom_parent_guid &&
      !asset_in_account(call.db, call.account(), *descriptor.zoom_parent_guid)) {
    throw ApplicationFault("NoSuchAsset", "The zoom relation names no asset of this account",
                           kNotFoundFault);
  }
  std::vector<RepresentationFile> files;
  std::set<std::string> keys;
  for (const DescriptorRepresentation& rep : descriptor.representations) {
    files.push_back(representation_file(call, rep, files.size()));
    if (!keys.insert(files.back().upload_key).second) {
      throw ApplicationFault("NoSuchUpload", "Two representations name the same upload");
    }
  }
  const std::string guid = random_guid();
  insert_asset(call.db, guid, call.account(), descriptor, files, source_system);
  call.reply.scalar(guid);
}

void make_unmanaged_asset_removeable(Call& call) {
  const std::string guid = call.args.string("assetGuid");
  const std::vector<std::string> timed_data = call.args.strings("timedDataList");
  if (!asset_in_account(call.db, call.account(), guid)) no_such_asset();
  Transaction transaction(call.db);
  for (const std::string& item : timed_data) {
    // Representations whose upload failed leave their entry empty.
    if (item.empty()) continue;
    if (!mark_removable(call.db, guid, item)) {
      throw ApplicationFault("NoSuchUpload",
                             "No upload of this asset has the timed data '" + clip(item) + "'",
                             kNotFoundFault);
    }
  }
  transaction.commit();
  call.reply.scalar(true);
}

SearchField search_field(std::string_view text) {
  if (text.empty()) return SearchField::name_or_description;
  if (same_text(text, "name")) return SearchField::name;
  if (same_text(text, "description")) return SearchField::description;
  throw ApplicationFault(
      "InvalidArgument",
      "searchBy must be empty, 'name' or 'description', not '" + clip(text) + "'");
}

SortKey sort_key(std::string_view text) {
  if (text.empty() || same_text(text, "name")) return SortKey::name;
  if (same_text(text, "created")) return SortKey::created;
  if (same_text(text, "type")) return SortKey::type;
  throw ApplicationFault(
      "InvalidArgument",
      "sortBy must be empty, 'name', 'created' or 'type', not '" + clip(text) + "'");
}

// Folder 0 stands for every folder; any other must be the account's.
std::int16_t folder_filter(const Call& call, std::int32_t id) {
  return id == 0 ? std::int16_t{0} : require_folder(call, id).id;
}

void get_assets(Call& call) {
  AssetQuery query;
  query.folder_id = folder_filter(call, call.args.int32("folderID"));
  query.type_id = call.args.int32("assetTypeID");
  query.file_type_id = call.args.int32("fileTypeID");
  query.width = call.args.int32("assetWidth");
  query.height = call.args.int32("assetHeight");
  query.extension = call.args.string("sExtension");
  if (query.extension.starts_with('.')) query.extension.erase(0, 1);
  query.search_for = call.args.string("searchFor");
  query.search_by = search_field(call.args.string("searchBy"));
  query.exact = call.args.boolean("searchExact");
  query.sort = sort_key(call.args.string("sortBy"));
  call.reply.records("Asset", asset_records(call.db, call.account(), query, call.server.base_url));
}

void get_assets_by_name(Call& call) {
  AssetQuery query;
  query.search_for = call.args.string("name");
  query.folder_id = folder_filter(call, call.args.int32("folderID"));
  query.search_by = SearchField::name;
  query.exact = true;
  call.reply.records("Asset", asset_records(call.db, call.account(), query, call.server.base_url));
}

void remove_asset(Call& call) {
  const std::string guid = call.args.string("assetGuid");
  const auto files = delete_asset(call.db, call.account(), guid);
  if (!files) no_such_asset();
  remove_stored_files(call.server.data_dir, *files);
  call.reply.scalar(true);
}

void get_asset_preview_url(Call& call) {
  const std::string guid = call.args.string("assetGuid");
  if (!asset_in_account(call.db, call.account(), guid)) no_such_asset();
  if (!first_representation_file(call.db, guid)) {
    throw ApplicationFault("NoRepresentation", "The asset has no representation to preview");
  }
  call.reply.scalar(call.server.base_url + "/assets/" + guid + "/preview");
}

constexpr Operation kOperations[] = {
    {"addAsset_XML", Access::cookie, add_asset, "xmlData sourceSystem -> string"},
    {"makeUnmanagedAssetRemoveable", Access::cookie, make_unmanaged_asset_removeable,
     "assetGuid timedDataList:string[] -> boolean"},
    {"getAssets", Access::cookie, get_assets,
     "folderID:int assetTypeID:int fileTypeID:int assetWidth:int assetHeight:int sExtension "
     "searchFor searchBy searchExact:boolean sortBy -> Asset[]"},
    {"getAssetsByName", Access::cookie, get_assets_by_name, "name folderID:int -> Asset[]"},
    {"deleteAsset", Access::cookie, remove_asset, "assetGuid -> boolean"},
    {"getAssetPreviewUrl", Access::cookie, get_asset_preview_url, "assetGuid -> string"},
};

}  // namespace

std::span<const Operation> asset_operations() {
  return kOperations;
}

}  // namespace sandbox
