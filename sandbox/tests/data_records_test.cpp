#include "project_fixture.h"

namespace sandbox::testing {
namespace {

std::string string_array(std::string_view name, const std::vector<std::string>& items) {
  std::string xml = "<" + std::string(name) + " XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[" +
                    std::to_string(items.size()) +
                    "]\" xmlns:Enc=\"http://schemas.xmlsoap.org/soap/encoding/\">";
  for (const std::string& item : items) xml += arg("i", "string", item);
  return xml + "</" + std::string(name) + ">";
}

// One entry as the client sends it, with an asset value.
std::string entry(std::string_view guid, std::string_view label, std::string_view value,
                  std::string_view escaped = "false") {
  return "<entries>" + arg("guidList", "string", guid) + arg("label", "string", label) +
         arg("description", "string", "") + arg("type", "string", "image") +
         arg("ext", "string", "png") + arg("format", "string", "") +
         arg("escaped", "boolean", escaped) + arg("hidden", "boolean", "false") + "<value>" +
         arg("value", "string", value) + arg("assetGuid", "string", "asset-" + std::string(value)) +
         arg("assetDependencies", "string", "") + string_array("valueArray", {}) +
         "</value></entries>";
}

class DataRecordTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    sign_in();
    project_ = create_project("Demo");
    apply_theme("theme-classroom", project_);
    title_ = template_named("Title Page");
    slides_ = template_named("Slide Viewer");
  }

  std::string template_named(std::string_view name) {
    const Answer list = project_templates(project_, false);
    for (pugi::xml_node item : list.return_element().children()) {
      const pugi::xml_node info = list.referenced(item);
      if (name == info.child("name").text().get()) return info.child("guid").text().get();
    }
    return "";
  }

  Answer create(std::string_view guid, const std::vector<std::string>& templates,
                std::string_view entries, bool overwrite = false) {
    std::string listed;
    for (const std::string& item : templates) listed += arg("templateGuidList", "string", item);
    return main("createDataRecord",
                key() + "<dr>" + arg("guid", "string", guid) + arg("name", "string", "Project") +
                    string_array("assets", {}) + "<entries>" + std::string(entries) +
                    "</entries><templateGuidList>" + listed + "</templateGuidList></dr>" +
                    arg("projectGuid", "string", project_) +
                    arg("overwriteExisting", "boolean", overwrite ? "true" : "false"));
  }

  Answer record_for(const std::vector<std::string>& templates) {
    return main("getDataRecord",
                key() + arg("guid", "string", "") + string_array("templateGuidList", templates));
  }

  Answer entry_of(std::string_view template_guid, std::string_view guid, std::string_view label) {
    return main("getDataRecordEntry", key() + arg("templateGuid", "string", template_guid) +
                                          arg("dreGuid", "string", guid) +
                                          arg("dreLabel", "string", label));
  }

  std::string project_;
  std::string title_;
  std::string slides_;
};

TEST_F(DataRecordTest, CreatingKeepsGuidsUniquePerProjectAndTemplatesInIt) {
  const std::string guid = create("", {title_}, entry("e1", "Logo", "old.png")).value();
  EXPECT_EQ(guid.size(), 36u);
  EXPECT_EQ(detail_id(create(guid, {title_}, entry("e1", "Logo", "new.png"))), "1");
  EXPECT_EQ(create(guid, {title_}, entry("e1", "Logo", "new.png"), true).value(), guid);
  const Answer replaced = entry_of(title_, "", "Logo");
  EXPECT_STREQ(replaced.referenced(replaced.referenced(replaced.return_element()).child("value"))
                   .child("value")
                   .text()
                   .get(),
               "new.png");
  EXPECT_EQ(fault_code(entry_of(title_, "", "Missing")), "tv:NoSuchEntry");
  EXPECT_EQ(fault_code(entry_of(title_, "nope", "Logo")), "tv:NoSuchEntry");

  const Answer catalog = create("", {"tpl-title-page"}, "");
  EXPECT_EQ(fault_code(catalog), "tv:NoSuchTemplate");
  EXPECT_EQ(detail_id(catalog), "2");
  EXPECT_EQ(create("", {title_}, entry("e1", "Logo", "x.png", "maybe")).fault_string(),
            "java.lang.Exception: Argument 'dr.entries[0].escaped' of operation "
            "'createDataRecord' is not a valid xsd:boolean: 'maybe'");

  const auto sync = [&](std::string_view record, std::string_view template_guid) {
    return main("setDataRecordSyncData", key() + arg("drGuid", "string", record) +
                                             arg("templateGuid", "string", template_guid) +
                                             arg("syncXML", "string", "&lt;SYNC/&gt;"));
  };
  EXPECT_EQ(sync(guid, title_).value(), "true");
  EXPECT_EQ(fault_code(sync(guid, slides_)), "tv:NoSuchDataRecord");
}

