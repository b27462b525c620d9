#include <chrono>
#include <thread>

#include "project_fixture.h"
#include "store/database.h"
#include "store/deployment_store.h"

namespace sandbox::testing {
namespace {

TEST_F(ProjectTest, ProjectsBelongToTheSelectedAccountAndRefuseDuplicateNames) {
  login();
  const Answer no_account = main(
      "createProject", key() + arg("name", "string", "Demo") + arg("description", "string", ""));
  EXPECT_EQ(no_account.fault_string(), "java.lang.Exception: No account selected");

  sign_in();
  const std::string project = create_project("Demo");
  const Answer duplicate = main(
      "createProject", key() + arg("name", "string", "Demo") + arg("description", "string", "x"));
  EXPECT_EQ(fault_code(duplicate), "tv:DuplicateName");
  EXPECT_EQ(detail_id(duplicate), "1");
  EXPECT_EQ(detail_id(main("deleteProject", key() + arg("projectGuid", "string", "nope") +
                                                arg("doUndeploy", "boolean", "true"))),
            "2");

  main("setProjectType",
       key() + arg("projectGuid", "string", project) + arg("type", "string", "webcast"));
  // The answer owns the document that the record node points into.
  const Answer list = main("getProjectListByType_Array", key() + arg("type", "string", "webcast"));
  const pugi::xml_node info = first_record(list);
  EXPECT_STREQ(info.child("typeID").text().get(), "webcast");
  EXPECT_STREQ(info.child("creator").text().get(), "demo@example.com");
  EXPECT_STREQ(info.child("eventStart").attribute("xsi:nil").value(), "true");

  sign_in(1002);
  EXPECT_EQ(main("projectExists", key() + arg("projectGuid", "string", project)).value(), "false");
}

TEST_F(ProjectTest, CopiesReplaceSameNamedTemplatesOnlyWhenAllowed) {
  sign_in();
  const std::string project = create_project("Demo");
  const std::string first = copy_template("tpl-title-page", project, false).value();
  EXPECT_EQ(detail_id(copy_template("tpl-title-page", project, false)), "1");

  // Replacing a template by a copy of itself keeps its components.
  const std::string second = copy_template(first, project, true).value();
  EXPECT_NE(second, first);
  EXPECT_EQ(main("templateExists", key() + arg("tGuid", "string", first)).value(), "false");
  const Answer logo = components(second, "Logo", "");
  const pugi::xml_node src = logo.referenced(first_record(logo).child("properties").first_child());
  EXPECT_STREQ(src.child("name").text().get(), "src");
  EXPECT_STREQ(src.child("value").text().get(), "logo.png");

  apply_theme("theme-corporate", project);
  const Answer listed = project_templates(project, false);
  std::vector<std::string> names;
  for (pugi::xml_node item : listed.return_element().children()) {
    const pugi::xml_node info = listed.referenced(item);
    names.emplace_back(info.child("name").text().get());
    EXPECT_STRNE(info.child("guid").text().get(), second.c_str());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"Q&A Panel", "Title Page", "Video Player"}));

  EXPECT_EQ(
      fault_code(main("deleteTemplate", key() + arg("templateGuid", "string", "tpl-qa-panel") +
                                            arg("doUndeploy", "boolean", "false"))),
      "tv:CatalogTemplate");
}

