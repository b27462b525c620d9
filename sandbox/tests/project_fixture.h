#pragma once

#include <string>
#include <string_view>

#include "sandbox_fixture.h"

namespace sandbox::testing {

// Signed in, with an account selected, talking to the main service.
class ProjectTest : public SandboxTest {
 protected:
  Answer main(std::string_view operation, std::string_view arguments = "") {
    return call("Telvane", kMainNs, operation, arguments);
  }
  void sign_in(int account = 1001) {
    login();
    ASSERT_EQ(call("Login", kLoginNs, "selectAccount",
                   key() + arg("account_id", "int", std::to_string(account)))
                  .value(),
              "true");
  }
  std::string create_project(std::string_view name) {
    return main("createProject",
                key() + arg("name", "string", name) + arg("description", "string", ""))
        .value();
  }
  Answer copy_template(std::string_view source, std::string_view project, bool overwrite) {
    return main("copyTemplate",
                key() + arg("templateGuid", "string", source) +
                    arg("targetProjectGuid", "string", project) +
                    arg("templateName", "string", "Title Page") +
                    arg("overwriteExisting", "boolean", overwrite ? "true" : "false"));
  }
  Answer project_templates(std::string_view project, bool with_deployment) {
    return main("getProjectTemplateList_Array",
                key() + arg("projectGuid", "string", project) +
                    arg("includeDeploymentInfo", "boolean", with_deployment ? "true" : "false"));
  }
  Answer components(std::string_view guid, std::string_view label, std::string_view class_name) {
    return main("getComponents", key() + arg("templateGuid", "string", guid) +
                                     arg("cGuid", "string", "") + arg("cLabel", "string", label) +
                                     arg("cClass", "string", class_name));
  }
  void apply_theme(std::string_view theme, std::string_view project) {
    ASSERT_EQ(main("applyTheme", key() + arg("themeGuid", "string", theme) +
                                     arg("projectGuid", "string", project))
                  .value(),
              "true");
  }
  static std::string detail_id(const Answer& answer) {
    return answer.application_fault().child("detail").child("id").text().get();
  }
  static std::string fault_code(const Answer& answer) {
    return answer.application_fault().child("faultcode").text().get();
  }
  static std::string array_type(const Answer& answer) {
    return answer.return_element().attribute("soapenc:arrayType").value();
  }
  static pugi::xml_node first_record(const Answer& answer) {
    return answer.referenced(answer.return_element().first_child());
  }
};

}  // namespace sandbox::testing
