// Creating assets against the scripted server: the upload pages used, what is written back into
// the caller's representations, progress, failures and cancelling.

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;
namespace fs = std::filesystem;

class AssetCreation : public testing::WireTest {
 protected:
  void SetUp() override {
    WireTest::SetUp();
    std::string name = (fs::temp_directory_path() / "asset-creation-XXXXXX").string();
    dir = ::mkdtemp(name.data());
  }
  void TearDown() override { fs::remove_all(dir); }

  std::shared_ptr<Representation> file(const std::string& name, size_t size) {
    const std::string path = (dir / name).string();
    std::ofstream(path, std::ios::binary) << std::string(size, 'x');
    auto r = std::make_shared<Representation>();
    r->localPath = path;
    r->fileType = "mp4";
    return r;
  }
  void answerAssets(const std::string& op, const std::string& value) {
    server.enqueue(Reply::xml(testing::scalarAnswer(op, value, "string", "urn:telvane-assets")));
  }
  std::string target(size_t i) const { return server.requests().at(i).target; }

  fs::path dir;
};

TEST_F(AssetCreation, UploadsEachFileUnderTheFixedUrlAndRegistersWhatArrived) {
  Collection<Representation> reps;
  reps.Add(file("talk one.mp4", 5000));
  reps.Add(file("lost.mp4", 10));
  reps.Add(file("empty.mp4", 0));
  answerScalar("getFixedUrl", server.baseUrl() + "/fixed");
  server.enqueue(Reply::text(200, "up-1"));
  server.enqueue(Reply::text(200, "sorry, Error: disk full"));
  server.enqueue(Reply::text(200, "up-3"));
  answerAssets("addAsset_XML", "asset-1");

  EXPECT_EQ(service.CreateAsset("Talk", "", "video", reps, 2, true), "asset-1");
  const std::regex page("/fixed/AssetManager/am_Asset_BinaryUpload.jsp\\?key=:[0-9]+:[0-9a-f]{32}");
  for (size_t i = 1; i <= 3; ++i) EXPECT_TRUE(std::regex_match(target(i), page)) << target(i);
  EXPECT_EQ(target(4), "/fixed/services/Assets");

  EXPECT_EQ(host->progress, (std::vector<int32_t>{25, 50, 75, 100}));
  EXPECT_EQ(host->fileProgress,
            (std::vector<std::string>{"talk one.mp4 82", "talk one.mp4 100", "lost.mp4 100"}));
  EXPECT_EQ(reps.Item(1)->guid(), "up-1");
  EXPECT_EQ(reps.Item(1)->filename(), "talk_one.mp4");
  EXPECT_TRUE(reps.Item(2)->invalid());
  EXPECT_FALSE(reps.Item(3)->invalid());
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text,
            "An error occurred while trying to send " + reps.Item(2)->localPath() + " to Telvane");
  EXPECT_EQ(service.lastUploadErrorCode(), 0);

  const std::string registered = server.requests().at(4).body;
  EXPECT_NE(registered.find("nodmp='true'"), std::string::npos);
  EXPECT_NE(registered.find("&gt;up-1&lt;/NAME&gt;"), std::string::npos);
  EXPECT_EQ(registered.find("lost.mp4"), std::string::npos);
}

TEST_F(AssetCreation, UnmanagedUploadsGoToTheProjectAndStopWhenCancelled) {
  Collection<Representation> reps;
  reps.Add(file("in\\my talk (1).final.mp4", 100));
  reps.Add(file("second.mp4", 100));
  reps.Add(file("third.mp4", 100));
  service.SetServiceBaseUrl(server.baseUrl());
  server.enqueue(Reply::text(200, "  http://media/a.mp4 , 100 , t-1  "));
  server.enqueue(Reply::text(200, "http://media/b.mp4"));  // no size: not placed
  answerAssets("addAsset_XML", "asset-2");
  answerAssets("makeUnmanagedAssetRemoveable", "true");
  // Cancelled after the second file: the third is never sent.
  host->onProgress = [&](int32_t percent) {
    if (percent == 50) service.Cancel();
  };

  EXPECT_EQ(service.CreateAsset_Unmanaged("My Talk!", "", "video", reps, 3, "p-1"), "asset-2");
  EXPECT_TRUE(std::regex_match(
      target(0),
      std::regex("/AssetManager/am_Asset_Unmanaged_BinaryUpload.jsp\\?pid=p-1&key=:[0-9]+:"
                 "[0-9a-f]{32}&name=My_Talk/my%20talk%201final.mp4&filetype=mp4")))
      << target(0);
  EXPECT_EQ(target(2), "/services/Assets");
  EXPECT_EQ(server.requests().size(), 4u);
  EXPECT_EQ(host->progress, (std::vector<int32_t>{25, 50, 100}));
  EXPECT_EQ(reps.Item(1)->filename(), "http://media/a.mp4");
  EXPECT_EQ(reps.Item(1)->size(), 100);
  EXPECT_TRUE(reps.Item(2)->invalid());
  EXPECT_NE(server.requests().at(2).body.find("nodmp='true'"), std::string::npos);
  EXPECT_NE(server.requests().at(3).body.find(">t-1<"), std::string::npos);

  // Nothing to upload: nothing registered.
  EXPECT_EQ(service.CreateAsset_Unmanaged("x", "", "video", {}, 3, "p-1"), "");
  EXPECT_EQ(server.requests().size(), 4u);
}

TEST_F(AssetCreation, ListsAreEmptyNotNullAfterAFailure) {
  server.enqueue(Reply::xml(testing::soapEnvelope(
      "<ns1:getAssetsResponse xmlns:ns1=\"urn:telvane-assets\"><getAssetsReturn "
      "soapenc:arrayType=\"ns2:Asset[1]\"><item><guid>a-1</guid><name>Logo</name><description/>"
      "<thumbnail>t</thumbnail><created xsi:type=\"xsd:dateTime\">2024-01-15T09:00:00.000Z"
      "</created><typeIcon>i</typeIcon><typeText>Image</typeText></item></getAssetsReturn>"
      "</ns1:getAssetsResponse>")));
  auto assets = service.getFolderAssets(2);
  ASSERT_EQ(assets->Count(), 1);
  EXPECT_EQ(assets->Item(1)->typeText(), "Image");
  EXPECT_EQ(assets->Item(1)->created().year(), 2024);

  server.enqueue(Reply::text(503, "down"));
  ASSERT_TRUE(service.getAssetFolderTree(0));
  EXPECT_EQ(service.getAssetFolderTree(0)->Count(), 0);
}

}  // namespace
}  // namespace brenmoor
