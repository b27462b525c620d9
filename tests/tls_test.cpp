// https endpoints against an HTTPS server whose authority is made here: a call and an upload go
// through once the host names the authority's file; a certificate that cannot be verified ends
// both with a text that says why, and the server receives nothing.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include "brenmoor/brenmoor.h"
#include "recording_host.h"
#include "soap_answers.h"
#include "tls_server.h"

namespace brenmoor {
namespace {

using testing::Certificate;
using testing::RecordedRequest;
using testing::scalarAnswer;
using testing::TestAuthority;
using testing::TlsServer;
namespace fs = std::filesystem;

struct TempDir {
  TempDir() {
    std::string name = (fs::temp_directory_path() / "tls-test-XXXXXX").string();
    path = ::mkdtemp(name.data());
  }
  ~TempDir() { fs::remove_all(path); }
  fs::path path;
};

// The answers of the operations a call and an asset creation use.
std::string answerFor(const RecordedRequest& r, const std::string& baseUrl) {
  if (r.target.rfind("/AssetManager/", 0) == 0) return "up-1";
  if (r.body.find("getFixedUrl") != std::string::npos) {
    return scalarAnswer("getFixedUrl", baseUrl);
  }
  if (r.body.find("addAsset_XML") != std::string::npos) {
    return scalarAnswer("addAsset_XML", "asset-1", "string", "urn:telvane-assets");
  }
  return scalarAnswer("getGuid", "guid-over-tls");
}

class Tls : public ::testing::Test {
 protected:
  void start(const Certificate& certificate, const std::string& caFile) {
    service.reset();
    server.reset();
    server = std::make_unique<TlsServer>(
        certificate, [this](const RecordedRequest& r) { return answerFor(r, server->baseUrl()); });
    service = std::make_unique<ZylService>();
    service->setHost(host);
    service->ShowAlerts(false);
    service->SetServiceBaseUrl(server->baseUrl());
    service->setCaFile(caFile);
  }
  Collection<Representation> oneFile() {
    std::ofstream(dir.path / "talk.mp4", std::ios::binary) << std::string(10000, 'v');
    auto r = std::make_shared<Representation>();
    r->localPath = (dir.path / "talk.mp4").string();
    r->fileType = "mp4";
    Collection<Representation> reps;
    reps.Add(r);
    return reps;
  }

  TempDir dir;
  TestAuthority authority;
  std::shared_ptr<testing::RecordingHost> host = std::make_shared<testing::RecordingHost>();
  // Declared after the server, so that its connections close first.
  std::unique_ptr<TlsServer> server;
  std::unique_ptr<ZylService> service;
};

TEST_F(Tls, CallsAndUploadsGoThroughToAServerTheNamedAuthorityVouchesFor) {
  const std::string caFile = (dir.path / "ca.pem").string();
  authority.save(caFile);
  start(authority.issue("IP:127.0.0.1"), caFile);
  EXPECT_EQ(service->caFile(), caFile);

  EXPECT_EQ(service->getGuid(), "guid-over-tls") << service->lastErrMsg();
  EXPECT_EQ(service->CreateAsset("Talk", "", "video", oneFile(), 1, true), "asset-1");
  EXPECT_EQ(service->lastUploadErrorCode(), 0) << service->lastUploadErrorMessage();
  const auto seen = server->requests();
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[2].target.rfind("/AssetManager/am_Asset_BinaryUpload.jsp?key=", 0), 0u);
  EXPECT_EQ(seen[2].body, std::string(10000, 'v'));
}

TEST_F(Tls, UnverifiedCertificatesEndCallAndUploadWithTheReasonAndSendNothing) {
  const std::string caFile = (dir.path / "ca.pem").string();
  authority.save(caFile);
  const Certificate good = authority.issue("IP:127.0.0.1");
  const struct {
    const char* what;
    Certificate certificate;
    std::string caFile;
    std::string reason;
  } rows[] = {
      {"unknown authority", good, "", "unable to get local issuer certificate"},
      {"wrong host name", authority.issue("DNS:elsewhere.test"), caFile,
       "no alternative certificate subject name matches target host name '127\\.0\\.0\\.1'"},
      {"expired", authority.issue("IP:127.0.0.1", -30, -1), caFile, "certificate has expired"},
      {"unreadable authority file", good, (dir.path / "missing.pem").string(), "missing\\.pem"},
  };
  const std::string unverified = " could not be verified, so nothing was sent: .*";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    start(row.certificate, row.caFile);
    EXPECT_EQ(service->getGuid(), "");
    EXPECT_EQ(service->lastErrID(), -1);
    EXPECT_TRUE(std::regex_search(
        service->lastErrMsg(),
        std::regex("^The certificate of https://127\\.0\\.0\\.1:[0-9]+/services/Telvane" +
                   unverified + row.reason)))
        << service->lastErrMsg();

    service->CreateAsset_Unmanaged("Talk", "", "video", oneFile(), 1, "p-1");
    EXPECT_EQ(service->lastUploadErrorCode(), 1);
    EXPECT_TRUE(std::regex_search(
        service->lastUploadErrorMessage(),
        std::regex("^The certificate of https://127\\.0\\.0\\.1:[0-9]+/AssetManager/"
                   "am_Asset_Unmanaged_BinaryUpload\\.jsp" +
                   unverified + row.reason)))
        << service->lastUploadErrorMessage();
    EXPECT_TRUE(server->requests().empty());
  }
}

}  // namespace
}  // namespace brenmoor
