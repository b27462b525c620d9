// The deployment record: read only while deployed, strict about its children.

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

Reply deploymentAnswer(const std::string& fields) {
  return Reply::xml(testing::soapEnvelope(
      "<ns1:getDeploymentInfoResponse xmlns:ns1=\"urn:telvane-main\">"
      "<getDeploymentInfoReturn href=\"#id0\"/></ns1:getDeploymentInfoResponse>"
      "<multiRef id=\"id0\" soapenc:root=\"0\" xsi:type=\"ns2:DeploymentInfo\" "
      "xmlns:ns2=\"urn:telvane-main\">" +
      fields + "</multiRef>"));
}

const std::string kAllButDeployed =
    "<height xsi:type=\"xsd:int\">480</height><width xsi:type=\"xsd:int\">640</width>"
    "<liveEnabled xsi:type=\"xsd:boolean\">true</liveEnabled><loginFlag>N</loginFlag>"
    "<loginUrl>http://login</loginUrl><name>Launch</name><versionGuid>v-1</versionGuid>"
    "<deploymentGuid>d-1</deploymentGuid><link>http://link</link>"
    "<duration xsi:type=\"xsd:int\">90</duration><size xsi:type=\"xsd:int\">1024</size>";

class DeploymentInfoTest : public testing::WireTest {};

TEST_F(DeploymentInfoTest, MapsEveryFieldOnlyWhenDeployedAndSkipsANilDate) {
  setenv("TZ", "UTC", 1);
  server.enqueue(deploymentAnswer(
      "<deployed xsi:type=\"xsd:boolean\">true</deployed>"
      "<deploymentDate xsi:type=\"xsd:dateTime\">2024-05-06T07:08:09.000Z</deploymentDate>" +
      kAllButDeployed));
  auto info = service.getDeploymentInfo("T1");
  ASSERT_TRUE(info);
  EXPECT_TRUE(info->deployed());
  EXPECT_EQ(info->deploymentDate(), Date::fromParts(2024, 5, 6, 7, 8, 9));
  EXPECT_EQ(info->height(), 480);
  EXPECT_EQ(info->width(), 640);
  EXPECT_TRUE(info->liveEnabled());
  EXPECT_EQ(info->loginFlag(), "N");
  EXPECT_EQ(info->loginUrl(), "http://login");
  EXPECT_EQ(info->name(), "Launch");
  EXPECT_EQ(info->versionGuid(), "v-1");
  EXPECT_EQ(info->deploymentGuid(), "d-1");
  EXPECT_EQ(info->link(), "http://link");
  EXPECT_EQ(info->duration(), 90);
  EXPECT_EQ(info->size(), 1024);

  server.enqueue(deploymentAnswer("<deployed>false</deployed>" + kAllButDeployed));
  info = service.getDeploymentInfo("T1");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->deployed());
  EXPECT_EQ(info->height(), 0);
  EXPECT_FALSE(info->name.occurs() || info->link.occurs() || info->deploymentDate.occurs());

  server.enqueue(deploymentAnswer("<deployed>true</deployed><deploymentDate xsi:nil=\"true\"/>" +
                                  kAllButDeployed));
  info = service.getDeploymentInfo("T1");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->deploymentDate.occurs());
  EXPECT_TRUE(info->name.occurs());
}

TEST_F(DeploymentInfoTest, FailsOnAMissingOrUnreadableChild) {
  std::string withoutHeight = kAllButDeployed;
  withoutHeight.erase(0, withoutHeight.find("<width"));
  server.enqueue(
      deploymentAnswer("<deployed>true</deployed><deploymentDate xsi:nil=\"1\"/>" + withoutHeight));
  EXPECT_EQ(service.getDeploymentInfo("T1"), nullptr);
  EXPECT_EQ(service.lastErrID(), -1);
  EXPECT_NE(service.lastErrMsg().find("<height>"), std::string::npos);

  std::string badSize = kAllButDeployed;
  badSize.replace(badSize.find(">1024<"), 6, ">big<");
  server.enqueue(deploymentAnswer(
      "<deployed>true</deployed><deploymentDate>2024-05-06T07:08:09Z</deploymentDate>" + badSize));
  EXPECT_EQ(service.getDeploymentInfo("T1"), nullptr);
  EXPECT_NE(service.lastErrMsg().find("Type mismatch"), std::string::npos);
}

TEST_F(DeploymentInfoTest, AFaultGivesAnEmptyRecordAndTheDuplicateNameAlert) {
  server.enqueue(Reply::xml(testing::applicationFault("tv:DuplicateName", "taken", "1")));
  auto info = service.getDeploymentInfo("T9");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->deployed());
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text,
            "A project named T9 already exists. Please select another name for the project");

  server.enqueue(Reply::xml(testing::applicationFault("tv:Other", "no", "2")));
  ASSERT_TRUE(service.getDeploymentInfo("T9"));
  EXPECT_EQ(host->boxes.back().text, "Fault:Other urn:telvane-faults no 2 ");
}

}  // namespace
}  // namespace brenmoor
