// Assets against a real sandbox: Connect, folders, managed and unmanaged creation, queries,
// previews fetched and compared, and a folder cleared in the background.

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

namespace fs = std::filesystem;

// The body of a GET, or "<failed>".
std::string fetch(const std::string& url) {
  std::string body;
  CURL* curl = curl_easy_init();
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, 10L);
  curl_easy_setopt(
      curl, CURLOPT_WRITEFUNCTION, +[](char* data, size_t size, size_t count, void* out) {
        static_cast<std::string*>(out)->append(data, size * count);
        return size * count;
      });
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
  const bool ok = curl_easy_perform(curl) == CURLE_OK;
  curl_easy_cleanup(curl);
  return ok ? body : "<failed>";
}

class AssetsEndToEnd : public testing::SandboxTest {
 protected:
  void SetUp() override {
    SandboxTest::SetUp();
    std::string name = (fs::temp_directory_path() / "assets-e2e-XXXXXX").string();
    dir = ::mkdtemp(name.data());
  }
  void TearDown() override { fs::remove_all(dir); }

  // A file of `size` bytes that differ from one file to the next.
  std::shared_ptr<Representation> file(const std::string& name, size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(name[0] + i * 31);
    std::ofstream((dir / name).string(), std::ios::binary) << bytes;
    contents[name] = bytes;
    auto r = std::make_shared<Representation>();
    r->localPath = (dir / name).string();
    r->repType = "video";
    r->fileType = "mp4";
    r->width = 640;
    r->height = 360;
    return r;
  }

  fs::path dir;
  std::map<std::string, std::string> contents;
};

TEST_F(AssetsEndToEnd, CreatesFindsPreviewsAndClearsAssets) {
  ASSERT_TRUE(service.Connect(sandbox->baseUrl(), testing::kDemoUser, testing::kDemoPassword,
                              "e2e-tests", "acct-1001-guid", false, true))
      << service.lastErrMsg();
  const int16_t folder = service.createAssetFolder("Talks");
  ASSERT_GT(folder, 0) << service.lastErrMsg();

  Collection<Representation> reps;
  reps.Add(file("keynote.mp4", 10000));
  reps.Add(file("keynote-low.mp4", 4096));
  const std::string asset = service.CreateAsset("Keynote", "Spring keynote", "Video", reps, folder);
  ASSERT_FALSE(asset.empty()) << service.lastErrMsg();
  EXPECT_TRUE(host->boxes.empty());
  EXPECT_EQ(host->progress, (std::vector<int32_t>{33, 67, 100}));

  auto byName = service.getAssetsByName("keynote");
  ASSERT_EQ(byName->Count(), 1);
  EXPECT_EQ(byName->Item(1)->guid(), asset);
  EXPECT_EQ(service.getAssets(folder, 0, 0, 0, 0, "mp4", "Spring", "description")->Count(), 1);
  EXPECT_EQ(service.getAssets(folder, 0, 0, 0, 0, "", "Autumn")->Count(), 0);
  EXPECT_EQ(fetch(service.getAssetPreviewUrl(asset)), contents["keynote.mp4"]);

  const std::string project = service.createProject("Assets end to end", "");
  Collection<Representation> clips;
  clips.Add(file("clip.mp4", 5000));
  const std::string unmanaged =
      service.CreateAsset_Unmanaged("Clip", "", "Video", clips, folder, project);
  ASSERT_FALSE(unmanaged.empty()) << service.lastErrMsg();
  EXPECT_EQ(clips.Item(1)->size(), 5000);
  EXPECT_EQ(fetch(clips.Item(1)->filename()), contents["clip.mp4"]);
  EXPECT_EQ(service.getFolderAssets(folder)->Count(), 2);

  EXPECT_FALSE(service.deleteAssetFolder(folder));  // not empty
  const std::string clearing = service.clearAssetFolder_Async(folder);
  ASSERT_NE(clearing.find(';'), std::string::npos) << clearing;
  for (int polls = 0; polls < 100 && !service.isProcessComplete(clearing); ++polls) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(service.getFolderAssets(folder)->Count(), 0);
  EXPECT_TRUE(service.deleteAssetFolder(folder));
  EXPECT_TRUE(service.deleteProject(project));
}

}  // namespace
}  // namespace brenmoor
