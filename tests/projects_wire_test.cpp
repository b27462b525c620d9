// Projects, processes and deployments: what their answers become, and answers that must fail.

#include <functional>
#include <regex>
#include <tuple>

#include "brenmoor/brenmoor.h"
#include "util/time_zone.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

std::string repeat(const std::string& text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

std::string created(const std::string& when) {
  return "<item><created xsi:type=\"xsd:dateTime\">" + when + "</created></item>";
}

const std::string kAllButDeployed =
    "<height xsi:type=\"xsd:int\">480</height><width xsi:type=\"xsd:int\">640</width>"
    "<liveEnabled xsi:type=\"xsd:boolean\">true</liveEnabled><loginFlag>N</loginFlag>"
    "<loginUrl>http://login</loginUrl><name>Launch</name><versionGuid>v-1</versionGuid>"
    "<deploymentGuid>d-1</deploymentGuid><link>http://link</link>"
    "<duration xsi:type=\"xsd:int\">90</duration><size xsi:type=\"xsd:int\">1024</size>";

class ProjectsWire : public testing::WireTest {
 protected:
  void answerDeployment(const std::string& fields) {
    answer("getDeploymentInfo", "<r href=\"#id0\"/>",
           "<multiRef id=\"id0\" soapenc:root=\"0\" xsi:type=\"ns2:DeploymentInfo\" "
           "xmlns:ns2=\"urn:telvane-main\">" +
               fields + "</multiRef>");
  }
};

TEST_F(ProjectsWire, ShowsItsOwnAlertForADuplicateName) {
  server.enqueue(Reply::xml(testing::applicationFault("tv:DuplicateName", "taken", "1")));
  EXPECT_EQ(service.createProject("Demo", ""), "");
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text,
            "A project named Demo already exists. Please select another name for the project");
  server.enqueue(
      Reply::xml(testing::wrappedFault("createProject", "tv:DuplicateName", "taken", "1")));
  EXPECT_EQ(service.createProject("Demo", ""), "");
  EXPECT_EQ(host->boxes.at(1).text, host->boxes[0].text);
  host->boxes.pop_back();
  server.enqueue(Reply::xml(testing::applicationFault("tv:Other", "no", "2")));
  EXPECT_EQ(service.createProject("Demo", ""), "");
  EXPECT_EQ(host->boxes[1].text, "Fault:Other urn:telvane-faults no 2 ");

  // A deployment answers a fault with an empty record, and the alert names its template.
  server.enqueue(Reply::xml(testing::applicationFault("tv:DuplicateName", "taken", "1")));
  auto info = service.getDeploymentInfo("T9");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->deployed());
  EXPECT_EQ(host->boxes.at(2).text,
            "A project named T9 already exists. Please select another name for the project");
}

TEST_F(ProjectsWire, ReadsListsOfAnyItemNameAndTakesAnyAnswerAsDone) {
  answer("getProjectListByType_Array", "<r><item><name>A</name></item><x><name>B</name></x></r>");
  auto typed = service.getProjectList("event");
  ASSERT_TRUE(typed);
  ASSERT_EQ(typed->Count(), 2);
  EXPECT_EQ(typed->Item(2)->name(), "B");
  server.enqueue(Reply::xml(testing::applicationFault("tv:X", "no", "")));
  EXPECT_EQ(service.getProjectList(), nullptr);

  // These report success by answering at all, even "false".
  const std::vector<std::function<bool()>> calls = {
      [&] { return service.deleteProject("p-1"); },
      [&] { return service.setProjectType("p-1", "event"); },
      [&] { return service.setProjectDeploymentDefinition("p-1", 2); },
      [&] { return service.clearProject("p-1"); },
      [&] { return service.setTemplateMetadata("t-1", "<m/>"); },
  };
  for (size_t i = 0; i < calls.size(); ++i) {
    answerScalar("any", "false", "boolean");
    EXPECT_TRUE(calls[i]()) << i;
  }
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
  ASSERT_TRUE(p);
  EXPECT_EQ(p->created(), Date::fromParts(2024, 1, 2, 3, 4, 5));
  EXPECT_TRUE(p->created.occurs());
  EXPECT_FALSE(p->modified.occurs());  // not typed as a date
  EXPECT_FALSE(p->eventStart.occurs());
  EXPECT_EQ(p->name(), "Apollo");
  EXPECT_EQ(p->deploymentDefID(), 2);
  EXPECT_TRUE(p->hasDeployedTemplate());
  EXPECT_FALSE(p->typeID.occurs());
  EXPECT_FALSE(p->notes.occurs());
}

TEST_F(ProjectsWire, MovesEveryDateByTheOffsetInForceNow) {
  // Both sides of a daylight-saving change move alike: the service's own rule.
  setenv("TZ", "Europe/Berlin", 1);
  answer("getProjectList_Array",
         "<r>" + created("2024-03-30T12:00:00Z") + created("2024-04-01T12:00:00Z") + "</r>");
  auto list = service.getProjectList();
  const int32_t offset = util::localOffsetSeconds();
  ASSERT_TRUE(list) << service.lastErrMsg();
  ASSERT_TRUE(offset == 3600 || offset == 7200) << offset;
  EXPECT_EQ(list->Item(1)->created(), Date::fromParts(2024, 3, 30, 12).addSeconds(offset));
  EXPECT_EQ(list->Item(2)->created(), Date::fromParts(2024, 4, 1, 12).addSeconds(offset));

  // A new TZ counts from the next call on.
  for (const auto& [tz, hour] : {std::pair{"UTC", 12}, std::pair{"Asia/Tokyo", 21}}) {
    setenv("TZ", tz, 1);
    answer("getProjectList_Array", "<r>" + created("2024-03-30T12:00:00Z") + "</r>");
    list = service.getProjectList();
    ASSERT_TRUE(list) << tz;
    EXPECT_EQ(list->Item(1)->created(), Date::fromParts(2024, 3, 30, hour)) << tz;
  }
}

