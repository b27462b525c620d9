// Projects, processes and deployments on the wire.

#include <regex>

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

// The request's elements with the key's value blanked, for exact comparison.
std::string withoutKey(std::string elements) {
  return std::regex_replace(elements, std::regex("<key XI:type=\"XS:string\">[^<]*</key>"),
                            "<key/>");
}

class ProjectsWire : public testing::WireTest {};

TEST_F(ProjectsWire, SendsEachOperationsElementsInOrder) {
  answerScalar("createProject", "p-1");
  EXPECT_EQ(service.createProject("Apollo", "R&D"), "p-1");
  EXPECT_EQ(withoutKey(lastElements("createProject")),
            "<key/><name XI:type=\"XS:string\">Apollo</name>"
            "<description XI:type=\"XS:string\">R&amp;D</description>");

  answerScalar("deleteProject", "false", "boolean");
  EXPECT_TRUE(service.deleteProject("p-1"));  // success is the absence of a fault
  EXPECT_EQ(withoutKey(lastElements("deleteProject")),
            "<key/><projectGuid XI:type=\"XS:string\">p-1</projectGuid>"
            "<doUndeploy XI:type=\"XS:boolean\">true</doUndeploy>");

  answerScalar("hasDeployedTemplate", "1", "boolean");
  EXPECT_TRUE(service.hasDeployedTemplate("p-1"));
  EXPECT_NE(lastBody().find("<templateType XI:type=\"XS:string\"></templateType>"),
            std::string::npos);

  answerScalar("setProjectType", "false", "boolean");
  EXPECT_TRUE(service.setProjectType("p-1", "event"));

  answerScalar("setProjectDeploymentDefinition", "false", "boolean");
  EXPECT_TRUE(service.setProjectDeploymentDefinition("p-1", 2));
  EXPECT_EQ(withoutKey(lastElements("setProjectDeploymentDefinition")),
            "<key/><projectGuid XI:type=\"XS:string\">p-1</projectGuid>"
            "<deploymentDefID XI:type=\"XS:int\">2</deploymentDefID>"
            "<deploymentPath XI:type=\"XS:string\"></deploymentPath>");

  answerScalar("setDeploymentVersionDuration", "true", "boolean");
  EXPECT_TRUE(service.setDeploymentVersionDuration("v-1", 90));
  EXPECT_NE(lastBody().find("<duration XI:type=\"XS:int\">90</duration>"), std::string::npos);

  answer("getDeploymentEnvironmentList_Array",
         "<r><item><id>2</id><name>Production</name>"
         "<mustUsePath>true</mustUsePath></item></r>");
  auto environments = service.getDeploymentEnvironmentList();
  ASSERT_TRUE(environments);
  EXPECT_EQ(environments->Item(1)->id, 2);
  EXPECT_TRUE(environments->Item(1)->mustUsePath);
  EXPECT_EQ(withoutKey(lastElements("getDeploymentEnvironmentList_Array")), "<key/>");

  answer("getDeploymentStatusList_Array",
         "<r><item><versionGuid>v</versionGuid><state>live</state><progress>100</progress>"
         "</item></r>");
  auto status = service.getDeploymentStatusList({"d-1", "d-2"});
  ASSERT_TRUE(status);
  EXPECT_EQ(status->Item(1)->state, "live");
  EXPECT_NE(lastBody().find("Enc:arrayType=\"XS:string[2]\"><i XI:type=\"XS:string\">d-1</i>"),
            std::string::npos);
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ProjectsWire, RefusesADuplicateNameWithItsOwnAlert) {
  server.enqueue(Reply::xml(testing::applicationFault("tv:DuplicateName", "taken", "1")));
  EXPECT_EQ(service.createProject("Demo", ""), "");
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text,
            "A project named Demo already exists. Please select another name for the project");
  server.enqueue(Reply::xml(testing::applicationFault("tv:Other", "no", "2")));
  EXPECT_EQ(service.createProject("Demo", ""), "");
  EXPECT_EQ(host->boxes[1].text, "Fault:Other urn:telvane-faults no 2 ");
}

