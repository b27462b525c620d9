// Templates, themes and components: their XML forms and their operations on the wire.

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

using testing::Reply;

TEST(TemplateForm, WritesTheTemplateFormAsItIsAndReadsItBack) {
  TemplateInfo t;
  EXPECT_EQ(t.getXML(),
            "<TEMPLATE><GUID></GUID><NAME></NAME><WIDTH>0</WIDTH><HEIGHT>0</HEIGHT><FLAGS></FLAGS>"
            "<DESCRIPTION></DESCRIPTION><ICONURL></ICONURL><TYPE></TYPE>"
            "<METADATA><![CDATA[]]></METADATA></TEMPLATE>");
  t.guid = "g-1";
  t.height = -1;
  t.templateType = "page";
  t.metadataXML = "<METADATA><author>Ann</author></METADATA>";
  const std::string xml = t.getXML();

  TemplateInfo back;
  back.readXML(xml);
  EXPECT_EQ(back.getXML(), xml);
  EXPECT_EQ(back.height(), -1);
  EXPECT_TRUE(back.metadataXML.occurs());
  EXPECT_EQ(back.GetMetadata("author"), "Ann");
  EXPECT_EQ(back.GetMetadata("missing"), "");

  // Only the metadata is protected: other text goes out as it is, markup and all.
  TemplateInfo raw;
  raw.name = "a<b & c";
  EXPECT_NE(raw.getXML().find("<NAME>a<b & c</NAME>"), std::string::npos);

  TemplateInfo partial;
  partial.readXML("<TEMPLATE><NAME>n</NAME></TEMPLATE>");
  EXPECT_TRUE(partial.guid.occurs());  // set, even to empty

  TemplateInfo bad;
  EXPECT_THROW(bad.readXML("<TEMPLATE><GUID>g</GUID><NAME>n</NAME><WIDTH>wide</WIDTH>"
                           "</TEMPLATE>"),
               Error);
  EXPECT_EQ(bad.name(), "n");  // read before the failure
  EXPECT_THROW(bad.readXML("<TEMPLATE>"), Error);
}

TEST(ThemeForm, WritesNamesInCdataAndFlagsAsWords) {
  ThemeInfo theme;
  theme.guid = "t-1";
  theme.name = "Dark <b>";
  EXPECT_EQ(theme.getXML(),
            "<THEME><GUID>t-1</GUID><NAME><![CDATA[Dark <b>]]></NAME>"
            "<DESCRIPTION><![CDATA[]]></DESCRIPTION><WIDTH>0</WIDTH><HEIGHT>0</HEIGHT>"
            "<SMICONURL></SMICONURL><LGICONURL></LGICONURL><TEMPLATES></TEMPLATES></THEME>");

  ThemeInfo read;
  read.readXML(
      "<THEME><GUID>t-1</GUID><NAME><![CDATA[Dark]]></NAME><WIDTH>800</WIDTH><TEMPLATES>"
      "<TEMPLATE required='True'>a</TEMPLATE><TEMPLATE>b</TEMPLATE>"
      "<TEMPLATE required='false'>c</TEMPLATE></TEMPLATES></THEME>");
  ASSERT_EQ(read.themeTemplateList()->Count(), 3);
  EXPECT_TRUE(read.themeTemplateList()->Item(1)->required());
  EXPECT_FALSE(read.themeTemplateList()->Item(2)->required());
  EXPECT_NE(read.getXML().find("<TEMPLATE required='True'>a</TEMPLATE><TEMPLATE "
                               "required='False'>b</TEMPLATE><TEMPLATE required='False'>c"),
            std::string::npos);
  EXPECT_THROW(read.readXML("<THEME><TEMPLATES><TEMPLATE required='maybe'>x</TEMPLATE>"
                            "</TEMPLATES></THEME>"),
               Error);
}

class TemplatesWire : public testing::WireTest {};

TEST_F(TemplatesWire, ListsTemplatesByTheCallersOperationWithNestedRecords) {
  answer("listThings", "<r><item href=\"#t\"/></r>",
         "<multiRef id=\"t\" soapenc:root=\"0\"><guid>g-1</guid><name>Title</name>"
         "<type>page</type><width xsi:type=\"xsd:int\">640</width>"
         "<created xsi:type=\"xsd:dateTime\">2024-01-02T03:04:05Z</created>"
         "<deploymentInfo href=\"#d\"/></multiRef>"
         "<multiRef id=\"d\" soapenc:root=\"0\"><deployed>false</deployed></multiRef>");
  auto list = service.getTemplateList("page", "listThings");
  ASSERT_TRUE(list) << service.lastErrMsg();
  const auto& t = list->Item(1);
  EXPECT_EQ(t->templateType(), "page");
  EXPECT_EQ(t->width(), 640);
  EXPECT_TRUE(t->created.occurs());
  ASSERT_TRUE(t->DeploymentInfo.occurs());
  EXPECT_FALSE(t->DeploymentInfo()->deployed());

  answer("getProjectTemplateList_Array", "<r><item><guid>g-2</guid></item></r>");
  list = service.getProjectTemplateList("p-1", true);
  ASSERT_TRUE(list);
  EXPECT_FALSE(list->Item(1)->DeploymentInfo.occurs());
  EXPECT_EQ(list->Item(1)->DeploymentInfo(), nullptr);
}

TEST_F(TemplatesWire, ReadsComponentsWithTheirPropertiesAndThemesWithTheirTemplates) {
  answer("getComponents",
         "<r><item><guid>c-1</guid><label>Video</label><className>Player</className>"
         "<properties><item><name>src</name><value>first.mp4</value>"
         "<manageable>true</manageable></item><item><name>SRC</name><value>second.mp4</value>"
         "</item></properties></item></r>");
  auto components = service.getComponents("g-1", "", "Video", "");
  ASSERT_TRUE(components);
  const auto& c = components->Item(1);
  EXPECT_EQ(c->properties()->Count(), 2);
  EXPECT_TRUE(c->properties()->Item(1)->manageable());
  EXPECT_EQ(c->getPropertyValue("SRC"), "first.mp4");
  EXPECT_EQ(c->getPropertyValue("none"), "");

  answer("getThemeInfo",
         "<r><guid>t-1</guid><themeTemplateList><item><templateGuid>a</templateGuid>"
         "<required>true</required></item></themeTemplateList></r>");
  auto theme = service.getThemeInfo("t-1");
  ASSERT_TRUE(theme);
  ASSERT_TRUE(theme->themeTemplateList.occurs());
  EXPECT_TRUE(theme->themeTemplateList()->Item(1)->required());
  EXPECT_EQ(theme->themeTemplateList()->Item(1)->templateGuid(), "a");
}

TEST_F(TemplatesWire, TemplateInfoIsSilentOnAFault) {
  server.enqueue(Reply::xml(testing::applicationFault("tv:NoSuch", "no", "3")));
  EXPECT_EQ(service.getTemplateInfo("g-1"), nullptr);
  server.enqueue(Reply::xml(testing::applicationFault("tv:NoSuch", "no", "3")));
  EXPECT_EQ(service.getThemeTemplateInfo("t-1", "g-1"), nullptr);
  EXPECT_TRUE(host->boxes.empty());

  server.enqueue(Reply::xml(testing::applicationFault("tv:Taken", "taken", "1")));
  EXPECT_EQ(service.copyTemplate("g-1", "p-1", "Copy", false), "");
  ASSERT_EQ(host->boxes.size(), 1u);
  EXPECT_EQ(host->boxes[0].text, "Fault:Taken urn:telvane-faults taken 1 ");
}

}  // namespace
}  // namespace brenmoor
