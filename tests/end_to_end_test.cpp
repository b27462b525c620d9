// The library against a real sandbox process: sign-in, projects, long-running work
// and data records end to end.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <regex>
#include <thread>

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

using testing::kDemoPassword;
using testing::kDemoUser;

using EndToEnd = testing::SandboxTest;

std::shared_ptr<DataRecordEntry> entry(const std::string& guid, const std::string& label,
                                       const std::string& text) {
  auto e = std::make_shared<DataRecordEntry>();
  e->guidList()->Add(guid);
  e->label = label;
  e->typeName = "text";
  e->value = std::make_shared<DataRecordEntryValue>();
  e->value()->value = text;
  return e;
}

TEST_F(EndToEnd, PingsAndReadsTheServersValues) {
  ASSERT_TRUE(service.Ping(sandbox->baseUrl()));
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");
  EXPECT_TRUE(
      std::regex_match(service.getGuid(),
                       std::regex("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}")));
  EXPECT_NE(service.getGuid(), service.getGuid());
  EXPECT_EQ(service.getFixedUrl(), sandbox->baseUrl() + "/fixed");
  EXPECT_TRUE(service.isCompatible());
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(EndToEnd, SignsInListsAndSelectsAccountsAndSignsOut) {
  EXPECT_EQ(service.loginUnencryptedPassword(kDemoUser, "not the password"), "");
  EXPECT_EQ(service.lastErrID(), 4);
  EXPECT_EQ(service.lastErrMsg(), "The user id or password you have entered is invalid.");

  service.setLastErrID(0);
  const std::string token = service.loginUnencryptedPassword(kDemoUser, kDemoPassword);
  ASSERT_FALSE(token.empty()) << service.lastErrMsg();
  EXPECT_EQ(service.serverVersion(), "3.2.4.60");

  auto accounts = service.getAccounts();
  ASSERT_TRUE(accounts) << service.lastErrMsg();
  ASSERT_EQ(accounts->Count(), 2);
  EXPECT_EQ(accounts->Item(1)->accountID(), 1001);
  EXPECT_EQ(accounts->Item(1)->accountName(), "Demo Productions");
  EXPECT_EQ(accounts->Item(2)->accountName(), "Demo Training");

  EXPECT_TRUE(service.selectAccount("1002"));
  EXPECT_FALSE(service.selectAccount("4242"));
  EXPECT_TRUE(service.selectAccountByGuid("acct-1001-guid"));
  auto deployment = service.getDeploymentInfo("no-such-template");
  ASSERT_TRUE(deployment) << service.lastErrMsg();
  EXPECT_FALSE(deployment->deployed());
  service.sendDebugInfo("end-to-end test");
  EXPECT_TRUE(host->boxes.empty());

  EXPECT_TRUE(service.logout());
  EXPECT_EQ(service.getAccounts(), nullptr);
  EXPECT_EQ(service.lastErrMsg(), "Session has ended");
  EXPECT_EQ(service.lastErrID(), 0);  // a server text after "Exception:" leaves the number alone
}

TEST_F(EndToEnd, BuildsAProjectClearsItWhileWatchingAndDeletesIt) {
  ASSERT_NO_FATAL_FAILURE(signInToFirstAccount());
  const std::string project = service.createProject("Launch", "Spring launch");
  ASSERT_FALSE(project.empty()) << service.lastErrMsg();
  EXPECT_TRUE(service.projectExists(project));
  EXPECT_EQ(service.createProject("Launch", "again"), "");
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text,
            "A project named Launch already exists. Please select another name for the project");

  auto catalog = service.getTemplateList("", "getTemplateList_Array");
  ASSERT_TRUE(catalog) << service.lastErrMsg();
  ASSERT_GE(catalog->Count(), 4);
  const std::string copy =
      service.copyTemplate("tpl-video-player", project, "Keynote video", false);
  ASSERT_FALSE(copy.empty()) << service.lastErrMsg();
  EXPECT_EQ(service.getTemplateInfo(copy)->name(), "Keynote video");
  auto components = service.getComponents("tpl-title-page", "", "", "");
  ASSERT_TRUE(components);
  bool foundSrc = false;
  for (const auto& c : *components) foundSrc = foundSrc || !c->getPropertyValue("SRC").empty();
  EXPECT_TRUE(foundSrc);

  auto theme = service.getThemeInfo("theme-corporate");
  ASSERT_TRUE(theme);
  EXPECT_TRUE(service.applyTheme("theme-corporate", project));
  auto inProject = service.getProjectTemplateList(project, true);
  ASSERT_TRUE(inProject);
  EXPECT_EQ(inProject->Count(), 1 + theme->themeTemplateList()->Count());
  auto deployment = service.getDeploymentInfo(copy);
  ASSERT_TRUE(deployment);
  EXPECT_FALSE(deployment->deployed());
  EXPECT_FALSE(service.hasDeployedTemplate(project));

  const std::string proc = service.clearProject_Async(project, true);
  ASSERT_NE(proc.find(';'), std::string::npos) << proc;
  int16_t lastPercent = 0;
  bool complete = false;
  for (int poll = 0; poll < 200 && !complete; ++poll) {
    const int16_t percent = service.getProcessPercentComplete(proc);
    EXPECT_GE(percent, lastPercent);
    lastPercent = percent;
    complete = service.isProcessComplete(proc);
    if (!complete) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  ASSERT_TRUE(complete);
  EXPECT_EQ(service.getProcessPercentComplete(proc), 100);
  EXPECT_TRUE(service.clearProject_Result(proc));
  EXPECT_EQ(service.getProjectTemplateList(project)->Count(), 0);

  auto mine = service.getProjectList();
  ASSERT_TRUE(mine);
  bool listed = false;
  for (const auto& p : *mine) listed = listed || p->guid() == project;
  EXPECT_TRUE(listed);
  EXPECT_TRUE(service.deleteProject(project));
  EXPECT_FALSE(service.projectExists(project));
  EXPECT_EQ(host->boxes.size(), 1u);
}

TEST_F(EndToEnd, CreatesReadsBackAndDeploysARecord) {
  ASSERT_NO_FATAL_FAILURE(signInToFirstAccount());
  const std::string project = service.createProject("Records", "");
  ASSERT_FALSE(project.empty()) << service.lastErrMsg();
  const std::string copy = service.copyTemplate("tpl-title-page", project, "Welcome", false);
  ASSERT_FALSE(copy.empty()) << service.lastErrMsg();

  DataRecord record;
  auto entries = std::make_shared<Collection<DataRecordEntry>>();
  entries->Add(entry("E1", "Headline", "Hello & welcome"));
  entries->Add(entry("E2", "Byline", "<by> the team"));
  record.entries = entries;
  record.templateGuidList = std::make_shared<Collection<std::string>>();
  record.templateGuidList()->Add(copy);
  record.SetEntryValue("Byline", "by the team", "asset-1");

  const std::string guid = service.createDataRecord(record, project, false);
  ASSERT_FALSE(guid.empty()) << service.lastErrMsg();
  record.guid = guid;
  EXPECT_EQ(service.createDataRecord(record, project, false), "");  // exists: not overwritten
  EXPECT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(service.createDataRecord(record, project, true), guid);

  auto back = service.getDataRecord({copy});
  ASSERT_TRUE(back && back->entries()) << service.lastErrMsg();
  EXPECT_EQ(back->guid(), guid);
  EXPECT_EQ(back->GetEntryValue("Headline"), "Hello & welcome");
  EXPECT_EQ(back->GetEntry("Byline")->value()->assetGuid(), "asset-1");
  back->name = record.name();  // the service keeps its own name for the record
  EXPECT_EQ(back->getXML(), record.getXML());
  auto one = service.getDataRecordEntry(copy, "", "Headline");
  ASSERT_TRUE(one);
  EXPECT_TRUE(one->hasGuid("E1"));
  EXPECT_FALSE(service.setDataRecordSyncData(guid, copy, "<sync/>").empty());

  EXPECT_FALSE(service.getDeploymentInfo(copy)->deployed());
  auto deployments = service.Deploy({guid}, {copy});
  ASSERT_EQ(deployments.size(), 1u) << service.lastErrMsg();
  auto info = service.getDeploymentInfo(copy);
  ASSERT_TRUE(info);
  EXPECT_TRUE(info->deployed());
  EXPECT_TRUE(info->deploymentDate.occurs());
  EXPECT_FALSE(info->versionGuid().empty());
  EXPECT_TRUE(service.hasDeployedTemplate(project));
  auto status = service.getDeploymentStatusList(deployments);
  ASSERT_TRUE(status);
  ASSERT_EQ(status->Count(), 1);
  EXPECT_NE(status->Item(1)->state, "unknown");

  auto theme = service.getThemeDataRecord("theme-corporate");
  ASSERT_TRUE(theme && theme->entries());
  EXPECT_GT(theme->entries()->Count(), 0);
  EXPECT_TRUE(service.deleteProject(project));
}

}  // namespace
}  // namespace brenmoor