TEST_F(ProjectsWire, ChoosesTheListOperationByType) {
  answer("getProjectList_Array", "<r/>");
  auto all = service.getProjectList();
  ASSERT_TRUE(all);
  EXPECT_EQ(all->Count(), 0);
  EXPECT_EQ(withoutKey(lastElements("getProjectList_Array")), "<key/>");

  answer("getProjectListByType_Array", "<r><item><name>A</name></item><x><name>B</name></x></r>");
  auto typed = service.getProjectList("event");
  ASSERT_TRUE(typed);
  ASSERT_EQ(typed->Count(), 2);
  EXPECT_EQ(typed->Item(2)->name(), "B");
  EXPECT_EQ(withoutKey(lastElements("getProjectListByType_Array")),
            "<key/><type XI:type=\"XS:string\">event</type>");

  server.enqueue(Reply::xml(testing::applicationFault("tv:X", "no", "")));
  EXPECT_EQ(service.getProjectList(), nullptr);
}

TEST_F(ProjectsWire, MapsWhatTheProjectAnswerHoldsAndLeavesTheRest) {
  setenv("TZ", "UTC", 1);
  answer("getProjectProperties",
         "<r><created xsi:type=\"xsd:dateTime\">2024-01-02T03:04:05Z</created>"
         "<modified xsi:type=\"xsd:string\">2024-01-02T03:04:05Z</modified>"
         "<eventStart xsi:type=\"xsd:dateTime\" xsi:nil=\"true\"/>"
         "<name>Apollo</name><guid>p-1</guid><typeID>event</typeID>"
         "<deploymentDefID xsi:type=\"xsd:int\">2</deploymentDefID>"
         "<hasDeployedTemplate xsi:type=\"xsd:boolean\">true</hasDeployedTemplate></r>");
  auto p = service.getProjectInfo("p-1");
  unsetenv("TZ");
  ASSERT_TRUE(p);
  EXPECT_EQ(p->created(), Date::fromParts(2024, 1, 2, 3, 4, 5));
  EXPECT_TRUE(p->created.occurs());
  EXPECT_FALSE(p->modified.occurs());  // not typed as a date
  EXPECT_FALSE(p->eventStart.occurs());
  EXPECT_EQ(p->name(), "Apollo");
  EXPECT_EQ(p->deploymentDefID(), 2);
  EXPECT_TRUE(p->hasDeployedTemplate());
  EXPECT_EQ(p->typeID(), "");
  EXPECT_FALSE(p->typeID.occurs());
  EXPECT_EQ(p->notes(), "");
  EXPECT_FALSE(p->notes.occurs());
}

TEST_F(ProjectsWire, PollsProcessesByTheirIdOnTheMainServiceWithoutAKey) {
  answerScalar("clearProject", "false", "boolean");
  EXPECT_TRUE(service.clearProject("p-1"));
  EXPECT_NE(lastBody().find("<doUndeploy XI:type=\"XS:boolean\">false</doUndeploy>"),
            std::string::npos);

  answerScalar("clearProject_Async", "proc-1;M");
  EXPECT_EQ(service.clearProject_Async("p-1", true), "proc-1;M");

  EXPECT_FALSE(service.isProcessComplete("proc-1"));  // no ";": nothing is sent
  EXPECT_EQ(service.getProcessPercentComplete("proc-1"), 0);
  EXPECT_EQ(server.requests().size(), 2u);

  answerScalar("isProcessComplete", "true", "boolean");
  EXPECT_TRUE(service.isProcessComplete("proc-1;A"));
  EXPECT_EQ(server.lastRequest().target, "/services/Telvane");
  EXPECT_EQ(lastElements("isProcessComplete"), "<procGuid XI:type=\"XS:string\">proc-1</procGuid>");

  answerScalar("getProcessPercentComplete", "40", "short");
  EXPECT_EQ(service.getProcessPercentComplete("proc-1;M"), 40);
  EXPECT_EQ(lastElements("getProcessPercentComplete"),
            "<procGuid XI:type=\"XS:string\">proc-1</procGuid>");

  answerScalar("clearProject_Result", "true", "boolean");
  EXPECT_TRUE(service.clearProject_Result("proc-1;M;extra"));
  EXPECT_EQ(withoutKey(lastElements("clearProject_Result")),
            "<key/><procGuid XI:type=\"XS:string\">proc-1</procGuid>");
  EXPECT_TRUE(host->boxes.empty());
}

}  // namespace
}  // namespace brenmoor
