// Creating assets: each file goes to an upload page, then the asset is registered by its
// descriptor. Progress and cancelling reach the host on the caller's thread.

#include <optional>
#include <string_view>
#include <vector>

#include "assets/descriptor.h"
#include "brenmoor/zyl_service.h"
#include "service/error_reporter.h"
#include "service/key.h"
#include "service/state.h"
#include "soap/upload.h"
#include "util/convert.h"
#include "util/text.h"

namespace brenmoor {
namespace {

constexpr const char* kManagedPage = "/AssetManager/am_Asset_BinaryUpload.jsp";
constexpr const char* kUnmanagedPage = "/AssetManager/am_Asset_Unmanaged_BinaryUpload.jsp?pid=";

// The name after the folder: at the last "\" as the service's own clients write paths, and at
// the last "/" as well.
std::string fileNameOf(const std::string& path) {
  const auto at = path.find_last_of("\\/");
  return at == std::string::npos ? path : path.substr(at + 1);
}

std::string blanksToUnderscores(std::string text) {
  for (char& c : text) {
    if (c == ' ') c = '_';
  }
  return text;
}

std::string trimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

// The stem loses the punctuation the service refuses; the extension stays as it is.
std::string uploadFileName(const std::string& path) {
  const std::string name = fileNameOf(path);
  const auto dot = name.rfind('.');
  if (dot == std::string::npos) return util::cleanName(name, false);
  return util::cleanName(name.substr(0, dot), false) + name.substr(dot);
}

// The key for the next upload page; nothing once the key counter has run out, which is then
// reported like any failure.
std::optional<std::string> keyOrReport(service::State& state) {
  try {
    return service::nextKey(state);
  } catch (const Error&) {
    service::reportError(state, std::current_exception());
    return std::nullopt;
  }
}

// What an unmanaged upload page answers: "URL,size,timedData".
struct Placed {
  std::string url;
  int32_t size = 0;
  std::string timedData;
};

std::optional<Placed> placedFrom(const std::string& answer) {
  if (answer.empty() || answer.rfind("Error:", 0) == 0) return std::nullopt;
  const auto first = answer.find(',');
  const auto second = first == std::string::npos ? first : answer.find(',', first + 1);
  if (second == std::string::npos) return std::nullopt;
  Placed placed;
  placed.url = trimBlanks(std::string_view(answer).substr(0, first));
  try {
    placed.size = util::toInt32(std::string_view(answer).substr(first + 1, second - first - 1));
  } catch (const Error&) {
    return std::nullopt;
  }
  placed.timedData = trimBlanks(std::string_view(answer).substr(second + 1));
  return placed;
}

// One creation in progress: the upload that Cancel() reaches and the descriptor it builds.
class Creation {
 public:
  explicit Creation(service::State& state)
      : state_(state),
        upload_(state.connections,
                soap::UploadEvents{[&state](int32_t percent, const std::string& filename) {
                                     state.host->CreateAssetFileProgress(percent, filename);
                                   },
                                   [&state] { state.host->yield(); }},
                soap::HttpTransport::kDefaultTimeoutMs, state.trace ? &state.trace : nullptr) {
    state_.cancelCreation = [this] { cancel(); };
  }
  ~Creation() { state_.cancelCreation = nullptr; }
  Creation(const Creation&) = delete;
  Creation& operator=(const Creation&) = delete;

  void cancel() {
    cancelRequested_ = true;
    upload_.cancel();
  }
  bool cancelRequested() const { return cancelRequested_; }

  // The page's answer, or "" after a failure (then shown, whatever the alert switch says).
  std::string send(const std::string& url, const Representation& r) {
    std::string answer = upload_.send(url, r.localPath());
    state_.lastUploadCode = upload_.lastCode();
    state_.lastUploadMessage = upload_.lastMessage();
    return answer;
  }
  void reportFailedFile(Representation& r) {
    r.invalid = true;
    state_.host->messageBox(
        "An error occurred while trying to send " + r.localPath() + " to Telvane", "");
  }
  void progress(int32_t percent) {
    state_.host->CreateAssetProgress(percent);
    state_.host->yield();
  }

