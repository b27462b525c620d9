// Every remote operation on the wire: where it goes, under which action, and what it sends.

#include <pugixml.hpp>

#include <functional>
#include <regex>
#include <sstream>

#include "brenmoor/brenmoor.h"
#include "independent_md5.h"
#include "wire_fixture.h"

namespace brenmoor {
namespace {

struct Endpoint {
  const char* path;
  const char* action;
};
constexpr Endpoint kLogin{"/services/Login", "urn:telvane-login"};
constexpr Endpoint kMain{"/services/Telvane", "urn:telvane-main"};
constexpr Endpoint kAccounts{"/services/Accounts", "urn:telvane-accounts"};
constexpr Endpoint kReports{"/services/Reports", "urn:telvane-reports"};
constexpr Endpoint kAssets{"/services/Assets", "urn:telvane-assets"};
constexpr Endpoint kFixedAssets{"/fixed/services/Assets", "urn:telvane-assets"};
constexpr bool kKey = true, kNoKey = false;

struct Row {
  std::function<void(ZylService&)> call;  // empty: the request is the previous call's next one
  std::string op;
  // The elements after the key as "name=value", with ":type" after the name unless a string
  // and "[n]" instead of a value for arrays and structures; a value "*" is not compared.
  std::string elements;
  Endpoint endpoint = kMain;
  bool key = kKey;
};

// The operation's elements as the table writes them.
std::string elementsOf(pugi::xml_node op, bool skipKey) {
  std::string out;
  for (pugi::xml_node e = op.first_child(); e; e = e.next_sibling()) {
    if (skipKey && e == op.first_child()) continue;
    std::string type = e.attribute("XI:type").value();
    type = type.substr(type.find(':') + 1);
    out += (out.empty() ? "" : " ") + std::string(e.name()) +
           (type.empty() || type == "string" ? "" : ":" + type);
    if (e.first_child().type() == pugi::node_element || type == "Array") {
      out += "[" + std::to_string(std::distance(e.children().begin(), e.children().end())) + "]";
    } else {
      out += "=" + std::string(e.text().get());
    }
  }
  return out;
}

// `actual` with the values that `expected` leaves open replaced by "*".
std::string leavingOpen(const std::string& actual, const std::string& expected) {
  std::istringstream a(actual), e(expected);
  std::string out, x, y;
  while (a >> x) {
    if (e >> y && y.ends_with("=*") && x.starts_with(y.substr(0, y.size() - 1))) x = y;
    out += (out.empty() ? "" : " ") + x;
  }
  return out;
}

class OperationsWire : public testing::WireTest {};

TEST_F(OperationsWire, EachOperationSendsItsElementsToItsService) {
  using Z = ZylService;
  const std::string version = "clientCode=KWRB major:int=" + std::to_string(kVersionMajor) +
                              " minor:int=" + std::to_string(kVersionMinor) +
                              " revision:int=" + std::to_string(kVersionRevision);
  const std::string login = "challenge=c-1 response=* username=ann";
  const std::string kRange = "startDate:dateTime=* endDate:dateTime=*";
  const std::string kPageRange = "pageGuid=pg " + kRange;
  const std::vector<Row> rows = {
      {[](Z& s) { s.loginUnencryptedPassword("ann", "pw"); }, "getChallenge", "", kLogin, kNoKey},
      {{}, "userLogin", login, kLogin, kNoKey},
      {{}, "getVersion", "", kMain, kNoKey},
      {[](Z& s) { s.login("ann", "0cc175b9c0f1b6a831c399e269772661"); }, "getChallenge", "", kLogin,
       kNoKey},
      {{}, "userLogin", login, kLogin, kNoKey},
      {{}, "getVersion", "", kMain, kNoKey},
      {[](Z& s) { s.getAccounts(); }, "getUserAccounts", "", kLogin},
      {[](Z& s) { s.selectAccount("42"); }, "selectAccount", "account_id:int=42", kLogin},
      {[](Z& s) { s.selectAccountByGuid("g-1"); }, "selectAccountByGuid", "account_guid=g-1",
       kLogin},
      {[](Z& s) { s.isCompatible(); }, "isCompatible", version, kLogin, kNoKey},
      {[](Z& s) { s.logout(); }, "userLogout", "", kLogin},
      {[&](Z& s) { s.Ping(server.baseUrl()); }, "getVersion", "", kMain, kNoKey},
      {[](Z& s) { s.getGuid(); }, "getGuid", "", kMain, kNoKey},
      {[](Z& s) { s.getFixedUrl(); }, "getFixedUrl", "", kMain, kNoKey},
      {[](Z& s) { s.sendDebugInfo("a<b"); }, "sendClientDebugInfo", "debugInfo=a<b"},
      {[](Z& s) { s.createProject("Apollo", "R&D"); }, "createProject",
       "name=Apollo description=R&D"},
      {[](Z& s) { s.deleteProject("p-1"); }, "deleteProject",
       "projectGuid=p-1 doUndeploy:boolean=true"},
      {[](Z& s) { s.projectExists("p-1"); }, "projectExists", "projectGuid=p-1"},
      {[](Z& s) { s.hasDeployedTemplate("p-1"); }, "hasDeployedTemplate",
       "projectGuid=p-1 templateType="},
      {[](Z& s) { s.getProjectList(); }, "getProjectList_Array", ""},
      {[](Z& s) { s.getProjectList("event"); }, "getProjectListByType_Array", "type=event"},
      {[](Z& s) { s.getProjectInfo("p-1"); }, "getProjectProperties", "projectGuid=p-1"},
      {[](Z& s) { s.setProjectType("p-1", "event"); }, "setProjectType",
       "projectGuid=p-1 type=event"},
      {[](Z& s) { s.clearProject("p-1"); }, "clearProject",
       "projectGuid=p-1 doUndeploy:boolean=false"},
      {[](Z& s) { s.clearProject_Async("p-1", true); }, "clearProject_Async",
       "projectGuid=p-1 doUndeploy:boolean=true"},
      {[](Z& s) { s.undeployProject_Async("p-1"); }, "undeployProject_Async", "projectGuid=p-1"},
      // Whatever service a procGuid's code names, only its id goes, to the main service.
      {[](Z& s) { s.isProcessComplete("c-1;A"); }, "isProcessComplete", "procGuid=c-1", kMain,
       kNoKey},
      {[](Z& s) { s.getProcessPercentComplete("c-1;C"); }, "getProcessPercentComplete",
       "procGuid=c-1", kMain, kNoKey},
      {[](Z& s) { s.getProcessMessage("c-1;M;x"); }, "getProcessMessage", "procGuid=c-1", kMain,
       kNoKey},
      {[](Z& s) { s.clearProject_Result("c-1;A"); }, "clearProject_Result", "procGuid=c-1"},
      {[](Z& s) { s.undeployProject_Result("u-1;M"); }, "undeployProject_Result", "procGuid=u-1"},
      {[](Z& s) { s.hasTemplateAccess("t-1"); }, "hasTemplateAccess", "templateGuid=t-1 rights="},
      {[](Z& s) { s.getTemplateList("page", "listThings"); }, "listThings", "type=page"},
      {[](Z& s) { s.getProjectTemplateList("p-1", true); }, "getProjectTemplateList_Array",
       "projectGuid=p-1 includeDeploymentInfo:boolean=true"},
      {[](Z& s) { s.setTemplateMetadata("t-1", "<m/>"); }, "setTemplateMetadata",
       "tGuid=t-1 metadataXML=<m/>"},
      {[](Z& s) { s.templateExists("t-1"); }, "templateExists", "tGuid=t-1"},
      {[](Z& s) { s.getTemplateInfo("t-1"); }, "getTemplateInfo", "templateGuid=t-1"},
      {[](Z& s) { s.getThemeTemplateInfo("h-1", "t-1"); }, "getThemeTemplateInfo",
       "themeGuid=h-1 templateGuid=t-1"},
      {[](Z& s) { s.copyTemplate("t-1", "p-1", "Copy", true); }, "copyTemplate",
       "templateGuid=t-1 targetProjectGuid=p-1 templateName=Copy overwriteExisting:boolean=true"},
      {[](Z& s) { s.deleteTemplate("t-1"); }, "deleteTemplate",
       "templateGuid=t-1 doUndeploy:boolean=false"},
      {[](Z& s) { s.getComponents("t-1", "c-1", "Video", "Player"); }, "getComponents",
       "templateGuid=t-1 cGuid=c-1 cLabel=Video cClass=Player"},
      {[](Z& s) { s.getThemeList("event", "listThemes"); }, "listThemes", "type=event"},
      {[](Z& s) { s.getThemeInfo("h-1"); }, "getThemeInfo", "guid=h-1"},
      {[](Z& s) { s.applyTheme("h-1", "p-1"); }, "applyTheme", "themeGuid=h-1 projectGuid=p-1"},
      {[](Z& s) { s.getDeploymentInfo("t-1"); }, "getDeploymentInfo", "templateGuid=t-1"},
      {[](Z& s) { s.setDeploymentVersionDuration("v-1", 90); }, "setDeploymentVersionDuration",
       "versionGuid=v-1 duration:int=90"},
      {[](Z& s) { s.getDeploymentEnvironmentList(); }, "getDeploymentEnvironmentList_Array", ""},
      {[](Z& s) { s.setProjectDeploymentDefinition("p-1", 2); }, "setProjectDeploymentDefinition",
       "projectGuid=p-1 deploymentDefID:int=2 deploymentPath="},
      {[](Z& s) {
         s.getDeploymentStatusList({"d-1", "d-2"});
       },
       "getDeploymentStatusList_Array", "deploymentGuidList:Array[2]"},
      {[](Z& s) { s.getDataRecord({"t-1"}); }, "getDataRecord", "guid= templateGuidList:Array[1]"},
      {[](Z& s) { s.getThemeDataRecord("h-1"); }, "getThemeDataRecord", "themeGuid=h-1"},
      {[](Z& s) { s.getDataRecordEntry("t-1", "e-1", "Logo"); }, "getDataRecordEntry",
       "templateGuid=t-1 dreGuid=e-1 dreLabel=Logo"},
      {[](Z& s) {
         DataRecord r;
         r.entries = std::make_shared<Collection<DataRecordEntry>>();
         r.templateGuidList = std::make_shared<Collection<std::string>>();
         s.createDataRecord(r, "p-1", true);
       },
       "createDataRecord", "dr[5] projectGuid=p-1 overwriteExisting:boolean=true"},
      {[](Z& s) { s.setDataRecordSyncData("r-1", "t-1", "<s/>"); }, "setDataRecordSyncData",
       "drGuid=r-1 templateGuid=t-1 syncXML=<s/>"},
      {[](Z& s) {
         s.Deploy({"r-1"}, {"t-1", "t-2"});
       },
       "deploy", "datarecordGuidList:Array[1] templateGuidList:Array[2]"},
      {[](Z& s) { s.addAsset("<ASSET/>"); }, "addAsset_XML",
       "xmlData=<ASSET/> sourceSystem=", kAssets, kNoKey},
      {[](Z& s) { s.addAsset("<A/>", s.baseUrl() + "/fixed"); }, "addAsset_XML",
       "xmlData=<A/> sourceSystem=", kFixedAssets, kNoKey},
      {[](Z& s) {
         s.makeUnmanagedAssetRemoveable("a-1", {"t1", "t2"});
       },
       "makeUnmanagedAssetRemoveable", "assetGuid=a-1 timedDataList:Array[2]", kAssets, kNoKey},
      {[](Z& s) { s.getAssetFolderXML(3); }, "getFolder_XML", "folderID:int=3", kAssets, kNoKey},
      {[](Z& s) { s.createAssetFolder("a/b"); }, "createFolder", "folderPath=a/b", kAssets, kNoKey},
      {[](Z& s) { s.getAssetFolderRights(-2); }, "getFolderRights", "folderID:int=-2", kAssets,
       kNoKey},
      {[](Z& s) { s.createChildAssetFolder(3, "c"); }, "createChildFolder",
       "parentID:int=3 folderPath=c", kAssets, kNoKey},
      {[](Z& s) { s.deleteAssetFolder(3); }, "deleteFolder", "folderID:int=3", kAssets, kNoKey},
      {[](Z& s) { s.clearAssetFolder_Async(3); }, "clearFolder_Async", "folderID:int=3", kAssets,
       kNoKey},
      {[](Z& s) { s.clearAssetFolder(3); }, "clearFolder", "folderID:int=3", kAssets, kNoKey},
      {[](Z& s) { s.setAssetFolderMetadata(3, "<m/>"); }, "setFolderMetadata",
       "folderID:int=3 metadataXML=<m/> sourceSystem=", kAssets, kNoKey},
      {[](Z& s) { s.getAssetFolderTree(0); }, "getFolderTree", "folderID:int=0", kAssets, kNoKey},
      {[](Z& s) { s.getFolderAssets(3); }, "getAssets",
       "folderID:int=3 assetTypeID:int=0 fileTypeID:int=0 assetWidth:int=0 assetHeight:int=0 "
       "sExtension= searchFor= searchBy= searchExact:boolean=false sortBy=",
       kAssets, kNoKey},
      {[](Z& s) { s.getAssets(3, 1, 2, 640, 480, "mp4", "talk", "name", true, "created"); },
       "getAssets",
       "folderID:int=3 assetTypeID:int=1 fileTypeID:int=2 assetWidth:int=640 "
       "assetHeight:int=480 sExtension=mp4 searchFor=talk searchBy=name "
       "searchExact:boolean=true sortBy=created",
       kAssets, kNoKey},
      {[](Z& s) { s.getAssetsByName("Logo"); }, "getAssetsByName", "name=Logo folderID:int=0",
       kAssets, kNoKey},
      {[](Z& s) { s.deleteAsset("a-1"); }, "deleteAsset", "assetGuid=a-1", kAssets, kNoKey},
      {[](Z& s) { s.getAssetPreviewUrl("a-1", 7); }, "getAssetPreviewUrl", "assetGuid=a-1", kAssets,
       kNoKey},
      {[](Z& s) { s.createUserAccount("Ann", "Lee", "ann@x", "pw"); }, "createUserAccount",
       "firstName=Ann lastName=Lee email=ann@x password=pw", kAccounts, kNoKey},
      {[](Z& s) { s.createUserInAccount("K1", "Ann", "Lee", "ann@x", "pw", "admin"); },
       "createUserInAccount",
       "accountKey=K1 firstName=Ann lastName=Lee email=ann@x password=pw accountType=admin",
       kAccounts, kNoKey},
      {[](Z& s) { s.sendEmail("bo@x", "Hi", "Body"); }, "sendEmail", "to=bo@x subject=Hi msg=Body"},
      {[](Z& s) { s.terminateUserAccount_Async(); }, "terminateUserAccount_Async", "", kAccounts},
      {[](Z& s) { s.terminateUserAccount_Result("p-1;M"); }, "terminateUserAccount_Result",
       "procGuid=p-1", kAccounts},
      {[](Z& s) { s.getRegistrationList("p-1"); }, "getRegistrationList_Array",
       "projectGuid=p-1 maxRecords:int=0 sortBy="},
      {[](Z& s) { s.addRegisteredUser("p-1", "", "c@x", "C", "D", "pw"); }, "addRegisteredUser",
       "projectGuid=p-1 userGuid= email=c@x firstName=C lastName=D password=pw customXML= "
       "userIP= userHostName="},
      {[](Z& s) { s.deleteRegisteredUser("p-1", "", "c@x"); }, "deleteRegisteredUser",
       "projectGuid=p-1 userGuid= email=c@x"},
      {[](Z& s) { s.updateRegisteredUserPassword("p-1", "u-1", "", "pw2"); },
       "updateRegisteredUserPassword", "projectGuid=p-1 userGuid=u-1 email= password=pw2"},
      {[](Z& s) { s.updateRegisteredUserName("p-1", "u-1", "", "E", "F"); },
       "updateRegisteredUserName", "projectGuid=p-1 userGuid=u-1 email= firstName=E lastName=F"},
      {[](Z& s) { s.updateRegisteredUserCustomXML("p-1", "", "c@x", "<x/>"); },
       "updateRegisteredUserCustomXML", "projectGuid=p-1 userGuid= email=c@x customXML=<x/>"},
      {[](Z& s) { s.initiateServiceOrder(); }, "initiateServiceOrder", "", kAccounts},
      {[](Z& s) { s.getAccountName("K1"); }, "getAccountNameFromKey", "accountKey=K1", kAccounts,
       kNoKey},
      {[](Z& s) { s.isUserAccountValid("K1", "ann@x", "pw"); }, "isUserAccountValid",
       "accountKey=K1 email=ann@x passwordHash=" + testing::md5(testing::md5("pw") + "ann@xK1"),
       kAccounts, kNoKey},
      {[](Z& s) { s.changeUserPassword("pw2"); }, "changeUserPassword",
       "passwordHash=" + testing::md5("pw2"), kAccounts},
      {[](Z& s) { s.areDeploymentsDisabled(); }, "areDeploymentsDisabled", "", kAccounts},
      {[](Z& s) { s.getQuotaList(); }, "getQuotaList_Array", "excludeProjectGuid=", kAccounts},
      {[](Z& s) { s.getServiceOrderPeriod("disk"); }, "getServiceOrderPeriod", "quotaType=disk",
       kAccounts},
      {[](Z& s) { s.getReport("anyReport", "pg"); }, "anyReport", kPageRange, kReports, kNoKey},
      {[](Z& s) { s.getTotalPageHits("pg"); }, "getTotalPageHits", kPageRange, kReports, kNoKey},
      {[](Z& s) { s.getTotalPageViewTime("pg"); }, "getTotalPageViewTime", kPageRange, kReports,
       kNoKey},
      {[](Z& s) { s.getLimitedPageViewTime("pg", {}, {}, true); }, "getLimitedPageViewTime",
       kPageRange + " useDurationOnly:boolean=true", kReports, kNoKey},
      {[](Z& s) { s.getLimitedUserViewerTime("event", "page"); }, "getLimitedUserViewerTime",
       kRange + " projectType=event templateType=page", kReports, kNoKey},
      {[](Z& s) { s.getUserStorageUsed("event", "page"); }, "getUserStorageUsed",
       "projectType=event templateType=page", kReports, kNoKey},
      {[](Z& s) { s.getTotalParticipants("pg"); }, "getTotalParticipants", kPageRange, kReports,
       kNoKey},
      {[](Z& s) { s.getTotalNonparticipants("pg"); }, "getTotalNonparticipants", kPageRange,
       kReports, kNoKey},
      {[](Z& s) { s.getTotalParticipantRegistrants("pg"); }, "getTotalParticipantRegistrants",
       kPageRange, kReports, kNoKey},
      {[](Z& s) { s.getTotalRegistrants("pg"); }, "getTotalRegistrants", "pageGuid=pg", kReports,
       kNoKey},
      {[](Z& s) { s.getUniquePageHits("pg", {}, {}, "country", "=", "NZ"); }, "getUniquePageHits",
       kPageRange + " filter=country filterOperator== filterValue=NZ", kReports, kNoKey},
      {[](Z& s) { s.getPageHitList("pg"); }, "getPageHitList_Array", kPageRange, kReports, kNoKey},
      {[](Z& s) { s.getParticipantList("pg"); }, "getParticipantList_Array", kPageRange, kReports,
       kNoKey},
      {[](Z& s) { s.getRegistrantList("pg"); }, "getRegistrantList_Array", kPageRange, kReports,
       kNoKey},
      {[](Z& s) { s.getPollSummaryResults("pg"); }, "getPollSummaryResults_Array", "pageGuid=pg",
       kReports, kNoKey},
      {[](Z& s) { s.getPollResponses("pg"); }, "getPollResponseList_Array", "pageGuid=pg", kReports,
       kNoKey},
      {[](Z& s) { s.getSurveyList("pg"); }, "getSurveyList_Array", "pageGuid=pg", kReports, kNoKey},
      {[](Z& s) { s.getSurveySummary("pg", "sv"); }, "getSurveySummary",
       "pageGuid=pg surveyGuid=sv", kReports, kNoKey},
      {[](Z& s) { s.getSurveyResponses("pg", "sv"); }, "getSurveyResponseList_Array",
       "pageGuid=pg surveyGuid=sv", kReports, kNoKey},
      {[](Z& s) { s.getQAList("pg"); }, "getQAList_Array", kPageRange, kReports, kNoKey},
      {[](Z& s) { s.updateQAItem("q-1", "Yes"); }, "updateQAItem",
       "guid=q-1 answer=Yes question= name= location=", kReports, kNoKey},
      {[](Z& s) { s.updateQAItemStatus("q-1", "answered"); }, "updateQAItemStatus",
       "guid=q-1 status=answered", kReports, kNoKey},
  };

  for (const Row& row : rows) {
    const char* value = row.op == "getChallenge" ? "c-1"
                        : row.op == "userLogin"  ? "tok"
                        : row.op == "getVersion" ? "3.2.4.60"
                                                 : "true";
    answerScalar(row.op, value);
  }
  for (const Row& row : rows) {
    if (row.call) row.call(service);
  }

  const auto requests = server.requests();
  EXPECT_EQ(requests.size(), rows.size());
  const std::regex key("tok:([0-9]+):[0-9a-f]{32}");
  int lastCounter = 0;
  for (size_t i = 0; i < std::min(requests.size(), rows.size()); ++i) {
    const Row& row = rows[i];
    const testing::RecordedRequest& request = requests[i];
    SCOPED_TRACE(row.op);
    EXPECT_EQ(request.target, row.endpoint.path);
    EXPECT_EQ(request.header("SOAPAction"), "\"" + std::string(row.endpoint.action) + "\"");
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(request.body.c_str()));
    EXPECT_STREQ(document.document_element().attribute("xmlns:a").value(), row.endpoint.action);
    const pugi::xml_node op = document.document_element().child("S:Body").first_child();
    EXPECT_EQ(op.name(), "a:" + row.op);
    const pugi::xml_node first = op.first_child();
    EXPECT_EQ(std::string_view(first.name()) == "key", row.key);
    if (row.key) {
      // Each key is new: its counter only goes up.
      std::cmatch match;
      ASSERT_TRUE(std::regex_match(first.text().get(), match, key)) << first.text().get();
      EXPECT_GT(std::stoi(match[1]), lastCounter);
      lastCounter = std::stoi(match[1]);
    }
    EXPECT_EQ(leavingOpen(elementsOf(op, row.key), row.elements), row.elements);
  }
  EXPECT_TRUE(host->boxes.empty());
}

}  // namespace
}  // namespace brenmoor