TEST_F(DataRecordTest, GetDataRecordAnswersTheNewestRecordHoldingEveryTemplate) {
  const std::string both =
      create("", {title_, slides_},
             entry("e1", "Logo", "logo.png") + entry("e2", "Deck", "logo.png") +
                 entry("e3", "Title", "t.png"))
          .value();
  const std::string newer = create("", {title_}, entry("e1", "Logo", "other.png")).value();

  const auto guid_of = [&](const std::vector<std::string>& templates) {
    const Answer answer = record_for(templates);
    return std::string(answer.referenced(answer.return_element()).child("guid").text().get());
  };
  EXPECT_EQ(guid_of({title_}), newer);
  EXPECT_EQ(guid_of({slides_, title_}), both);
  EXPECT_EQ(detail_id(record_for({slides_, "tpl-qa-panel"})), "2");

  // Assets are listed once each, however many entries use them.
  const Answer answer = record_for({slides_});
  const pugi::xml_node record = answer.referenced(answer.return_element());
  EXPECT_STREQ(record.child("assets").first_child().text().get(), "asset-logo.png");
  EXPECT_STREQ(record.child("assets").last_child().text().get(), "asset-t.png");
  EXPECT_EQ(std::distance(record.child("assets").begin(), record.child("assets").end()), 2);

  sign_in(1002);
  EXPECT_EQ(fault_code(record_for({slides_})), "tv:NoSuchDataRecord");
}

TEST_F(DataRecordTest, DeployPublishesEveryTemplateOrNone) {
  const std::string record = create("", {title_}, entry("e1", "Logo", "logo.png")).value();
  const auto deploy = [&](const std::vector<std::string>& templates) {
    return main("deploy", key() + string_array("datarecordGuidList", {record}) +
                              string_array("templateGuidList", templates));
  };
  const auto deployed = [&] {
    return main("hasDeployedTemplate",
                key() + arg("projectGuid", "string", project_) + arg("templateType", "string", ""))
        .value();
  };
  EXPECT_EQ(detail_id(deploy({title_, slides_})), "2");
  EXPECT_EQ(deployed(), "false");

  const Answer answer = deploy({title_});
  EXPECT_EQ(array_type(answer), "xsd:string[1]");
  const std::string deployment = answer.return_element().first_child().text().get();
  EXPECT_EQ(deployed(), "true");

  const Answer info = main("getDeploymentInfo", key() + arg("templateGuid", "string", title_));
  const pugi::xml_node fields = info.referenced(info.return_element());
  EXPECT_EQ(fields.child("deploymentGuid").text().get(), deployment);
  EXPECT_NE(std::string(fields.child("link").text().get()).find("/live/" + deployment + "/"),
            std::string::npos);

  const Answer statuses = main("getDeploymentStatusList_Array",
                               key() + string_array("deploymentGuidList", {deployment}));
  const pugi::xml_node status = first_record(statuses);
  EXPECT_STREQ(status.child("state").text().get(), "deployed");
  EXPECT_EQ(status.child("versionGuid").text().get(),
            std::string(fields.child("versionGuid").text().get()));
}

}  // namespace
}  // namespace sandbox::testing