TEST_F(ProjectsWire, FailsAnAnswerWhoseItemsAllShareOneLargeValue) {
  answer("getProjectList_Array", "<r>" + repeat("<item href=\"#big\"/>", 8000) + "</r>",
         "<multiRef id=\"big\" soapenc:root=\"0\">" + repeat("<c/>", 4000) + "</multiRef>");
  EXPECT_EQ(service.getProjectList(), nullptr);
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_NE(service.lastErrMsg().find("refers to the same values so often"), std::string::npos)
      << service.lastErrMsg();
}

TEST_F(ProjectsWire, RefusesAnswersPastTheLimitAndTakesLargeOnesWithin) {
  const std::string item = "<item><name>p</name></item>";
  service.setMaxAnswerBytes(64 * 1024);
  answer("getProjectList_Array", "<r>" + repeat(item, 200 * 1024 / item.size()) + "</r>");
  EXPECT_EQ(service.getProjectList(), nullptr);
  EXPECT_EQ(service.lastErrID(), -1);
  std::smatch reached;
  ASSERT_TRUE(std::regex_search(service.lastErrMsg(), reached,
                                std::regex("announces ([0-9]+) bytes, past the answer limit of "
                                           "65536 bytes")))
      << service.lastErrMsg();
  EXPECT_GT(std::stoul(reached[1]), 65536u);

  service.setMaxAnswerBytes(64 << 20);
  answer("getProjectList_Array", "<r>" + repeat(item, 62'500) + "</r>");
  auto list = service.getProjectList();
  ASSERT_TRUE(list) << service.lastErrID() << " " << service.lastErrMsg();
  EXPECT_EQ(list->Count(), 62'500);
  EXPECT_EQ(list->Item(62'500)->name(), "p");
}

TEST_F(ProjectsWire, SendsNothingForAProcessHandleWithoutItsCode) {
  service.setLastErrID(7);
  EXPECT_FALSE(service.isProcessComplete("proc-1"));
  EXPECT_EQ(service.getProcessPercentComplete("proc-1"), 0);
  EXPECT_EQ(service.getProcessMessage("proc-1"), "");
  EXPECT_FALSE(service.clearProject_Result("proc-1"));
  EXPECT_FALSE(service.undeployProject_Result("proc-1"));
  EXPECT_EQ(service.keyCounter(), 0);
  EXPECT_TRUE(server.requests().empty());
  EXPECT_EQ(service.lastErrID(), 7);
  EXPECT_TRUE(host->boxes.empty());
}

TEST_F(ProjectsWire, ReadsADeploymentOnlyWhenDeployedAndSkipsANilDate) {
  setenv("TZ", "UTC", 1);
  answerDeployment(
      "<deployed xsi:type=\"xsd:boolean\">true</deployed>"
      "<deploymentDate xsi:type=\"xsd:dateTime\">2024-05-06T07:08:09.000Z</deploymentDate>" +
      kAllButDeployed);
  auto info = service.getDeploymentInfo("T1");
  ASSERT_TRUE(info);
  EXPECT_TRUE(info->deployed());
  EXPECT_EQ(info->deploymentDate(), Date::fromParts(2024, 5, 6, 7, 8, 9));
  EXPECT_EQ(std::tuple(info->height(), info->width(), info->liveEnabled(), info->loginFlag(),
                       info->loginUrl(), info->name(), info->versionGuid(), info->deploymentGuid(),
                       info->link(), info->duration(), info->size()),
            std::tuple(480, 640, true, "N", "http://login", "Launch", "v-1", "d-1", "http://link",
                       90, 1024));

  answerDeployment("<deployed>false</deployed>" + kAllButDeployed);
  info = service.getDeploymentInfo("T1");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->deployed());
  EXPECT_EQ(info->height(), 0);
  EXPECT_FALSE(info->name.occurs() || info->link.occurs() || info->deploymentDate.occurs());

  answerDeployment("<deployed>true</deployed><deploymentDate xsi:nil=\"true\"/>" + kAllButDeployed);
  info = service.getDeploymentInfo("T1");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->deploymentDate.occurs());
  EXPECT_TRUE(info->name.occurs());
}

TEST_F(ProjectsWire, FailsADeploymentMissingOrMisreadingAChild) {
  std::string withoutHeight = kAllButDeployed;
  withoutHeight.erase(0, withoutHeight.find("<width"));
  answerDeployment("<deployed>true</deployed><deploymentDate xsi:nil=\"1\"/>" + withoutHeight);
  EXPECT_EQ(service.getDeploymentInfo("T1"), nullptr);
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_NE(service.lastErrMsg().find("<height>"), std::string::npos);

  std::string badSize = kAllButDeployed;
  badSize.replace(badSize.find(">1024<"), 6, ">big<");
  answerDeployment(
      "<deployed>true</deployed><deploymentDate>2024-05-06T07:08:09Z</deploymentDate>" + badSize);
  EXPECT_EQ(service.getDeploymentInfo("T1"), nullptr);
  EXPECT_NE(service.lastErrMsg().find("Type mismatch"), std::string::npos);
}

}  // namespace
}  // namespace brenmoor
