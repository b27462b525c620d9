// Projects, templates, themes and long-running work against a real sandbox.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "brenmoor/brenmoor.h"
#include "sandbox_test.h"

namespace brenmoor {
namespace {

class ProjectsEndToEnd : public testing::SandboxTest {
 protected:
  void SetUp() override {
    SandboxTest::SetUp();
    signInToFirstAccount();
  }
  void TearDown() override { service.logout(); }
};

TEST_F(ProjectsEndToEnd, BuildsAProjectClearsItWhileWatchingAndDeletesIt) {
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

}  // namespace
}  // namespace brenmoor
