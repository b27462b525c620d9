#include "services/record_types.h"

namespace sandbox {
namespace {

// Kept beside the code that fills the records (store/*, services/*): the sandbox tests call
// every operation and read each record it answers against these, and zeep reads the
// project list through them.
constexpr RecordType kRecordTypes[] = {
    {"UserAccountInfo", "accountID:int accountName"},
    {"ProjectInfo",
     "created:dateTime creator deploymentDefID:int deploymentPath description eventEnd:dateTime "
     "eventStart:dateTime guid linkedProjectGuid linkedProjectName modified:dateTime name notes "
     "typeID hasDeployedTemplate:boolean"},
    {"TemplateInfo",
     "created:dateTime modified:dateTime deploymentInfo:DeploymentInfo description flags "
     "folderName guid height:int iconUrl liveType:int name type width:int metadataXML"},
    {"DeploymentInfo",
     "deployed:boolean deploymentDate:dateTime height:int width:int liveEnabled:boolean loginFlag "
     "loginUrl name versionGuid deploymentGuid link duration:int size:int"},
    {"DeploymentStatusInfo", "versionGuid state progress"},
    {"DeploymentEnvironmentInfo", "id:int name mustUsePath:boolean"},
    {"ThemeInfo",
     "created:dateTime modified:dateTime name description guid width:int height:int smIconUrl "
     "lgIconUrl themeTemplateList:ThemeTemplate[]"},
    {"ThemeTemplate", "templateGuid required:boolean"},
    {"Component", "className guid label properties:Property[]"},
    {"Property", "assetDependencies assetID manageable:boolean manageid name value"},
    {"DataRecord", "guid name entries:DataRecordEntry[] templateGuidList:string[] assets:string[]"},
    {"DataRecordEntry",
     "guidList:string[] label description type ext format escaped:boolean hidden:boolean "
     "value:DataRecordEntryValue src buttonText width:short height:short"},
    {"DataRecordEntryValue", "value assetGuid assetDependencies"},
    {"Client",
     "created:dateTime customXML details:ClientDetails email firstName guid lastName "
     "modified:dateTime password registered:boolean userHostName userIP"},
    {"ClientDetails",
     "bandwidth:int browserType browserVersion:int country firstAccessed:dateTime guid "
     "hasCookies:boolean hasFlash:boolean hasJava:boolean hasReal:boolean hasWM:boolean ipAddress "
     "jsVersionMajor:int jsVersionMinor:int language operatingSystem screenDepth:int "
     "screenHeight:int screenWidth:int"},
    {"PageHitInfo", "client:Client closed:boolean pagehitDate:dateTime timeSpent:int"},
    {"PageViewerInfo",
     "client:Client firstViewed:dateTime lastViewed:dateTime participated:boolean "
     "registered:boolean totalTimeOnPage:int"},
    {"PollQuestion", "answers:PollAnswer[] guid questionTxt responseCount:int"},
    {"PollAnswer", "answerID:int answerTxt count:int"},
    {"PollResponse", "answerGuid responseDt:dateTime userGuid pollGuid"},
    {"Survey", "guid name questions:SurveyQuestion[]"},
    {"SurveyQuestion",
     "answers:SurveyAnswer[] colCount:int nonresponseCount:int questionTxt questionType:int "
     "responseCount:int rowCount:int seqNo:int"},
    {"SurveyAnswer", "answerTxt answerType:int col:int correct:boolean count:int guid row:int"},
    {"SurveyResponse", "answerGuid answerTxt guid questionGuid responseDt:dateTime userGuid"},
    {"QAItem",
     "answerDt:dateTime answerTxt category client:Client guid location name questionDt:dateTime "
     "questionTxt status submitterHostname submitterIP"},
    {"Asset", "guid name description thumbnail created:dateTime typeIcon typeText"},
    {"FolderNode", "id:short parentID:short name parentCount:short rights"},
    {"Quota", "guid name type failAction limit:double used:double units defaultLimit:boolean"},
};

}  // namespace

std::span<const RecordType> record_types() {
  return kRecordTypes;
}

}  // namespace sandbox
