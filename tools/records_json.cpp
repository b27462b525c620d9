#include "records_json.h"

namespace brenmoor::cli {
namespace {

using nlohmann::json;

json value(const std::string& text) {
  return text;
}
json value(const Date& date) {
  return date.toString();
}
json value(bool flag) {
  return flag;
}
json value(int16_t number) {
  return number;
}
json value(int32_t number) {
  return number;
}
json value(double number) {
  return number;
}
json value(const std::vector<std::string>& texts) {
  return texts;
}
json value(const std::shared_ptr<Collection<std::string>>& texts) {
  auto array = json::array();
  if (texts) {
    for (const auto& text : *texts) array.push_back(text);
  }
  return array;
}
json value(const ThemeTemplate& item);
json value(const DataRecordEntry& entry);
json value(const DataRecordEntryValue& entryValue);
json value(const ClientDetails& details);
json value(const Client& client) {
  return toJson(client);
}
json value(const PollAnswer& answer);
json value(const SurveyAnswer& answer);
json value(const SurveyQuestion& question);
json value(const SurveyResponse& response);
json value(const DeploymentInfo& deployment) {
  return toJson(deployment);
}
template <class Record>
json value(const std::shared_ptr<Collection<Record>>& items) {
  auto array = json::array();
  if (items) {
    for (const auto& item : *items) array.push_back(value(*item));
  }
  return array;
}
template <class Record>
json value(const std::shared_ptr<Record>& record) {
  return record ? value(*record) : json(nullptr);
}
// Builds an object property by property.
class Object {
 public:
  template <class T>
  Object& add(const char* name, const Field<T>& field) {
    object_[name] = value(field());
    return *this;
  }
  template <class T>
  Object& add(const char* name, const FlaggedField<T>& field) {
    if (field.occurs()) object_[name] = value(field());
    return *this;
  }
  json done() { return std::move(object_); }

