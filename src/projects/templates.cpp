// Template, theme and component operations.

#include "brenmoor/zyl_service.h"
#include "projects/deployment_info.h"
#include "service/call.h"

namespace brenmoor {

using namespace service;

namespace {

using TemplateList = std::shared_ptr<Collection<TemplateInfo>>;

// These answers may leave out any field; their dates count only when typed.
Fields lenient(const Fields& answer) {
  return answer.reading(Fields::Missing::KeepsDefault, Fields::Dates::OnlyTyped);
}

void readTemplateInfo(const Fields& answer, TemplateInfo& t) {
  const auto in = lenient(answer);
  in("created", t.created);
  if (auto deployment = in.child("deploymentInfo")) {
    t.DeploymentInfo = record<DeploymentInfo, projects::readDeploymentInfo>(*deployment);
  }
  in("description", t.description);
  in("flags", t.flags);
  in("folderName", t.folderName);
  in("guid", t.guid);
  in("height", t.height);
  in("iconUrl", t.iconUrl);
  in("liveType", t.liveType);
  in("modified", t.modified);
  in("name", t.name);
  in("type", t.templateType);
  in("width", t.width);
  in("metadataXML", t.metadataXML);
}

void readThemeTemplate(const Fields& in, ThemeTemplate& t) {
  in("templateGuid", t.templateGuid);
  in("required", t.required);
}

void readThemeInfo(const Fields& answer, ThemeInfo& t) {
  const auto in = lenient(answer);
  in("created", t.created);
  in("modified", t.modified);
  in("name", t.name);
  in("description", t.description);
  in("guid", t.guid);
  in("width", t.width);
  in("height", t.height);
  in("smIconUrl", t.smIconUrl);
  in("lgIconUrl", t.lgIconUrl);
  if (auto list = in.child("themeTemplateList")) {
    t.themeTemplateList = listOf<ThemeTemplate, readThemeTemplate>(*list);
  }
}

void readProperty(const Fields& in, Property& p) {
  in("assetDependencies", p.assetDependencies);
  in("assetID", p.assetID);
  in("manageable", p.manageable);
  in("name", p.name);
  in("value", p.value);
  in("manageid", p.manageid);
}

void readComponent(const Fields& answer, Component& c) {
  const auto in = lenient(answer);
  in("guid", c.guid);
  in("label", c.label);
  in("className", c.className);
  if (auto list = in.child("properties")) c.properties = listOf<Property, readProperty>(*list);
}

constexpr auto kHasTemplateAccess = Operation<bool>("hasTemplateAccess", Service::Main)
                                        .sends("templateGuid", "rights")
                                        .reads(asBool);
// The service names its list operations; the caller says which one.
constexpr auto kGetTemplateList = Operation<TemplateList>("", Service::Main)
                                      .sends("type")
                                      .reads(listOf<TemplateInfo, readTemplateInfo>);
constexpr auto kGetProjectTemplateList =
    Operation<TemplateList>("getProjectTemplateList_Array", Service::Main)
        .sends("projectGuid", "includeDeploymentInfo")
        .reads(listOf<TemplateInfo, readTemplateInfo>);
constexpr auto kSetTemplateMetadata = Operation<bool>("setTemplateMetadata", Service::Main)
                                          .sends("tGuid", "metadataXML")
                                          .trueWhenAnswered();
constexpr auto kTemplateExists =
    Operation<bool>("templateExists", Service::Main).sends("tGuid").reads(asBool);
constexpr auto kGetTemplateInfo =
    Operation<std::shared_ptr<TemplateInfo>>("getTemplateInfo", Service::Main)
        .sends("templateGuid")
        .reads(record<TemplateInfo, readTemplateInfo>)
        .alerts(FaultAlert::silent());
constexpr auto kGetThemeTemplateInfo =
    Operation<std::shared_ptr<TemplateInfo>>("getThemeTemplateInfo", Service::Main)
        .sends("themeGuid", "templateGuid")
        .reads(record<TemplateInfo, readTemplateInfo>)
        .alerts(FaultAlert::silent());
constexpr auto kCopyTemplate =
    Operation<std::string>("copyTemplate", Service::Main)
        .sends("templateGuid", "targetProjectGuid", "templateName", "overwriteExisting")
        .timeout(kLongTimeoutMs)
        .reads(asText);
constexpr auto kDeleteTemplate = Operation<std::string>("deleteTemplate", Service::Main)
                                     .sends("templateGuid", "doUndeploy")
                                     .reads(asText);
constexpr auto kGetComponents =
    Operation<std::shared_ptr<Collection<Component>>>("getComponents", Service::Main)
        .sends("templateGuid", "cGuid", "cLabel", "cClass")
        .reads(listOf<Component, readComponent>);
constexpr auto kGetThemeList = Operation<std::shared_ptr<Collection<ThemeInfo>>>("", Service::Main)
                                   .sends("type")
                                   .reads(listOf<ThemeInfo, readThemeInfo>);
constexpr auto kGetThemeInfo = Operation<std::shared_ptr<ThemeInfo>>("getThemeInfo", Service::Main)
                                   .sends("guid")
                                   .reads(record<ThemeInfo, readThemeInfo>);
constexpr auto kApplyTheme = Operation<bool>("applyTheme", Service::Main)
                                 .sends("themeGuid", "projectGuid")
                                 .timeout(kLongTimeoutMs)
                                 .reads(asBool);

}  // namespace

bool ZylService::hasTemplateAccess(const std::string& templateGuid, const std::string& rights) {
  return kHasTemplateAccess(*state_, templateGuid, rights);
}

std::shared_ptr<Collection<TemplateInfo>> ZylService::getTemplateList(
    const std::string& tType, const std::string& methodStr) {
  return kGetTemplateList.named(methodStr)(*state_, tType);
}

std::shared_ptr<Collection<TemplateInfo>> ZylService::getProjectTemplateList(
    const std::string& projectGuid, bool includeDeploymentInfo) {
  return kGetProjectTemplateList(*state_, projectGuid, includeDeploymentInfo);
}

bool ZylService::setTemplateMetadata(const std::string& templateGuid,
                                     const std::string& metadataXML) {
  return kSetTemplateMetadata(*state_, templateGuid, metadataXML);
}

bool ZylService::templateExists(const std::string& templateGuid) {
  return kTemplateExists(*state_, templateGuid);
}

std::shared_ptr<TemplateInfo> ZylService::getTemplateInfo(const std::string& templateGuid) {
  return kGetTemplateInfo(*state_, templateGuid);
}

std::shared_ptr<TemplateInfo> ZylService::getThemeTemplateInfo(const std::string& themeGuid,
                                                               const std::string& templateGuid) {
  return kGetThemeTemplateInfo(*state_, themeGuid, templateGuid);
}

std::string ZylService::copyTemplate(const std::string& templateGuid,
                                     const std::string& projectGuid,
                                     const std::string& templateName, bool overwriteExisting) {
  return kCopyTemplate(*state_, templateGuid, projectGuid, templateName, overwriteExisting);
}

std::string ZylService::deleteTemplate(const std::string& templateGuid, bool undeploy) {
  return kDeleteTemplate(*state_, templateGuid, undeploy);
}

std::shared_ptr<Collection<Component>> ZylService::getComponents(
    const std::string& templateGuid, const std::string& componentGuid,
    const std::string& componentLabel, const std::string& componentClass) {
  return kGetComponents(*state_, templateGuid, componentGuid, componentLabel, componentClass);
}

std::shared_ptr<Collection<ThemeInfo>> ZylService::getThemeList(const std::string& typeStr,
                                                                const std::string& methodStr) {
  return kGetThemeList.named(methodStr)(*state_, typeStr);
}

std::shared_ptr<ThemeInfo> ZylService::getThemeInfo(const std::string& guid) {
  return kGetThemeInfo(*state_, guid);
}

bool ZylService::applyTheme(const std::string& themeGuid, const std::string& projectGuid) {
  return kApplyTheme(*state_, themeGuid, projectGuid);
}

}  // namespace brenmoor