TEST_F(ProjectTest, NestsDeploymentsPropertiesAndThemeTemplatesAsReferencedRecords) {
  sign_in();
  const std::string project = create_project("Demo");
  const std::string copy = copy_template("tpl-title-page", project, false).value();
  DeploymentReceipt receipt;
  {
    Database db(data_dir_ / "sandbox.sqlite3");
    receipt = deploy_template(db, copy, server_->base_url());
  }

  const Answer with = project_templates(project, true);
  const pugi::xml_node deployment = with.referenced(first_record(with).child("deploymentInfo"));
  EXPECT_EQ(deployment.child("versionGuid").text().get(), receipt.version_guid);
  EXPECT_FALSE(first_record(project_templates(project, false)).child("deploymentInfo"));

  const Answer text_blocks = components(copy, "", "TextBlock");
  EXPECT_EQ(array_type(text_blocks), "ns2:Component[1]");
  const pugi::xml_node properties = first_record(text_blocks).child("properties");
  EXPECT_STREQ(properties.attribute("soapenc:arrayType").value(), "ns2:Property[2]");

  const Answer theme = main("getThemeInfo", key() + arg("guid", "string", "theme-classroom"));
  const pugi::xml_node list = theme.referenced(theme.return_element()).child("themeTemplateList");
  EXPECT_STREQ(theme.referenced(list.first_child()).child("templateGuid").text().get(),
               "tpl-title-page");

  const auto deployed = [&](std::string_view type) {
    return main("hasDeployedTemplate",
                key() + arg("projectGuid", "string", project) + arg("templateType", "string", type))
        .value();
  };
  EXPECT_EQ(deployed("page"), "true");
  EXPECT_EQ(deployed("player"), "false");
  const Answer statuses = main(
      "getDeploymentStatusList_Array",
      key() + "<deploymentGuidList XI:type=\"E:Array\" E:arrayType=\"XS:string[2]\" xmlns:E=\"" +
          "http://schemas.xmlsoap.org/soap/encoding/\"><i>" + receipt.deployment_guid +
          "</i><i>nope</i></deploymentGuidList>");
  EXPECT_STREQ(first_record(statuses).child("state").text().get(), "deployed");
  EXPECT_STREQ(
      statuses.referenced(statuses.return_element().last_child()).child("state").text().get(),
      "unknown");
}

TEST_F(ProjectTest, StoresDebugInfoOnlyWithAValidKey) {
  const Answer refused =
      call("Telvane", kMainNs, "sendClientDebugInfo", arg("debugInfo", "string", "x"));
  EXPECT_EQ(refused.status, 500);

  login();
  const Answer sent = call("Telvane", kMainNs, "sendClientDebugInfo",
                           key() + arg("debugInfo", "string", "trace &amp; more"));
  EXPECT_EQ(sent.status, 200) << sent.body;

  Database db(data_dir_ / "sandbox.sqlite3");
  auto stored = db.prepare("SELECT text FROM client_debug_reports");
  ASSERT_TRUE(stored.step());
  EXPECT_EQ(stored.text(0), "trace & more");
}

TEST_F(ProjectTest, DescribesDeploymentsOfTemplates) {
  login();
  const Answer never =
      call("Telvane", kMainNs, "getDeploymentInfo", key() + arg("templateGuid", "string", "T9"));
  ASSERT_EQ(never.status, 200) << never.body;
  const pugi::xml_node empty = never.referenced(never.return_element());
  EXPECT_STREQ(empty.child("deployed").text().get(), "false");
  EXPECT_STREQ(empty.child("deploymentDate").attribute("xsi:nil").value(), "true");

  {
    Database db(data_dir_ / "sandbox.sqlite3");
    db.execute(
        "INSERT INTO deployments (template_guid, deployed_at, height, width, live_enabled, name, "
        "link, duration, size) VALUES ('T1', 1700000000123, 480, 640, 1, 'Launch <1>', "
        "'http://127.0.0.1/x?a=1&b=2', 90, 1234)");
  }
  const Answer deployed =
      call("Telvane", kMainNs, "getDeploymentInfo", key() + arg("templateGuid", "string", "T1"));
  const pugi::xml_node info = deployed.referenced(deployed.return_element());
  // Every child the client reads is there; dates are milliseconds in UTC, texts escaped.
  EXPECT_EQ(std::distance(info.children().begin(), info.children().end()), 13);
  EXPECT_STREQ(info.child("deploymentDate").text().get(), "2023-11-14T22:13:20.123Z");
  EXPECT_STREQ(info.child("name").text().get(), "Launch <1>");
  EXPECT_STREQ(info.child("link").text().get(), "http://127.0.0.1/x?a=1&b=2");
}

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

  // Percent and message are read before completion, so an incomplete answer is mid-way.
  bool complete = false;
  for (int poll = 0; poll < 2000 && !complete; ++poll) {
    const int percent = std::stoi(progress("getProcessPercentComplete", id).value());
    const std::string message = progress("getProcessMessage", id).value();
    complete = progress("isProcessComplete", id).value() == "true";
    if (!complete) {
      EXPECT_LT(percent, 100);
      EXPECT_TRUE(message.starts_with("Clearing templates ")) << message;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  ASSERT_TRUE(complete);
  EXPECT_EQ(progress("getProcessPercentComplete", id).value(), "100");
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
