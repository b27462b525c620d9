// The data record model: look-ups, the DATARECORD form, and the record operations on the wire.

#include "brenmoor/brenmoor.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

std::shared_ptr<DataRecordEntry> entry(const std::string& label,
                                       std::vector<std::string> guids = {}) {
  auto e = std::make_shared<DataRecordEntry>();
  e->label = label;
  for (auto& g : guids) e->guidList()->Add(g);
  e->value = std::make_shared<DataRecordEntryValue>();
  return e;
}

DataRecord record(std::vector<std::shared_ptr<DataRecordEntry>> items,
                  std::vector<std::string> templates = {}) {
  DataRecord r;
  auto entries = std::make_shared<Collection<DataRecordEntry>>();
  for (auto& e : items) entries->Add(e);
  auto list = std::make_shared<Collection<std::string>>();
  for (auto& t : templates) list->Add(t);
  r.entries = entries;
  r.templateGuidList = list;
  return r;
}

int errorNumber(const std::function<void()>& f) {
  try {
    f();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

TEST(DataRecordForm, WritesTheFormExactlyAndReadsItBack) {
  auto logo = entry("Logo", {"E1", "E2"});
  logo->typeName = "image";
  logo->ext = "gif,jpg";
  logo->value()->assetGuid = "A1";
  logo->value()->value = "logo.gif";
  auto notes = entry("It's", {});
  notes->escaped = true;
  notes->value()->assetDependencies = "d1";
  notes->value()->value = "a]]>b";
  DataRecord r = record({logo, notes}, {"T1"});
  r.guid = "G1";
  r.name = "Home";
  r.assets = {"never written"};
  EXPECT_EQ(r.getXML(),
            "<DATARECORD guid='G1' name='Home'><ENTRIES>"
            "<ENTRY guid='E1,E2' label='Logo' description='' type='image' ext='gif,jpg' format='' "
            "escaped='False' hidden='False'><VALUE assetGuid='A1'><![CDATA[logo.gif]]></VALUE>"
            "</ENTRY>"
            "<ENTRY guid='' label='It's' description='' type='' ext='' format='' escaped='True' "
            "hidden='False'><VALUE assetDependencies='d1'><![CDATA[a]]>b]]></VALUE></ENTRY>"
            "</ENTRIES><TEMPLATES><TEMPLATE>T1</TEMPLATE></TEMPLATES></DATARECORD>");

  auto plain = entry("Title", {"E3"});
  EXPECT_NE(record({plain}).getXML().find("<VALUE><![CDATA[]]></VALUE>"), std::string::npos);

  // Read back, the form gives the same form; the assets stay the reader's own.
  logo->hidden = true;
  DataRecord sent = record({logo, entry("Body", {"E4", "", "E6"})}, {"T1", "T2"});
  DataRecord back;
  back.assets = {"kept"};
  back.readXML(sent.getXML());
  EXPECT_EQ(back.getXML(), sent.getXML());
  EXPECT_EQ(back.assets(), std::vector<std::string>{"kept"});
  EXPECT_EQ(back.GetEntry("Body")->guidList()->Item(2), "");
  EXPECT_FALSE(back.GetEntry("Logo")->label.occurs());  // the form says nothing of the service's

  DataRecord empty;
  empty.readXML("<DATARECORD/>");
  EXPECT_EQ(empty.guid(), "");
  EXPECT_EQ(empty.entries()->Count(), 0);
  EXPECT_EQ(empty.templateGuidList()->Count(), 0);

  DataRecord partial;
  EXPECT_EQ(errorNumber([&] {
              partial.readXML(
                  "<DATARECORD><ENTRIES><ENTRY label='a' escaped='1'/><ENTRY label='b' "
                  "escaped='yes'/></ENTRIES></DATARECORD>");
            }),
            Error::TypeMismatch);
  ASSERT_EQ(partial.entries()->Count(), 1);
  EXPECT_TRUE(partial.entries()->Item(1)->escaped());
  EXPECT_EQ(errorNumber([&] { partial.readXML("<DATARECORD"); }), Error::InvalidArgument);
}

TEST(DataRecordLookups, MatchLabelsExactlyAndNeedTheirCollections) {
  auto first = entry("Title");
  auto second = entry("Title");
  first->value()->assetGuid = "old";
  DataRecord r = record({first, second, entry("Other")});
  r.SetEntryValue("Title", "New");
  EXPECT_EQ(first->value()->value(), "New");
  EXPECT_EQ(second->value()->value(), "New");
  EXPECT_EQ(first->value()->assetGuid(), "");
  r.SetEntryValue("title", "lower");  // no such label: nothing changes, nothing is added
  EXPECT_EQ(r.entries()->Count(), 3);
  EXPECT_EQ(r.GetEntry("Title"), second);
  r.SetEntryValue("Title", "pic.png", "A9");
  EXPECT_EQ(r.GetEntryValue("Title"), "pic.png");
  EXPECT_EQ(second->value()->assetGuid(), "A9");
  EXPECT_EQ(r.GetEntryValue("missing"), "");
  EXPECT_TRUE(entry("x", {"a", "b"})->hasGuid("b"));
  EXPECT_FALSE(entry("x", {"a"})->hasGuid("A"));

  DataRecord fresh;
  EXPECT_EQ(errorNumber([&] { fresh.getXML(); }), Error::UnsetObject);
  EXPECT_EQ(errorNumber([&] { fresh.GetEntry("x"); }), Error::UnsetObject);
  EXPECT_EQ(errorNumber([&] { fresh.SetEntryValue("x", "y"); }), Error::UnsetObject);
  auto bare = std::make_shared<DataRecordEntry>();
  bare->label = "Bare";
  DataRecord withBare = record({bare});
  EXPECT_EQ(errorNumber([&] { withBare.SetEntryValue("Bare", "v"); }), Error::UnsetObject);
}

class DataRecordWire : public testing::WireTest {};

TEST_F(DataRecordWire, SendsTheRecordStructure) {
  auto a = entry("Logo", {"E1", "E2"});
  a->escaped = true;
  a->value()->value = "logo.gif";
  a->value()->valueArray = {"v1", "v2"};
  DataRecord r = record({a}, {"T1", "T2"});
  r.guid = "G1";
  r.name = "Homepage";
  answerScalar("createDataRecord", "G1");
  EXPECT_EQ(service.createDataRecord(r, "P1", true), "G1");
  // Only an entry's first guid goes, and the record is always named "Project".
  const std::string s = " XI:type=\"XS:string\">";
  const std::string body = server.lastRequest().body;
  EXPECT_EQ(body.substr(body.find("<dr>"), body.find("</dr>") + 5 - body.find("<dr>")),
            "<dr><guid" + s + "G1</guid><name" + s +
                "Project</name><assets XI:type=\"Enc:Array\" Enc:arrayType=\"XS:string[0]\">"
                "</assets><entries><entries><guidList" +
                s + "E1</guidList><label" + s + "Logo</label><description" + s +
                "</description><type" + s + "</type><ext" + s + "</ext><format" + s +
                "</format><escaped XI:type=\"XS:boolean\">true</escaped>"
                "<hidden XI:type=\"XS:boolean\">false</hidden><value><value" +
                s + "logo.gif</value><assetGuid" + s + "</assetGuid><assetDependencies" + s +
                "</assetDependencies><valueArray XI:type=\"Enc:Array\" "
                "Enc:arrayType=\"XS:string[2]\"><i" +
                s + "v1</i><i" + s + "v2</i></valueArray></value></entries></entries>" +
                "<templateGuidList><templateGuidList" + s + "T1</templateGuidList>" +
                "<templateGuidList" + s + "T2</templateGuidList></templateGuidList></dr>");

  // An entry without a guid cannot be sent.
  EXPECT_EQ(service.createDataRecord(record({entry("NoGuid")}), "P1", false), "");
  EXPECT_EQ(server.requests().size(), 1u);
  EXPECT_EQ(service.lastErrID(), -1);
}

TEST_F(DataRecordWire, MapsRecordsAndGatesThemeSizesOnTheServerVersion) {
  const std::string themeRecord =
      "<r><guid>R1</guid><name>Corporate</name><assets><i>A1</i></assets>"
      "<templateGuidList><i>T1</i></templateGuidList><entries><item>"
      "<guidList><i>E1</i><i>E2</i></guidList><label>Logo</label><escaped>true</escaped>"
      "<src>logo.png</src><buttonText>Choose</buttonText>"
      "<width xsi:type=\"xsd:short\">120</width><height>40</height>"
      "<value><value>v</value><assetGuid>A1</assetGuid></value></item>"
      "<item><label>Empty</label><value xsi:nil=\"true\"/></item></entries></r>";
  answerScalar("getVersion", "3.2.4.58");
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  answer("getThemeDataRecord", themeRecord);
  auto old = service.getThemeDataRecord("theme");
  ASSERT_TRUE(old);
  auto logo = old->GetEntry("Logo");
  ASSERT_TRUE(logo);
  EXPECT_EQ(logo->src(), "logo.png");
  EXPECT_EQ(logo->width(), 0);
  EXPECT_FALSE(logo->width.occurs());
  EXPECT_TRUE(old->assets().empty());
  EXPECT_EQ(logo->guidList()->Count(), 2);
  EXPECT_EQ(logo->value()->assetGuid(), "A1");
  EXPECT_TRUE(logo->description.occurs());  // missing, but set empty as the service's value
  EXPECT_EQ(old->GetEntry("Empty")->value()->value(), "");

  answerScalar("getVersion", "3.2.4.59");
  ASSERT_TRUE(service.Ping(server.baseUrl()));
  answer("getThemeDataRecord", themeRecord);
  EXPECT_EQ(service.getThemeDataRecord("theme")->GetEntry("Logo")->height(), 40);

  answer("getDataRecord", themeRecord);
  auto plain = service.getDataRecord({"T1"});
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->GetEntry("Logo")->src(), "");  // only theme records carry sources

  server.enqueue(testing::Reply::xml(testing::applicationFault("tv:None", "none", "2")));
  auto none = service.getDataRecord({"T1"});
  ASSERT_TRUE(none);
  EXPECT_FALSE(none->entries());
  EXPECT_TRUE(host->boxes.empty());

  answer("deploy", "<r><i>D0</i><i>D1</i><i>D2</i></r>");
  EXPECT_EQ(service.Deploy({"R1"}, {"T1", "T2", "T3"}),
            (std::vector<std::string>{"D0", "D1", "D2"}));
}

}  // namespace
}  // namespace brenmoor
