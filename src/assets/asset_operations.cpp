// Asset folders, queries and registration: one call each to the Assets service. The asset
// operations send no key: the session cookie of the sign-in carries the account.

#include "brenmoor/zyl_service.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

void readFolderNode(const Fields& in, ZylFolderNode& node) {
  in("id", node.id);
  in("parentID", node.parentID);
  in("name", node.name);
  in("parentCount", node.parentCount);
  in("rights", node.rights);
}

void readAsset(const Fields& in, ZylAsset& asset) {
  in("guid", asset.guid);
  in("name", asset.name);
  in("description", asset.description);
  in("thumbnail", asset.thumbnail);
  in("created", asset.created);
  in("typeIcon", asset.typeIcon);
  in("typeText", asset.typeText);
}

template <class Result>
constexpr auto assetOperation(std::string_view name) {
  return Operation<Result>(name, Service::Assets).keyless();
}
// Unlike the other lists, these come back empty rather than null when the call fails.
template <class T, void (*Fill)(const Fields&, T&)>
constexpr auto assetList(std::string_view name) {
  return assetOperation<std::shared_ptr<Collection<T>>>(name)
      .reads(listOf<T, Fill>)
      .emptyAfterFault()
      .emptyAfterFailure();
}

constexpr auto kAddAsset = assetOperation<std::string>("addAsset_XML")
                               .sends("xmlData", "sourceSystem")
                               .timeout(kLongTimeoutMs)
                               .reads(asText);
constexpr auto kMakeRemoveable = assetOperation<std::string>("makeUnmanagedAssetRemoveable")
                                     .sends("assetGuid", "timedDataList")
                                     .reads(asText);
constexpr auto kGetFolderXml =
    assetOperation<std::string>("getFolder_XML").sends("folderID").reads(asText);
constexpr auto kCreateFolder =
    assetOperation<int16_t>("createFolder").sends("folderPath").reads(asInt16);
constexpr auto kGetFolderRights =
    assetOperation<std::string>("getFolderRights").sends("folderID").reads(asText);
constexpr auto kCreateChildFolder =
    assetOperation<int16_t>("createChildFolder").sends("parentID", "folderPath").reads(asInt16);
constexpr auto kDeleteFolder = assetOperation<bool>("deleteFolder").sends("folderID").reads(asBool);
constexpr auto kClearFolderAsync =
    assetOperation<std::string>("clearFolder_Async").sends("folderID").reads(asText);
constexpr auto kClearFolder =
    assetOperation<bool>("clearFolder").sends("folderID").timeout(kLongTimeoutMs).reads(asBool);
constexpr auto kSetFolderMetadata = assetOperation<bool>("setFolderMetadata")
                                        .sends("folderID", "metadataXML", "sourceSystem")
                                        .reads(asBool);
constexpr auto kGetFolderTree =
    assetList<ZylFolderNode, readFolderNode>("getFolderTree").sends("folderID");
constexpr auto kGetAssetsByName =
    assetList<ZylAsset, readAsset>("getAssetsByName").sends("name", "folderID");
constexpr auto kGetAssets =
    assetList<ZylAsset, readAsset>("getAssets")
        .sends("folderID", "assetTypeID", "fileTypeID", "assetWidth", "assetHeight", "sExtension",
               "searchFor", "searchBy", "searchExact", "sortBy");
constexpr auto kDeleteAsset = assetOperation<bool>("deleteAsset").sends("assetGuid").reads(asBool);
constexpr auto kGetPreviewUrl =
    assetOperation<std::string>("getAssetPreviewUrl").sends("assetGuid").reads(asText);

// Whole numbers of this interface are 16-bit; the service takes 32-bit ones.
int32_t wide(int16_t n) {
  return n;
}

}  // namespace

std::string ZylService::addAsset(const std::string& xml, const std::string& serviceUrl) {
  return kAddAsset.runAt(*state_, serviceUrl, xml, state_->sourceSystem).value;
}

std::string ZylService::makeUnmanagedAssetRemoveable(
    const std::string& assetGuid, const std::vector<std::string>& timedDataList) {
  return kMakeRemoveable(*state_, assetGuid, timedDataList);
}

std::string ZylService::getAssetFolderXML(int16_t folderID) {
  return kGetFolderXml(*state_, wide(folderID));
}
int16_t ZylService::createAssetFolder(const std::string& folderpath) {
  return kCreateFolder(*state_, folderpath);
}
std::string ZylService::getAssetFolderRights(int16_t folderID) {
  return kGetFolderRights(*state_, wide(folderID));
}
int16_t ZylService::createChildAssetFolder(int16_t parentID, const std::string& folderpath) {
  return kCreateChildFolder(*state_, wide(parentID), folderpath);
}
bool ZylService::deleteAssetFolder(int16_t folderID) {
  return kDeleteFolder(*state_, wide(folderID));
}
std::string ZylService::clearAssetFolder_Async(int16_t folderID) {
  return kClearFolderAsync(*state_, wide(folderID));
}
bool ZylService::clearAssetFolder(int16_t folderID) {
  return kClearFolder(*state_, wide(folderID));
}
bool ZylService::setAssetFolderMetadata(int16_t folderID, const std::string& metadataXML) {
  return kSetFolderMetadata(*state_, wide(folderID), metadataXML, state_->sourceSystem);
}
std::shared_ptr<Collection<ZylFolderNode>> ZylService::getAssetFolderTree(int16_t folderID) {
  return kGetFolderTree(*state_, wide(folderID));
}
std::shared_ptr<Collection<ZylAsset>> ZylService::getFolderAssets(int16_t folderID) {
  return getAssets(folderID);
}
std::shared_ptr<Collection<ZylAsset>> ZylService::getAssetsByName(const std::string& name,
                                                                  int16_t folderID) {
  return kGetAssetsByName(*state_, name, wide(folderID));
}
std::shared_ptr<Collection<ZylAsset>> ZylService::getAssets(
    int16_t folderID, int16_t assetTypeID, int16_t fileTypeID, int16_t assetWidth,
    int16_t assetHeight, const std::string& sExtension, const std::string& searchFor,
    const std::string& searchBy, bool searchExact, const std::string& sortBy) {
  return kGetAssets(*state_, wide(folderID), wide(assetTypeID), wide(fileTypeID), wide(assetWidth),
                    wide(assetHeight), sExtension, searchFor, searchBy, searchExact, sortBy);
}
bool ZylService::deleteAsset(const std::string& assetGuid) {
  return kDeleteAsset(*state_, assetGuid);
}
std::string ZylService::getAssetPreviewUrl(const std::string& assetGuid, int16_t repID) {
  (void)repID;  // accepted for hosts that pass it; the service has never taken it
  return kGetPreviewUrl(*state_, assetGuid);
}

}  // namespace brenmoor