 private:
  json object_ = json::object();
};

json value(const ThemeTemplate& item) {
  return Object().add("required", item.required).add("templateGuid", item.templateGuid).done();
}

json value(const DataRecordEntryValue& entryValue) {
  return Object()
      .add("value", entryValue.value)
      .add("valueArray", entryValue.valueArray)
      .add("assetGuid", entryValue.assetGuid)
      .add("assetDependencies", entryValue.assetDependencies)
      .done();
}

json value(const DataRecordEntry& entry) {
  return Object()
      .add("buttonText", entry.buttonText)
      .add("description", entry.description)
      .add("escaped", entry.escaped)
      .add("ext", entry.ext)
      .add("format", entry.format)
      .add("guidList", entry.guidList)
      .add("hidden", entry.hidden)
      .add("label", entry.label)
      .add("src", entry.src)
      .add("typeName", entry.typeName)
      .add("value", entry.value)
      .add("width", entry.width)
      .add("height", entry.height)
      .done();
}

json value(const ClientDetails& details) {
  return Object()
      .add("bandwidth", details.bandwidth)
      .add("browserType", details.browserType)
      .add("browserVersion", details.browserVersion)
      .add("country", details.country)
      .add("firstAccessed", details.firstAccessed)
      .add("guid", details.guid)
      .add("hasCookies", details.hasCookies)
      .add("hasFlash", details.hasFlash)
      .add("hasJava", details.hasJava)
      .add("hasReal", details.hasReal)
      .add("hasWM", details.hasWM)
      .add("ipAddress", details.ipAddress)
      .add("jsVersionMajor", details.jsVersionMajor)
      .add("jsVersionMinor", details.jsVersionMinor)
      .add("language", details.language)
      .add("operatingSystem", details.operatingSystem)
      .add("screenDepth", details.screenDepth)
      .add("screenHeight", details.screenHeight)
      .add("screenWidth", details.screenWidth)
      .done();
}

json value(const PollAnswer& answer) {
  return Object()
      .add("answerID", answer.answerID)
      .add("answerTxt", answer.answerTxt)
      .add("count", answer.count)
      .done();
}

json value(const SurveyAnswer& answer) {
  return Object()
      .add("answerTxt", answer.answerTxt)
      .add("answerType", answer.answerType)
      .add("col", answer.col)
      .add("correct", answer.correct)
      .add("count", answer.count)
      .add("guid", answer.guid)
      .add("row", answer.row)
      .done();
}

json value(const SurveyQuestion& question) {
  return Object()
      .add("answers", question.answers)
      .add("colCount", question.colCount)
      .add("guid", question.guid)
      .add("nonresponseCount", question.nonresponseCount)
      .add("questionTxt", question.questionTxt)
      .add("questionType", question.questionType)
      .add("responseCount", question.responseCount)
      .add("rowCount", question.rowCount)
      .add("seqNo", question.seqNo)
      .done();
}

json value(const SurveyResponse& response) {
  return Object()
      .add("answerGuid", response.answerGuid)
      .add("answerTxt", response.answerTxt)
      .add("guid", response.guid)
      .add("questionGuid", response.questionGuid)
      .add("responseDt", response.responseDt)
      .add("userGuid", response.userGuid)
      .done();
}

}  // namespace

json toJson(const UserAccountInfo& account) {
  return Object()
      .add("SSLDisabled", account.SSLDisabled)
      .add("SSLOptional", account.SSLOptional)
      .add("SSLRequired", account.SSLRequired)
      .add("accountID", account.accountID)
      .add("accountName", account.accountName)
      .add("hasReadTerms", account.hasReadTerms)
      .add("trialAccount", account.trialAccount)
      .done();
}

json toJson(const ProjectInfo& project) {
  return Object()
      .add("created", project.created)
      .add("creator", project.creator)
      .add("deploymentDefID", project.deploymentDefID)
      .add("deploymentPath", project.deploymentPath)
      .add("description", project.description)
      .add("eventEnd", project.eventEnd)
      .add("eventStart", project.eventStart)
      .add("guid", project.guid)
      .add("linkedProjectGuid", project.linkedProjectGuid)
      .add("linkedProjectName", project.linkedProjectName)
      .add("modified", project.modified)
      .add("name", project.name)
      .add("notes", project.notes)
      .add("typeID", project.typeID)
      .add("hasDeployedTemplate", project.hasDeployedTemplate)
      .done();
}

json toJson(const TemplateInfo& info) {
  return Object()
      .add("created", info.created)
      .add("DeploymentInfo", info.DeploymentInfo)
      .add("description", info.description)
      .add("flags", info.flags)
      .add("folderName", info.folderName)
      .add("guid", info.guid)
      .add("height", info.height)
      .add("iconUrl", info.iconUrl)
      .add("liveType", info.liveType)
      .add("modified", info.modified)
      .add("name", info.name)
      .add("templateType", info.templateType)
      .add("width", info.width)
      .add("metadataXML", info.metadataXML)
      .done();
}

json toJson(const ThemeInfo& theme) {
  return Object()
      .add("created", theme.created)
      .add("description", theme.description)
      .add("guid", theme.guid)
      .add("height", theme.height)
      .add("lgIconUrl", theme.lgIconUrl)
      .add("modified", theme.modified)
      .add("name", theme.name)
      .add("smIconUrl", theme.smIconUrl)
      .add("themeTemplateList", theme.themeTemplateList)
      .add("width", theme.width)
      .done();
}

json toJson(const DeploymentInfo& deployment) {
  return Object()
      .add("deployed", deployment.deployed)
      .add("deploymentDate", deployment.deploymentDate)
      .add("deploymentGuid", deployment.deploymentGuid)
      .add("duration", deployment.duration)
      .add("height", deployment.height)
      .add("link", deployment.link)
      .add("liveEnabled", deployment.liveEnabled)
      .add("loginFlag", deployment.loginFlag)
      .add("loginUrl", deployment.loginUrl)
      .add("name", deployment.name)
      .add("versionGuid", deployment.versionGuid)
      .add("width", deployment.width)
      .add("size", deployment.size)
      .done();
}

json toJson(const DataRecord& record) {
  return Object()
      .add("guid", record.guid)
      .add("assets", record.assets)
      .add("name", record.name)
      .add("entries", record.entries)
      .add("templateGuidList", record.templateGuidList)
      .done();
}

json toJson(const ZylAsset& asset) {
  return Object()
      .add("guid", asset.guid)
      .add("name", asset.name)
      .add("description", asset.description)
      .add("thumbnail", asset.thumbnail)
      .add("created", asset.created)
      .add("typeIcon", asset.typeIcon)
      .add("typeText", asset.typeText)
      .done();
}

json toJson(const ZylFolderNode& folder) {
  return Object()
      .add("id", folder.id)
      .add("parentID", folder.parentID)
      .add("name", folder.name)
      .add("parentCount", folder.parentCount)
      .add("rights", folder.rights)
      .done();
}

json toJson(const Client& client) {
  return Object()
      .add("created", client.created)
      .add("customXML", client.customXML)
      .add("details", client.details)
      .add("email", client.email)
      .add("firstName", client.firstName)
      .add("guid", client.guid)
      .add("lastName", client.lastName)
      .add("modified", client.modified)
      .add("Password", client.Password)
      .add("registered", client.registered)
      .add("userHostName", client.userHostName)
      .add("userIP", client.userIP)
      .done();
}

json toJson(const Quota& quota) {
  return Object()
      .add("name", quota.name)
      .add("units", quota.units)
      .add("quotatype", quota.quotatype)
      .add("limit", quota.limit)
      .add("guid", quota.guid)
      .add("failAction", quota.failAction)
      .add("used", quota.used)
      .add("defaultLimit", quota.defaultLimit)
      .done();
}

json toJson(const PageHitInfo& hit) {
  return Object()
      .add("Client", hit.Client)
      .add("closed", hit.closed)
      .add("pagehitDate", hit.pagehitDate)
      .add("timeSpent", hit.timeSpent)
      .done();
}

json toJson(const PageViewerInfo& viewer) {
  return Object()
      .add("Client", viewer.Client)
      .add("firstViewed", viewer.firstViewed)
      .add("lastViewed", viewer.lastViewed)
      .add("participated", viewer.participated)
      .add("registered", viewer.registered)
      .add("totalTimeOnPage", viewer.totalTimeOnPage)
      .done();
}

json toJson(const PollQuestion& question) {
  return Object()
      .add("answers", question.answers)
      .add("guid", question.guid)
      .add("questionTxt", question.questionTxt)
      .add("responseCount", question.responseCount)
      .done();
}

json toJson(const Survey& survey) {
  return Object()
      .add("guid", survey.guid)
      .add("name", survey.name)
      .add("questions", survey.questions)
      .add("responses", survey.responses)
      .done();
}

json toJson(const QAItem& item) {
  return Object()
      .add("answerDt", item.answerDt)
      .add("answerTxt", item.answerTxt)
      .add("category", item.category)
      .add("Client", item.Client)
      .add("guid", item.guid)
      .add("location", item.location)
      .add("name", item.name)
      .add("questionDt", item.questionDt)
      .add("questionTxt", item.questionTxt)
      .add("status", item.status)
      .add("submitterHostname", item.submitterHostname)
      .add("submitterIP", item.submitterIP)
      .done();
}

}  // namespace brenmoor::cli
