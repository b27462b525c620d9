// Template, theme and component operations.

#include "brenmoor/zyl_service.h"
#include "projects/deployment_info.h"
#include "service/call.h"
#include "util/record_reader.h"

namespace brenmoor {

using service::Elements;
using service::kLongTimeoutMs;
using service::Operation;
using soap::Service;
using util::RecordReader;

namespace {

constexpr Operation kHasTemplateAccess{"hasTemplateAccess", Service::Main};
constexpr Operation kGetProjectTemplateList{"getProjectTemplateList_Array", Service::Main};
constexpr Operation kSetTemplateMetadata{"setTemplateMetadata", Service::Main};
constexpr Operation kTemplateExists{"templateExists", Service::Main};
constexpr Operation kGetTemplateInfo{"getTemplateInfo", Service::Main};
constexpr Operation kGetThemeTemplateInfo{"getThemeTemplateInfo", Service::Main};
constexpr Operation kCopyTemplate{"copyTemplate", Service::Main, service::Key::Sent,
                                  kLongTimeoutMs};
constexpr Operation kDeleteTemplate{"deleteTemplate", Service::Main};
constexpr Operation kGetComponents{"getComponents", Service::Main};
constexpr Operation kGetThemeInfo{"getThemeInfo", Service::Main};
constexpr Operation kApplyTheme{"applyTheme", Service::Main, service::Key::Sent, kLongTimeoutMs};

constexpr auto kLenient = RecordReader::Missing::KeepsDefault;
constexpr auto kTypedDates = RecordReader::Dates::OnlyTyped;

std::shared_ptr<TemplateInfo> readTemplateInfo(const soap::Node& node) {
  auto t = std::make_shared<TemplateInfo>();
  RecordReader in(node, kLenient, kTypedDates);
  in("created", t->created);
  if (const soap::Node* deployment = node.child("deploymentInfo")) {
    auto info = std::make_shared<DeploymentInfo>();
    projects::readDeploymentInfo(*deployment, *info);
    t->DeploymentInfo = info;
  }
  in("description", t->description);
  in("flags", t->flags);
  in("folderName", t->folderName);
  in("guid", t->guid);
  in("height", t->height);
  in("iconUrl", t->iconUrl);
  in("liveType", t->liveType);
  in("modified", t->modified);
  in("name", t->name);
  in("type", t->templateType);
  in("width", t->width);
  in("metadataXML", t->metadataXML);
  return t;
}

std::shared_ptr<ThemeInfo> readThemeInfo(const soap::Node& node) {
  auto t = std::make_shared<ThemeInfo>();
  RecordReader in(node, kLenient, kTypedDates);
  in("created", t->created);
  in("modified", t->modified);
  in("name", t->name);
  in("description", t->description);
  in("guid", t->guid);
  in("width", t->width);
  in("height", t->height);
  in("smIconUrl", t->smIconUrl);
  in("lgIconUrl", t->lgIconUrl);
  if (const soap::Node* list = node.child("themeTemplateList")) {
    t->themeTemplateList = util::readList<ThemeTemplate>(*list, [](const soap::Node& item) {
      auto tt = std::make_shared<ThemeTemplate>();
      RecordReader of(item, kLenient);
      of("templateGuid", tt->templateGuid);
      of("required", tt->required);
      return tt;
    });
  }
  return t;
}

std::shared_ptr<Property> readProperty(const soap::Node& node) {
  auto p = std::make_shared<Property>();
  RecordReader in(node, kLenient);
  in("assetDependencies", p->assetDependencies);
  in("assetID", p->assetID);
  in("manageable", p->manageable);
  in("name", p->name);
  in("value", p->value);
  in("manageid", p->manageid);
  return p;
}

std::shared_ptr<Component> readComponent(const soap::Node& node) {
  auto c = std::make_shared<Component>();
  RecordReader in(node, kLenient);
  in("guid", c->guid);
  in("label", c->label);
  in("className", c->className);
  if (const soap::Node* list = node.child("properties")) {
    c->properties = util::readList<Property>(*list, readProperty);
  }
  return c;
}

template <class T, class ReadOne>
auto listOf(ReadOne readOne) {
  return [readOne](const soap::Answer& a) { return util::readList<T>(a.returnNode(), readOne); };
}

}  // namespace

bool ZylService::hasTemplateAccess(const std::string& templateGuid, const std::string& rights) {
  return service::call(
      *state_, kHasTemplateAccess,
      [&] {
        return Elements{{"templateGuid", templateGuid}, {"rights", rights}};
      },
      false, service::returnBool);
}

std::shared_ptr<Collection<TemplateInfo>> ZylService::getTemplateList(
    const std::string& tType, const std::string& methodStr) {
  // The service names its list operations; the caller says which one.
  const Operation op{methodStr, Service::Main};
  return service::call(
      *state_, op,
      [&] {
        return Elements{{"type", tType}};
      },
      std::shared_ptr<Collection<TemplateInfo>>(), listOf<TemplateInfo>(readTemplateInfo));
}

std::shared_ptr<Collection<TemplateInfo>> ZylService::getProjectTemplateList(
    const std::string& projectGuid, bool includeDeploymentInfo) {
  return service::call(
      *state_, kGetProjectTemplateList,
      [&] {
        return Elements{{"projectGuid", projectGuid},
                        {"includeDeploymentInfo", includeDeploymentInfo}};
      },
      std::shared_ptr<Collection<TemplateInfo>>(), listOf<TemplateInfo>(readTemplateInfo));
}

bool ZylService::setTemplateMetadata(const std::string& templateGuid,
                                     const std::string& metadataXML) {
  return service::call(
      *state_, kSetTemplateMetadata,
      [&] {
        return Elements{{"tGuid", templateGuid}, {"metadataXML", metadataXML}};
      },
      false, service::trueWhenAnswered);
}

bool ZylService::templateExists(const std::string& templateGuid) {
  return service::call(
      *state_, kTemplateExists,
      [&] {
        return Elements{{"tGuid", templateGuid}};
      },
      false, service::returnBool);
}

std::shared_ptr<TemplateInfo> ZylService::getTemplateInfo(const std::string& templateGuid) {
  return service::call(
      *state_, kGetTemplateInfo,
      [&] {
        return Elements{{"templateGuid", templateGuid}};
      },
      std::shared_ptr<TemplateInfo>(),
      [](const soap::Answer& a) { return readTemplateInfo(a.returnNode()); }, service::silentFault);
}

std::shared_ptr<TemplateInfo> ZylService::getThemeTemplateInfo(const std::string& themeGuid,
                                                               const std::string& templateGuid) {
  return service::call(
      *state_, kGetThemeTemplateInfo,
      [&] {
        return Elements{{"themeGuid", themeGuid}, {"templateGuid", templateGuid}};
      },
      std::shared_ptr<TemplateInfo>(),
      [](const soap::Answer& a) { return readTemplateInfo(a.returnNode()); }, service::silentFault);
}

std::string ZylService::copyTemplate(const std::string& templateGuid,
                                     const std::string& projectGuid,
                                     const std::string& templateName, bool overwriteExisting) {
  return service::call(
      *state_, kCopyTemplate,
      [&] {
        return Elements{{"templateGuid", templateGuid},
                        {"targetProjectGuid", projectGuid},
                        {"templateName", templateName},
                        {"overwriteExisting", overwriteExisting}};
      },
      std::string(), service::returnText);
}

std::string ZylService::deleteTemplate(const std::string& templateGuid, bool undeploy) {
  return service::call(
      *state_, kDeleteTemplate,
      [&] {
        return Elements{{"templateGuid", templateGuid}, {"doUndeploy", undeploy}};
      },
      std::string(), service::returnText);
}

std::shared_ptr<Collection<Component>> ZylService::getComponents(
    const std::string& templateGuid, const std::string& componentGuid,
    const std::string& componentLabel, const std::string& componentClass) {
  return service::call(
      *state_, kGetComponents,
      [&] {
        return Elements{{"templateGuid", templateGuid},
                        {"cGuid", componentGuid},
                        {"cLabel", componentLabel},
                        {"cClass", componentClass}};
      },
      std::shared_ptr<Collection<Component>>(), listOf<Component>(readComponent));
}

std::shared_ptr<Collection<ThemeInfo>> ZylService::getThemeList(const std::string& typeStr,
                                                                const std::string& methodStr) {
  const Operation op{methodStr, Service::Main};
  return service::call(
      *state_, op,
      [&] {
        return Elements{{"type", typeStr}};
      },
      std::shared_ptr<Collection<ThemeInfo>>(), listOf<ThemeInfo>(readThemeInfo));
}

std::shared_ptr<ThemeInfo> ZylService::getThemeInfo(const std::string& guid) {
  return service::call(
      *state_, kGetThemeInfo,
      [&] {
        return Elements{{"guid", guid}};
      },
      std::shared_ptr<ThemeInfo>(),
      [](const soap::Answer& a) { return readThemeInfo(a.returnNode()); });
}

bool ZylService::applyTheme(const std::string& themeGuid, const std::string& projectGuid) {
  return service::call(
      *state_, kApplyTheme,
      [&] {
        return Elements{{"themeGuid", themeGuid}, {"projectGuid", projectGuid}};
      },
      false, service::returnBool);
}

}  // namespace brenmoor
