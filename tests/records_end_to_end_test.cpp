// Data records created, read back and deployed against a real sandbox.

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

class RecordsEndToEnd : public testing::SandboxTest {
 protected:
  void SetUp() override {
    SandboxTest::SetUp();
    signInToFirstAccount();
  }
  void TearDown() override { service.logout(); }
};

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

TEST_F(RecordsEndToEnd, CreatesReadsBackAndDeploysARecord) {
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