  assets::Descriptor descriptor;

 private:
  service::State& state_;
  soap::FileUpload upload_;
  bool cancelRequested_ = false;
};

}  // namespace

void ZylService::Cancel() {
  if (state_->cancelCreation) state_->cancelCreation();
}
int32_t ZylService::lastUploadErrorCode() const {
  return state_->lastUploadCode;
}
const std::string& ZylService::lastUploadErrorMessage() const {
  return state_->lastUploadMessage;
}

std::string ZylService::CreateAsset(const std::string& assetName, const std::string& assetDesc,
                                    const std::string& assetType,
                                    const Collection<Representation>& repList, int16_t folderID,
                                    bool PreventDMP, const Collection<Metadata>& metadataList,
                                    const std::string& parentGuid) {
  auto& s = *state_;
  Creation creation(s);
  creation.descriptor.preventDmp(PreventDMP);
  if (!parentGuid.empty()) creation.descriptor.zoomFor(parentGuid);
  for (const auto& m : metadataList) creation.descriptor.addMetadata(m->label(), m->data());

  const std::string fixedUrl = getFixedUrl();
  const std::string page = fixedUrl + kManagedPage + "?key=";
  const int32_t n = repList.Count();
  for (int32_t i = 1; i <= n; ++i) {
    Representation& r = *repList.Item(i);
    const auto key = keyOrReport(s);
    if (!key) return {};
    r.guid = creation.send(page + *key, r);
    if (r.guid().empty()) creation.reportFailedFile(r);
    creation.progress(util::percentHalfEven(i, n + 1));
    r.filename = blanksToUnderscores(fileNameOf(r.localPath()));
  }
  const std::string xml =
      creation.descriptor.build(assetName, assetDesc, assetType, repList, folderID,
                                assets::Descriptor::Files::Uploaded, assets::localDateTimeText());
  std::string guid = addAsset(xml, fixedUrl);
  creation.progress(100);
  return guid;
}

std::string ZylService::CreateAsset_Unmanaged(
    const std::string& assetName, const std::string& assetDesc, const std::string& assetType,
    const Collection<Representation>& repList, int16_t folderID, const std::string& projectGuid,
    const Collection<Metadata>& metadataList, const std::string& parentGuid) {
  auto& s = *state_;
  Creation creation(s);
  creation.descriptor.preventDmp(true);
  if (!parentGuid.empty()) creation.descriptor.zoomFor(parentGuid);
  for (const auto& m : metadataList) creation.descriptor.addMetadata(m->label(), m->data());
  const int32_t n = repList.Count();
  if (n == 0) return {};

  const std::string page = s.baseUrl + kUnmanagedPage + projectGuid;
  const std::string name = util::cleanName(blanksToUnderscores(assetName), false);
  std::vector<std::string> timedData(static_cast<size_t>(n));
  for (int32_t i = 1; i <= n; ++i) {
    Representation& r = *repList.Item(i);
    const auto key = keyOrReport(s);
    if (!key) return {};
    const std::string answer =
        creation.send(page + "&key=" + *key + "&name=" + name + "/" +
                          uploadFileName(r.localPath()) + "&filetype=" + r.fileType(),
                      r);
    if (auto placed = placedFrom(trimBlanks(answer))) {
      r.filename = placed->url;
      r.size = placed->size;
      timedData[static_cast<size_t>(i - 1)] = placed->timedData;
    } else {
      creation.reportFailedFile(r);
    }
    creation.progress(util::percentHalfEven(i, n + 1));
    if (creation.cancelRequested()) break;
  }
  const std::string xml =
      creation.descriptor.build(assetName, assetDesc, assetType, repList, folderID,
                                assets::Descriptor::Files::Unmanaged, assets::localDateTimeText());
  std::string guid = addAsset(xml);
  makeUnmanagedAssetRemoveable(guid, timedData);
  creation.progress(100);
  return guid;
}

}  // namespace brenmoor
