// Users, registrants, quotas and e-mail against a real sandbox with a small project quota.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "brenmoor/brenmoor.h"
#include "recording_host.h"
#include "sandbox_process.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

namespace fs = std::filesystem;

class UsersEndToEnd : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    sandbox = std::make_unique<testing::SandboxProcess>(
        std::vector<std::string>{"--quota", "projects=2:block"});
  }
  static void TearDownTestSuite() { sandbox.reset(); }

  void SetUp() override {
    host = std::make_shared<testing::RecordingHost>();
    service.setHost(host);
    service.ShowAlerts(false);
    service.SetServiceBaseUrl(sandbox->baseUrl());
  }

  bool signIn(ZylService& s, const std::string& user, const std::string& password) {
    s.ShowAlerts(false);
    s.setHost(host);
    return s.Connect(sandbox->baseUrl(), user, password, "e2e-tests", "", false, true);
  }

  static inline std::unique_ptr<testing::SandboxProcess> sandbox;
  std::shared_ptr<testing::RecordingHost> host;
  ZylService service;
};

TEST_F(UsersEndToEnd, CreatesAUserWhoSignsInChangesTheirPasswordAndLeaves) {
  ASSERT_TRUE(service.createUserAccount("Ada", "Lovelace", "ada@example.com", "engine"))
      << service.lastErrMsg();
  EXPECT_FALSE(service.createUserAccount("Ada", "L", "ADA@example.com", "x"));  // taken

  ZylService ada;
  ASSERT_TRUE(signIn(ada, "ada@example.com", "engine")) << ada.lastErrMsg();
  ASSERT_TRUE(ada.changeUserPassword("analytical"));
  ZylService again;
  EXPECT_FALSE(signIn(again, "ada@example.com", "engine"));
  ASSERT_TRUE(signIn(again, "ada@example.com", "analytical"));

  // A block quota of two projects refuses the third, naming the quota.
  EXPECT_FALSE(again.createProject("One", "").empty());
  EXPECT_FALSE(again.createProject("Two", "").empty());
  host->boxes.clear();
  EXPECT_TRUE(again.createProject("Three", "").empty());
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_NE(host->boxes[0].text.find("projects"), std::string::npos);
  auto quotas = again.getQuotaList();
  ASSERT_TRUE(quotas);
  EXPECT_EQ(quotas->Count(), 3);

  const std::string proc = again.terminateUserAccount_Async();
  ASSERT_NE(proc.find(';'), std::string::npos) << again.lastErrMsg();
  for (int polls = 0; polls < 100 && !again.isProcessComplete(proc); ++polls) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_TRUE(again.terminateUserAccount_Result(proc));
  ZylService after;
  EXPECT_FALSE(signIn(after, "ada@example.com", "analytical"));
}

TEST_F(UsersEndToEnd, KeepsRegistrantsAndSendsMailToTheOutbox) {
  ASSERT_TRUE(signIn(service, testing::kDemoUser, testing::kDemoPassword));
  const std::string project = service.createProject("Registrants end to end", "");
  ASSERT_FALSE(project.empty()) << service.lastErrMsg();
  const std::string guid =
      service.addRegisteredUser(project, "", "bo@example.com", "Bo", "Ek", "pw", "<x/>");
  ASSERT_FALSE(guid.empty()) << service.lastErrMsg();
  service.addRegisteredUser(project, "", "al@example.com", "Al", "Ab", "pw");
  EXPECT_TRUE(service.updateRegisteredUserName(project, guid, "", "Bo", "Zed"));
  auto byName = service.getRegistrationList(project, 0, "lastName");
  ASSERT_TRUE(byName);
  ASSERT_EQ(byName->Count(), 2);
  EXPECT_EQ(byName->Item(2)->lastName(), "Zed");
  EXPECT_EQ(service.getRegistrationList(project, 1)->Count(), 1);
  EXPECT_TRUE(service.deleteRegisteredUser(project, "", "al@example.com"));
  EXPECT_EQ(service.getRegistrationList(project)->Count(), 1);
  EXPECT_TRUE(service.deleteProject(project));

  ASSERT_TRUE(service.sendEmail("bo@example.com", "Hello", "Line one"));
  std::string message;
  for (const auto& file : fs::directory_iterator(sandbox->dataDir() / "outbox")) {
    std::ifstream in(file.path());
    message = std::string(std::istreambuf_iterator<char>(in), {});
  }
  EXPECT_NE(message.find("To: bo@example.com"), std::string::npos) << message;
  EXPECT_NE(message.find("Subject: Hello"), std::string::npos);
  EXPECT_NE(message.find("Line one"), std::string::npos);
}

}  // namespace
}  // namespace brenmoor
