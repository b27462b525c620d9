#include <chrono>
#include <set>
#include <thread>

#include "project_fixture.h"
#include "store/database.h"
#include "store/deployment_store.h"

namespace sandbox::testing {
namespace {

class ProcessTest : public ProjectTest {
 protected:
  // Restarts the sandbox with processes stepping at `step`, signed in, with a project that
  // holds the two templates of the classroom theme.
  void start_with_project(std::chrono::milliseconds step) {
    stop_server();
    options_.process_step = step;
    start_server();
    sign_in();
    project_ = create_project("Demo");
    apply_theme("theme-classroom", project_);
  }
  // Starts clearing the project; answers the first piece of the procGuid.
  std::string start_clearing() {
    const std::string proc_guid =
        main("clearProject_Async",
             key() + arg("projectGuid", "string", project_) + arg("doUndeploy", "boolean", "true"))
            .value();
    EXPECT_TRUE(proc_guid.ends_with(";M")) << proc_guid;
    return proc_guid.substr(0, proc_guid.find(';'));
  }
  // Progress operations carry no key.
  Answer progress(std::string_view operation, const std::string& id) {
    return main(operation, arg("procGuid", "string", id));
  }
  Answer result(std::string_view operation, const std::string& id) {
    return main(operation, key() + arg("procGuid", "string", id));
  }

  std::string project_;
};

TEST_F(ProcessTest, AsyncClearAdvancesThroughItsStepsAndClearsAtTheEnd) {
  start_with_project(std::chrono::milliseconds(20));
  const std::string deployed =
      first_record(project_templates(project_, false)).child("guid").text().get();
  {
    Database db(data_dir_ / "sandbox.sqlite3");
    deploy_template(db, deployed, server_->base_url());
  }
  const std::string id = start_clearing();

  const std::set<std::string> running{"Clearing templates 0 of 2", "Clearing templates 1 of 2",
                                      "Clearing templates 2 of 2"};
  int last_percent = 0;
  bool complete = false;
  // Read in this order, an incomplete answer means percent and message were read mid-way.
  for (int poll = 0; poll < 2000 && !complete; ++poll) {
    const int percent = std::stoi(progress("getProcessPercentComplete", id).value());
    const std::string message = progress("getProcessMessage", id).value();
    complete = progress("isProcessComplete", id).value() == "true";
    EXPECT_GE(percent, last_percent);
    last_percent = percent;
    if (!complete) {
      EXPECT_LT(percent, 100);
      EXPECT_TRUE(running.contains(message)) << message;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  ASSERT_TRUE(complete);
  const Answer percent = progress("getProcessPercentComplete", id);
  EXPECT_EQ(percent.value(), "100");
  EXPECT_STREQ(percent.return_element().attribute("xsi:type").value(), "xsd:short");
  EXPECT_EQ(progress("getProcessMessage", id).value(), "Complete");
  EXPECT_EQ(result("clearProject_Result", id).value(), "true");
  EXPECT_EQ(array_type(project_templates(project_, false)), "ns2:TemplateInfo[0]");
  const Answer undeployed =
      main("getDeploymentInfo", key() + arg("templateGuid", "string", deployed));
  EXPECT_EQ(undeployed.referenced(undeployed.return_element()).child("deployed").text().get(),
            std::string("false"));
  // The result belongs to the operation family that started the process.
  EXPECT_EQ(detail_id(result("undeployProject_Result", id)), "2");
}

TEST_F(ProcessTest, AnUnfinishedProcessIsNotCompleteAndStopsWithTheSandbox) {
  start_with_project(std::chrono::hours(1));
  const std::string id = start_clearing();
  EXPECT_EQ(progress("isProcessComplete", id).value(), "false");
  EXPECT_EQ(progress("getProcessPercentComplete", id).value(), "0");
  EXPECT_EQ(progress("getProcessMessage", id).value(), "Clearing templates 0 of 2");
  const Answer early = result("clearProject_Result", id);
  EXPECT_STREQ(early.application_fault().child("faultstring").text().get(), "Process not complete");

  // Returns without waiting out the steps; the abandoned process changes nothing.
  stop_server();
  start_server();
  sign_in();
  EXPECT_EQ(array_type(project_templates(project_, false)), "ns2:TemplateInfo[2]");
  EXPECT_EQ(detail_id(progress("isProcessComplete", id)), "2");
}

}  // namespace
}  // namespace sandbox::testing
